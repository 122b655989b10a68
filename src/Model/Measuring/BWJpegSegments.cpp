// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWJpegSegments.h"

#include <algorithm>
#include <QtEndian>

namespace {

constexpr uint8_t startOfScan = 0xda;

bool isFrameHeader(uint8_t marker)
{
    // The others of that range define tables.
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

} // namespace

BWJpegSegments::Segment BWJpegSegments::segment(uint8_t marker, const QByteArray &payload)
{
    QByteArray bytes("\xff\0\0\0", 4);
    bytes[1] = static_cast<char>(marker);
    qToBigEndian(static_cast<uint16_t>(payload.size() + 2), bytes.data() + 2);
    return {marker, bytes + payload, 4};
}

BWJpegSegments::BWJpegSegments(const QByteArray &file) : m_file(file), m_isJpeg(file.startsWith("\xff\xd8\xff"))
{
    const auto byte = [&file](qsizetype at) { return static_cast<uint8_t>(file[at]); };
    for (qsizetype at = 2; m_isJpeg;) {
        const qsizetype start = at;
        while (at + 1 < file.size() && byte(at) == 0xff && byte(at + 1) == 0xff)
            ++at; // fill bytes
        if (at + 4 > file.size() || byte(at) != 0xff)
            return;
        const uint8_t marker = byte(at + 1);
        if (marker == startOfScan) {
            m_scan = start;
            return;
        }
        const qsizetype length = qFromBigEndian<uint16_t>(file.constData() + at + 2);
        const qsizetype end = at + 2 + length;
        if (length < 2 || end > file.size())
            return;
        if (isFrameHeader(marker) && length >= 8) {
            m_size.setHeight(std::max<int>(1, qFromBigEndian<uint16_t>(file.constData() + at + 5)));
            m_size.setWidth(qFromBigEndian<uint16_t>(file.constData() + at + 7));
        }
        segments.append({marker, file.sliced(start, end - start), at + 4 - start});
        at = end;
    }
}

QByteArray BWJpegSegments::joined() const
{
    QByteArray file = m_file.first(2);
    file.reserve(m_file.size() + largestPayload);
    for (const Segment &segment : segments)
        file += segment.bytes;
    return file.append(m_file.constData() + m_scan, m_file.size() - m_scan);
}
