// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/BWMovieReader.h"
#include "simulated/picture/BWPictureSource.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <QStringList>

/// Photos in order, each for 60 pictures: two seconds at the usual 30 per second.
class BWPhotoSource final : public BWPictureSource {
public:
    /// `files` must not be empty.
    explicit BWPhotoSource(QStringList files);

    void setResolution(BWResolution resolution) override;

    /// Whether the file is a photo that can be decoded; `error` gets the reason if not.
    static bool canShow(const QString &file, QString &error);

protected:
    Scene scene(uint64_t index, BWColorMatrix matrix) override;

private:
    void load(const QString &file);

    QStringList m_files;
    qsizetype m_current = -1;
    BWYuvPlanes m_planes;
    uint64_t m_revision = 0;
};

/// A movie in an endless loop. Pictures that have the requested size and are stored as cameras deliver them are passed
/// on unchanged.
class BWMovieSource final : public BWPictureSource {
public:
    explicit BWMovieSource(std::unique_ptr<BWMovieReader> reader);

    void setResolution(BWResolution resolution) override;
    std::optional<double> frameRate() const override { return m_reader->frameRate(); }
    std::optional<BWPixelFormat> nativeFormat() const override;
    BWColorMatrix matrix() const override;
    BWColorRange range() const override;
    KeptBytes passOn(uint64_t index, BWPixelFormat format) override;

protected:
    Scene scene(uint64_t index, BWColorMatrix matrix) override;

private:
    void stepTo(uint64_t index);

    std::unique_ptr<BWMovieReader> m_reader;
    std::optional<uint64_t> m_index; ///< of the picture that the reader is at
    BWYuvPlanes m_planes; ///< the last picture that could be decoded
    BWYuvPlanes m_fresh;
    BWColorMatrix m_planesMatrix = BWColorMatrix::BT601;
    bool m_planesStale = true;
    uint64_t m_revision = 0;
};
