#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"
#include "media/BWLibav.h"
#include "media/BWYuvPlanes.h"

/// From decoded pictures of any kind and size to planes of one size and of full range.
class BWFrameScaler {
public:
    /// The matrix that a stream means: what it tells, else BT.709 for compressed pictures larger than a TV's.
    static BWColorMatrix matrixOf(AVColorSpace space, AVCodecID codec, int height);

    /// Fills the size, cropping at the middle. Colours become those of BT.601, or stay what they are if `wanted` is
    /// what the picture has. False if libav cannot do it.
    bool scale(const AVFrame &frame, AVCodecID codec, BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes);

private:
    BWLibav::Scaler m_scaler;
};
