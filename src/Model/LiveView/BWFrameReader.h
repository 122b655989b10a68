#pragma once

#include "BWACUDriver/BWFrame.h"

#include <cstdint>
#include <memory>
#include <QRect>
#include <QSize>
#include <vector>

/// Makes the pixels of one frame after another readable, a part of the picture at a time.
///
/// Raw formats are read from the driver's buffer as it is; JPEG is decoded once, to planes, when the frame is set. One
/// thread at a time.
class BWFrameReader {
public:
    enum class Scale { Full, Half };

    BWFrameReader();
    ~BWFrameReader();

    /// Takes the next frame. With Scale::Half the picture is read at half its size, which costs much less; size() shows
    /// whether the format allows that. False, and nothing readable, if the frame is torn, too short or of an unknown
    /// format.
    bool setFrame(const BWFrame &frame, Scale scale = Scale::Full);

    /// Releases the frame.
    void clear();

    /// Of the readable picture; empty without one.
    QSize size() const { return m_size; }
    const BWFrame &frame() const { return m_frame; }

    /// Converts one part of the picture to 32-bit pixels (bytes B G R A, A opaque). `part` lies inside the picture and
    /// its left and upper edges are even.
    void toARGB(const QRect &part, uint8_t *argb, int stride);

private:
    struct Yuv;
    struct DecoderDeleter {
        void operator()(void *decoder) const;
    };
    bool decodeJpeg(Scale scale);
    bool decodeJpegToARGB(const QSize &target);
    void rawToARGB(const QRect &part, uint8_t *argb, int stride);
    void packedToARGB(const QRect &part, uint8_t *argb, int stride);

    BWFrame m_frame;
    Scale m_scale = Scale::Full;
    QSize m_size;
    std::unique_ptr<void, DecoderDeleter> m_decoder; // TurboJPEG's handle; made when it is needed
    std::unique_ptr<Yuv> m_jpeg; // the decoded JPEG
    std::vector<uint8_t> m_scratch;
};
