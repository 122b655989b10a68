// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QSize>

/// A JPEG file taken apart where its metadata is: the segments before the first scan can be replaced, all others keep their
/// bytes, and so does the picture. One thread at a time.
class BWJpegSegments {
public:
    static constexpr uint8_t app0 = 0xe0;
    static constexpr uint8_t app1 = 0xe1;
    static constexpr qsizetype largestPayload = 0xffff - 2;

    struct Segment {
        uint8_t marker;
        QByteArray bytes; ///< all of them, with the marker and fill bytes before it
        qsizetype header; ///< so many of them come before the payload

        QByteArrayView payload() const { return QByteArrayView(bytes).sliced(header); }
        bool begins(uint8_t wanted, QByteArrayView payloadStart) const
        {
            return marker == wanted && payload().startsWith(payloadStart);
        }
    };
    /// A new one; the payload is not longer than `largestPayload`.
    static Segment segment(uint8_t marker, const QByteArray &payload);

    explicit BWJpegSegments(const QByteArray &file);

    bool isJpeg() const { return m_isJpeg; }
    /// Whether everything up to the first scan is there, including the picture's size.
    bool isWhole() const { return !m_size.isEmpty() && m_scan > 0; }
    /// Pixels; a height of 1 if the file defines it only later.
    QSize size() const { return m_size; }

    QList<Segment> segments; ///< before the first scan

    QByteArray joined() const;

private:
    QByteArray m_file;
    qsizetype m_scan = 0; // where the first scan begins
    QSize m_size;
    bool m_isJpeg = false;
};
