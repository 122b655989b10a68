// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWPictureResolution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <QtEndian>

namespace {

constexpr QByteArrayView jfifStart("JFIF\0", 5);
constexpr QByteArrayView exifStart("Exif\0\0", 6);

/// A JFIF density that is further off would mislead.
constexpr double farthestDensity = 0.05;

struct Rational {
    uint32_t above;
    uint32_t below;
};

/// The closest fraction, by its continued fraction: exact for every ratio of numbers that a person would type.
Rational rational(double value)
{
    constexpr double most = std::numeric_limits<uint32_t>::max();
    double rest = value;
    double above = 1, below = 0, aboveBefore = 0, belowBefore = 1;
    for (int i = 0; i < 64; ++i) {
        const double whole = std::floor(rest);
        const double nextAbove = whole * above + aboveBefore;
        const double nextBelow = whole * below + belowBefore;
        if (nextAbove > most || nextBelow > most)
            break;
        aboveBefore = std::exchange(above, nextAbove);
        belowBefore = std::exchange(below, nextBelow);
        if (rest - whole < 1e-9 || std::abs(above / below - value) <= value * 1e-15)
            break;
        rest = 1 / (rest - whole);
    }
    return {static_cast<uint32_t>(above), static_cast<uint32_t>(below)};
}

/// The tags of a TIFF structure, as Exif is one. What has no room in its directory gets a new directory at the end, so that
/// all offsets, which other programs' data may hold too, stay true.
class Tiff {
public:
    explicit Tiff(QByteArray bytes)
        : m_bytes(std::move(bytes)), m_little(m_bytes.startsWith(QByteArrayView("II*\0", 4)))
    {
    }

    /// Empty if it is damaged.
    QByteArray withResolution(Rational perCentimetre)
    {
        if (!m_little && !m_bytes.startsWith(QByteArrayView("MM\0*", 4)))
            return {};
        const qsizetype size = m_bytes.size();
        const qsizetype directory = size >= 8 ? get<uint32_t>(4) : 0;
        if (directory < 8 || directory + 2 > size)
            return {};
        const qsizetype count = get<uint16_t>(directory);
        const qsizetype end = directory + 2 + count * entrySize;
        if (end + 4 > size)
            return {};
        bool inPlace = true;
        QByteArray others; // the entries that stay
        for (qsizetype at = directory + 2; at < end; at += entrySize) {
            const uint16_t tag = get<uint16_t>(at);
            if (!isResolution(tag)) {
                others += m_bytes.sliced(at, entrySize);
                continue;
            }
            const qsizetype value = get<uint32_t>(at + 8);
            inPlace = inPlace && get<uint32_t>(at + 4) == 1 && get<uint16_t>(at + 2) == type(tag)
                && (tag == unit || (value >= 8 && value + 8 <= size && (value + 8 <= directory || value >= end + 4)));
        }
        if (!inPlace || count - others.size() / entrySize != std::ssize(tags))
            return withNewDirectory(others, m_bytes.sliced(end, 4), perCentimetre);
        for (qsizetype at = directory + 2; at < end; at += entrySize) {
            const uint16_t tag = get<uint16_t>(at);
            if (tag == unit)
                put<uint16_t>(at + 8, centimetre);
            else if (isResolution(tag))
                put(get<uint32_t>(at + 8), perCentimetre);
        }
        return m_bytes;
    }

private:
    static constexpr qsizetype entrySize = 12;
    static constexpr uint16_t unit = 0x0128; // ResolutionUnit
    static constexpr std::array<uint16_t, 3> tags{0x011a, 0x011b, unit}; // XResolution, YResolution
    static constexpr uint16_t centimetre = 3;

    static bool isResolution(uint16_t tag) { return std::find(tags.begin(), tags.end(), tag) != tags.end(); }
    static uint16_t type(uint16_t tag) { return tag == unit ? 3 : 5; } // SHORT, RATIONAL

    template <typename Number>
    Number get(qsizetype at) const
    {
        const char *place = m_bytes.constData() + at;
        return m_little ? qFromLittleEndian<Number>(place) : qFromBigEndian<Number>(place);
    }
    template <typename Number>
    void put(qsizetype at, Number value)
    {
        char *place = m_bytes.data() + at;
        m_little ? qToLittleEndian(value, place) : qToBigEndian(value, place);
    }
    void put(qsizetype at, Rational value)
    {
        put(at, value.above);
        put(at + 4, value.below);
    }

    QByteArray withNewDirectory(const QByteArray &others, const QByteArray &next, Rational perCentimetre)
    {
        if (m_bytes.size() % 2 != 0)
            m_bytes += '\0'; // a directory begins at an even place
        const qsizetype directory = m_bytes.size();
        const qsizetype count = others.size() / entrySize + std::ssize(tags);
        const qsizetype value = directory + 2 + count * entrySize + 4;
        m_bytes.resize(value + 8);
        put(value, perCentimetre);
        put(4, static_cast<uint32_t>(directory));
        put(directory, static_cast<uint16_t>(count));
        qsizetype at = directory + 2;
        const auto append = [&](QByteArrayView entry) {
            std::copy(entry.begin(), entry.end(), m_bytes.data() + at);
            at += entry.size();
        };
        // In the order of the tags, as the others are.
        qsizetype taken = 0;
        const auto appendOthers = [&](uint32_t below) {
            for (; taken < others.size(); taken += entrySize) {
                const char *entry = others.constData() + taken;
                if ((m_little ? qFromLittleEndian<uint16_t>(entry) : qFromBigEndian<uint16_t>(entry)) >= below)
                    return;
                append(QByteArrayView(others).sliced(taken, entrySize));
            }
        };
        for (const uint16_t tag : tags) {
            appendOthers(tag);
            put(at, tag);
            put(at + 2, type(tag));
            put<uint32_t>(at + 4, 1);
            put<uint32_t>(at + 8, tag == unit ? 0 : static_cast<uint32_t>(value));
            if (tag == unit)
                put<uint16_t>(at + 8, centimetre);
            at += entrySize;
        }
        appendOthers(std::numeric_limits<uint32_t>::max());
        append(next);
        return m_bytes;
    }

    QByteArray m_bytes;
    bool m_little;
};

void setJfif(BWJpegSegments::Segment &segment, double perCentimetre)
{
    struct Density {
        char unit;
        double number;
    };
    const auto off = [](const Density &density) {
        const double whole = std::clamp(std::round(density.number), 1.0, 65535.0);
        return std::abs(whole / density.number - 1);
    };
    const Density metric{2, perCentimetre};
    const Density imperial{1, perCentimetre * 2.54};
    Density best = off(metric) <= off(imperial) ? metric : imperial;
    if (off(best) > farthestDensity)
        best = {0, 1}; // pixels are square, of no size
    char *const place = segment.bytes.data() + segment.header + jfifStart.size() + 2; // after the version
    place[0] = best.unit;
    const auto number = static_cast<uint16_t>(std::clamp(std::round(best.number), 1.0, 65535.0));
    qToBigEndian(number, place + 1);
    qToBigEndian(number, place + 3);
}

} // namespace

void BWPictureResolution::set(BWJpegSegments &jpeg, double pixelsPerCentimetre)
{
    const Rational exact = rational(pixelsPerCentimetre);
    if (!(pixelsPerCentimetre > 0) || exact.above == 0 || exact.below == 0)
        return;
    constexpr qsizetype jfifLength = 14;
    QList<BWJpegSegments::Segment> &segments = jpeg.segments;
    for (auto &segment : segments) {
        if (segment.begins(BWJpegSegments::app0, jfifStart) && segment.payload().size() >= jfifLength)
            setJfif(segment, pixelsPerCentimetre);
    }
    const auto found = std::find_if(segments.begin(), segments.end(), [](const BWJpegSegments::Segment &segment) {
        return segment.begins(BWJpegSegments::app1, exifStart);
    });
    const bool exists = found != segments.end();
    const QByteArray before = exists ? found->payload().sliced(exifStart.size()).toByteArray()
                                     : QByteArray("MM\0*\0\0\0\x08\0\0\0\0\0\0", 14); // a directory of nothing
    const QByteArray tiff = Tiff(before).withResolution(exact);
    if (tiff.isEmpty() || exifStart.size() + tiff.size() > BWJpegSegments::largestPayload)
        return;
    const auto segment = BWJpegSegments::segment(BWJpegSegments::app1, exifStart.toByteArray() + tiff);
    if (exists) {
        *found = segment;
        return;
    }
    const bool hasJfif = !segments.isEmpty() && segments.constFirst().begins(BWJpegSegments::app0, jfifStart);
    segments.insert(hasJfif ? 1 : 0, segment); // JFIF comes first
}
