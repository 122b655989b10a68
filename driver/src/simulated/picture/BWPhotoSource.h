#pragma once

#include "simulated/picture/BWPlanesSource.h"

#include <QStringList>

/// Photos, one after the other, each for 60 pictures: two seconds at the usual 30 per second.
class BWPhotoSource final : public BWPlanesSource {
public:
    /// `files` must not be empty.
    explicit BWPhotoSource(QStringList files);

    void setResolution(BWResolution resolution) override;

    /// Whether the file is a photo that can be decoded; the reason, if not, is told in `error`.
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
