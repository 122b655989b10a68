// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"
#include "media/BWYuvPlanes.h"
#include "simulated/picture/BWPictureTuner.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <QString>
#include <span>
#include <vector>

/// What a simulated camera looks at. It applies the camera controls and turns planes into YUYV or JPEG; each kind of
/// source only provides the scene. Used by one thread, the camera's capture thread.
class BWPictureSource {
public:
    virtual ~BWPictureSource() = default;

    /// Called before the first picture and on every change of size.
    virtual void setResolution(BWResolution resolution);
    void setControls(const BWPictureControls &controls);

    /// Frames per second that the source itself has at the current size; nothing if the camera decides.
    virtual std::optional<double> frameRate() const { return std::nullopt; }
    /// The format in which the source's own bytes can be passed on unchanged at the current size; nothing if the
    /// camera decides.
    virtual std::optional<BWPixelFormat> nativeFormat() const { return std::nullopt; }
    virtual BWColorMatrix matrix() const { return BWColorMatrix::BT601; }
    virtual BWColorRange range() const { return BWColorRange::Limited; }

    /// Bytes that are valid for as long as there is somebody who holds their keeper.
    struct KeptBytes {
        std::span<const uint8_t> bytes;
        std::shared_ptr<const void> keeper;
    };
    /// Picture number `index` as the source has it, without a copy; empty if it cannot be passed on unchanged.
    virtual KeptBytes passOn(uint64_t index, BWPixelFormat format);

    /// Draws picture number `index` (they follow each other, gaps included) as packed YUYV.
    virtual void renderYUYV(uint64_t index, uint8_t *pixels, int stride);
    /// The same picture as one JPEG image.
    virtual void renderJPEG(uint64_t index, std::vector<uint8_t> &jpeg);

protected:
    /// Planes of full range; whenever they change, so does the revision.
    struct Scene {
        const BWYuvPlanes *planes = nullptr;
        uint64_t revision = 0;
    };

    BWResolution resolution() const { return m_resolution; }
    const BWPictureControls &controls() const { return m_controls; }

    /// What that picture shows before the controls act.
    virtual Scene scene(uint64_t index, BWColorMatrix matrix) = 0;
    /// Writes one row of the picture, made from the scene after the controls have acted. By default the scene is the
    /// picture. Planes and rows have room for whole blocks.
    virtual void composeRow(const BWYuvPlanes &tuned, BWColorRange range, int row, uint8_t *y, uint8_t *u, uint8_t *v);

private:
    const BWYuvPlanes &tunedScene(uint64_t index, BWColorMatrix matrix, BWColorRange range);
    void finishRow(const BWYuvPlanes &tuned, BWColorRange range, uint64_t index, int row, uint8_t *y, uint8_t *u,
                   uint8_t *v);

    BWResolution m_resolution;
    BWPictureControls m_controls;
    BWPictureNoise m_noise;
    BWPictureTuner m_tuner;
    BWYuvPlanes m_tuned;
    bool m_tunerStale = true;
    BWColorRange m_tunedRange = BWColorRange::Full;
    uint64_t m_tunedRevision = 0;
    BWYuvPlanes m_frame; ///< the whole picture for JPEG, one row for YUYV
};

/// The photo, the folder of photos or the movie at `path`, or the drawn specimen if `path` is empty. Null, with the
/// reason in `error` if that is given, if the path cannot be used.
std::unique_ptr<BWPictureSource> makePictureSource(const QString &path, QString *error = nullptr);
