#include "media/BWMovieFragments.h"

#include "media/BWJpeg.h"

#include <QIODevice>
#include <QtEndian>

namespace {

using namespace BWMovieBoxes;

/// The decode time of a movie fragment; nothing if it is damaged.
std::optional<int64_t> timeOf(QIODevice &file, const Place &place)
{
    Box fragment = parsed(place.type, content(file, place));
    Box *const track = fragment.child(type("traf"));
    const Box *const time = track ? track->child(type("tfdt")) : nullptr;
    if (!time || time->bytes.size() < 8)
        return std::nullopt;
    const bool isLong = time->bytes.at(0) == 1;
    if (isLong && time->bytes.size() < 12)
        return std::nullopt;
    return isLong ? static_cast<int64_t>(qFromBigEndian<uint64_t>(time->bytes.constData() + 4))
                  : qFromBigEndian<uint32_t>(time->bytes.constData() + 4);
}

/// Blocks that never reached the disk before a power cut read as zeros.
bool isWhole(QIODevice &file, const BWMovieSample &sample)
{
    if (!file.seek(sample.offset))
        return false;
    const QByteArray jpeg = file.read(sample.size);
    return BWJpeg::looksComplete(reinterpret_cast<const uint8_t *>(jpeg.constData()), jpeg.size());
}

} // namespace

std::optional<BWMovieFragments> BWMovieFragments::read(QIODevice &file)
{
    const int64_t size = file.size();
    const Place kind = at(file, 0, size);
    if (kind.type != type("ftyp"))
        return std::nullopt;
    BWMovieFragments found;
    const Place second = at(file, kind.end(), size);
    if (second.type == type("mdat") && at(file, second.end(), size).type == type("moov")) {
        found.isPlain = true;
        return found;
    }
    found.movie = second;
    found.index = parsed(second.type, content(file, second));
    if (second.type != type("moov") || !found.index.child(type("mvex")))
        return std::nullopt;

    found.end = second.end();
    int64_t next = found.end;
    while (true) {
        const Place head = at(file, next, size);
        const Place data = head.type == type("moof") ? at(file, head.end(), size) : Place{};
        if (data.type != type("mdat"))
            break;
        next = data.end();
        const int64_t length = data.size - data.headerSize;
        const std::optional<int64_t> time = timeOf(file, head);
        const bool isLater = time && (found.samples.empty() || *time > found.samples.back().time);
        if (isLater && length <= UINT32_MAX)
            found.samples.push_back({data.offset + data.headerSize, static_cast<uint32_t>(length), *time});
    }
    // What was written last may have come only in part.
    while (!found.samples.empty() && !isWhole(file, found.samples.back()))
        found.samples.pop_back();
    if (!found.samples.empty())
        found.end = found.samples.back().offset + found.samples.back().size;
    return found;
}
