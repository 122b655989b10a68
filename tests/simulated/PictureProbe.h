#pragma once

#include "simulated/picture/BWPictureSource.h"

#include <QByteArray>
#include <QImage>

/// Looks at what a source draws.
class PictureProbe {
public:
    PictureProbe(BWPictureSource &source, BWResolution size, uint64_t index = 0);

    /// The packed picture without padding; a null array if the source wrote beyond its rows.
    const QByteArray &bytes() const { return m_bytes; }
    QImage image() const; ///< BT.601, limited range

    double meanLuma() const; ///< 0 to 255, as stored
    double differenceTo(const PictureProbe &other) const; ///< mean over all bytes

    static QByteArray jpeg(BWPictureSource &source, uint64_t index);
    /// Mean over all pixels and channels.
    static double difference(const QImage &a, const QImage &b);

private:
    int luma(int x, int y) const { return uint8_t(m_bytes[y * m_size.width() * 2 + x * 2]); }
    int u(int x, int y) const { return uint8_t(m_bytes[y * m_size.width() * 2 + x / 2 * 4 + 1]) - 128; }
    int v(int x, int y) const { return uint8_t(m_bytes[y * m_size.width() * 2 + x / 2 * 4 + 3]) - 128; }

    QSize m_size;
    QByteArray m_bytes;
};
