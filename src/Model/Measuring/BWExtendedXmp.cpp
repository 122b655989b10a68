// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWExtendedXmp.h"

#include <algorithm>
#include <QCryptographicHash>
#include <QMap>
#include <QtEndian>

namespace {

constexpr QByteArrayView mainHeader("http://ns.adobe.com/xap/1.0/\0", 29);
constexpr QByteArrayView restHeader("http://ns.adobe.com/xmp/extension/\0", 35);
constexpr qsizetype restNameSize = 32; // of the whole rest, in each of its segments
constexpr qsizetype restPrefix = restHeader.size() + restNameSize + 4 + 4; // its size, and where the segment belongs

bool isMain(const BWJpegSegments::Segment &segment)
{
    return segment.begins(BWJpegSegments::app1, mainHeader);
}

bool isRest(const BWJpegSegments::Segment &segment, const QByteArray &name)
{
    return segment.begins(BWJpegSegments::app1, restHeader) && segment.payload().size() >= restPrefix
        && segment.payload().sliced(restHeader.size(), restNameSize) == name;
}

/// Null unless all of it is there.
QByteArray joinedRest(const QList<BWJpegSegments::Segment> &segments, const QByteArray &name)
{
    QMap<uint32_t, QByteArrayView> pieces; // by where they belong
    uint32_t size = 0;
    for (const BWJpegSegments::Segment &segment : segments) {
        if (!isRest(segment, name))
            continue;
        const char *const numbers = segment.payload().data() + restHeader.size() + restNameSize;
        size = qFromBigEndian<uint32_t>(numbers);
        pieces.insert(qFromBigEndian<uint32_t>(numbers + 4), segment.payload().sliced(restPrefix));
    }
    QByteArray whole;
    for (auto piece = pieces.begin(); piece != pieces.end(); ++piece) {
        if (piece.key() != whole.size())
            return {};
        whole += *piece;
    }
    return whole.size() == size ? whole : QByteArray();
}

QList<BWJpegSegments::Segment> splitRest(const QByteArray &whole, const QByteArray &name)
{
    QList<BWJpegSegments::Segment> segments;
    constexpr qsizetype most = BWJpegSegments::largestPayload - restPrefix;
    for (qsizetype at = 0; at < whole.size(); at += most) {
        QByteArray numbers(8, '\0');
        qToBigEndian(static_cast<uint32_t>(whole.size()), numbers.data());
        qToBigEndian(static_cast<uint32_t>(at), numbers.data() + 4);
        segments.append(BWJpegSegments::segment(BWJpegSegments::app1,
                                                restHeader.toByteArray() + name + numbers + whole.mid(at, most)));
    }
    return segments;
}

/// A new main part follows what must come first. Nothing after it moves against what comes later still, as some segments
/// count from where they are.
qsizetype firstPlace(const QList<BWJpegSegments::Segment> &segments)
{
    qsizetype place = 0;
    for (qsizetype i = 0; i < segments.size(); ++i) {
        const bool isExif = segments[i].begins(BWJpegSegments::app1, QByteArrayView("Exif\0", 5));
        if (isExif || (segments[i].marker == BWJpegSegments::app0 && place == i))
            place = i + 1;
    }
    return place;
}

} // namespace

std::optional<BWExtendedXmp> BWExtendedXmp::from(const BWJpegSegments &jpeg)
{
    BWExtendedXmp xmp;
    const auto found = std::find_if(jpeg.segments.begin(), jpeg.segments.end(), isMain);
    if (found == jpeg.segments.end())
        return xmp;
    auto main = BWXmp::parsed(found->payload().sliced(mainHeader.size()).toByteArray());
    if (!main)
        return std::nullopt;
    xmp.main = std::move(*main);
    if (const QByteArray name = xmp.main.extension(); !name.isNull()) {
        auto rest = BWXmp::parsed(joinedRest(jpeg.segments, name));
        xmp.restDamaged = !rest;
        if (rest)
            xmp.rest = std::move(*rest);
    }
    return xmp;
}

bool BWExtendedXmp::writeTo(BWJpegSegments &jpeg, const QByteArray &large)
{
    const QByteArray nameBefore = main.extension();
    const auto fits = [](const QByteArray &packet) {
        return !packet.isEmpty() && mainHeader.size() + packet.size() <= BWJpegSegments::largestPayload;
    };
    if (!fits(main.serialized(true)) && !(main.has(large) && main.move(large, rest)))
        return false;
    QList<BWJpegSegments::Segment> added;
    main.setExtension({});
    if (!rest.isEmpty()) {
        const QByteArray whole = rest.serialized(false);
        const QByteArray name = QCryptographicHash::hash(whole, QCryptographicHash::Md5).toHex().toUpper();
        main.setExtension(name);
        added = splitRest(whole, name);
    }
    const QByteArray packet = main.isEmpty() ? QByteArray() : main.serialized(true);
    if (!main.isEmpty()) {
        if (!fits(packet))
            return false;
        added.prepend(BWJpegSegments::segment(BWJpegSegments::app1, mainHeader.toByteArray() + packet));
    }
    QList<BWJpegSegments::Segment> &segments = jpeg.segments;
    const auto found = std::find_if(segments.begin(), segments.end(), isMain);
    qsizetype place = found == segments.end() ? firstPlace(segments) : found - segments.begin();
    if (found != segments.end())
        segments.erase(found);
    for (qsizetype i = segments.size() - 1; i >= 0; --i) {
        if (!nameBefore.isNull() && isRest(segments[i], nameBefore)) {
            segments.removeAt(i);
            place -= i < place ? 1 : 0;
        }
    }
    for (const BWJpegSegments::Segment &segment : added)
        segments.insert(place++, segment);
    return true;
}
