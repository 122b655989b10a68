#pragma once

#include "media/BWMovieReader.h"
#include "simulated/picture/BWPlanesSource.h"

/// A movie, over and over again. Where its pictures are as large as asked for, and stored as cameras deliver them, they
/// are handed on unchanged.
class BWMovieSource final : public BWPlanesSource {
public:
    explicit BWMovieSource(std::unique_ptr<BWMovieReader> reader);

    void setResolution(BWResolution resolution) override;
    std::optional<double> frameRate() const override { return m_reader->frameRate(); }
    std::optional<BWPixelFormat> nativeFormat() const override;
    BWColorMatrix matrix() const override;
    BWColorRange range() const override;
    void renderYUYV(uint64_t index, uint8_t *pixels, int stride) override;
    void renderJPEG(uint64_t index, std::vector<uint8_t> &jpeg) override;

protected:
    Scene scene(uint64_t index, BWColorMatrix matrix) override;

private:
    void stepTo(uint64_t index);
    bool passesOn(BWPixelFormat format) const;

    std::unique_ptr<BWMovieReader> m_reader;
    std::optional<uint64_t> m_index; ///< of the picture that the reader is at
    BWYuvPlanes m_planes; ///< the last picture that could be decoded
    BWYuvPlanes m_fresh;
    BWColorMatrix m_planesMatrix = BWColorMatrix::BT601;
    bool m_planesStale = true;
    uint64_t m_revision = 0;
};
