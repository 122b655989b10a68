#pragma once

#include "media/BWYuvPlanes.h"
#include "simulated/BWPictureSource.h"
#include "simulated/picture/BWPictureNoise.h"
#include "simulated/picture/BWPictureTuner.h"

/// What all picture sources share: the controls, and the way from planes to YUYV and JPEG. A source only has to tell
/// what it sees.
class BWPlanesSource : public BWPictureSource {
public:
    void setResolution(BWResolution resolution) override;
    void setControls(const BWPictureControls &controls) override;
    void renderYUYV(uint64_t index, uint8_t *pixels, int stride) override;
    void renderJPEG(uint64_t index, std::vector<uint8_t> &jpeg) override;

protected:
    /// Planes of full range; whenever they change, so does the revision.
    struct Scene {
        const BWYuvPlanes *planes = nullptr;
        uint64_t revision = 0;
    };

    BWResolution resolution() const { return m_resolution; }
    const BWPictureControls &controls() const { return m_controls; }

    /// What is there to be seen in that picture, before the controls act.
    virtual Scene scene(uint64_t index, BWColorMatrix matrix) = 0;
    /// Writes one row of the picture, made from the scene after the controls have acted. As it is, the scene is the
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
