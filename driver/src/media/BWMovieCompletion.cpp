// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWMovie.h"

#include "BWACUDriver/BWFileBytes.h"
#include "media/BWJpeg.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <QByteArray>
#include <QFile>
#include <QtEndian>
#include <vector>

namespace {

// The nested boxes that make up an ISO base media file (ISO/IEC 14496-12), and so a QuickTime movie.

constexpr uint32_t type(const char (&name)[5])
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<uint8_t>(name[i]);
    return value;
}

/// Where a box lies in a file.
struct Place {
    uint32_t type = 0;
    int64_t offset = 0; ///< of its header
    int64_t headerSize = 0;
    int64_t size = 0; ///< including the header; 0 for no box

    bool isNull() const { return size == 0; }
    int64_t end() const { return offset + size; }
};

/// A box in memory: a container has children, any other box bytes.
struct Box {
    uint32_t type = 0;
    QByteArray bytes{};
    std::vector<Box> children{};

    /// The first such child, or null.
    Box *child(uint32_t childType);
    QByteArray serialized() const;
};

constexpr std::array containers{type("moov"), type("trak"), type("mdia"), type("minf"),
                                type("stbl"), type("moof"), type("traf")};
constexpr int64_t shortHeader = 8;
constexpr int64_t longHeader = 16;
constexpr int64_t mostContent = 16 << 20;
constexpr int mostLevels = 8; // of boxes within boxes; a movie has five
constexpr uint64_t latest = INT64_MAX / 4; // time of a picture: sums of a few have room

bool isContainer(uint32_t type)
{
    return std::find(containers.begin(), containers.end(), type) != containers.end();
}

/// The box that begins at that offset; null if there is no whole one before `end`.
Place at(QIODevice &file, int64_t offset, int64_t end)
{
    if (offset + shortHeader > end || !file.seek(offset))
        return {};
    const QByteArray header = file.read(longHeader);
    if (header.size() < shortHeader)
        return {};
    Place box{qFromBigEndian<uint32_t>(header.constData() + 4), offset, shortHeader,
              qFromBigEndian<uint32_t>(header.constData())};
    if (box.size == 1 && header.size() == longHeader) {
        box.headerSize = longHeader;
        box.size =
            static_cast<int64_t>(std::min<uint64_t>(qFromBigEndian<uint64_t>(header.constData() + 8), INT64_MAX));
    }
    return box.size >= box.headerSize && box.size <= end - offset ? box : Place{};
}

/// The content of a box of at most a few megabytes; empty if it cannot be read.
QByteArray content(QIODevice &file, const Place &box)
{
    const int64_t size = box.size - box.headerSize;
    if (box.isNull() || size > mostContent || !file.seek(box.offset + box.headerSize))
        return {};
    const QByteArray bytes = file.read(size);
    return bytes.size() == size ? bytes : QByteArray();
}

Box *Box::child(uint32_t childType)
{
    const auto found =
        std::find_if(children.begin(), children.end(), [childType](const Box &box) { return box.type == childType; });
    return found == children.end() ? nullptr : &*found;
}

QByteArray Box::serialized() const
{
    QByteArray inside = bytes;
    for (const Box &box : children)
        inside += box.serialized();
    QByteArray whole(shortHeader, Qt::Uninitialized);
    qToBigEndian(static_cast<uint32_t>(shortHeader + inside.size()), whole.data());
    qToBigEndian(type, whole.data() + 4);
    return whole + inside;
}

/// A box parsed from its content; the containers between the movie box and its tables are parsed into children. Null
/// type if the bytes are damaged.
Box parsed(uint32_t type, const QByteArray &content, int level = 1)
{
    Box box{type};
    if (!isContainer(type)) {
        box.bytes = content;
        return box;
    }
    for (qsizetype offset = 0; offset < content.size();) {
        const qsizetype left = content.size() - offset;
        const uint32_t size = left < shortHeader ? 0 : qFromBigEndian<uint32_t>(content.constData() + offset);
        if (size < shortHeader || size > left || level > mostLevels)
            return {};
        const auto childType = qFromBigEndian<uint32_t>(content.constData() + offset + 4);
        box.children.push_back(parsed(childType, content.mid(offset + shortHeader, size - shortHeader), level + 1));
        if (box.children.back().type == 0)
            return {};
        offset += size;
    }
    return box;
}

/// One picture of a movie.
struct Sample {
    int64_t offset = 0; ///< in the file
    uint32_t size = 0;
    int64_t time = 0; ///< in units of the media's time scale
};

/// A movie of fragments of one picture each, as far as it was written.
struct Fragments {
    Place movie; ///< the movie box in front, which has no pictures
    Box index; ///< its content
    std::vector<Sample> samples; ///< in order; their times rise
    int64_t end = 0; ///< behind the last whole picture
    bool isPlain = false; ///< a movie with an index; the fields above are empty then

    /// Nothing if the file is not of that kind.
    static std::optional<Fragments> read(QIODevice &file);
};

/// The decode time of a movie fragment; nothing if it is damaged, or one that no movie reaches.
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
    const uint64_t value = isLong ? qFromBigEndian<uint64_t>(time->bytes.constData() + 4)
                                  : qFromBigEndian<uint32_t>(time->bytes.constData() + 4);
    return value <= latest ? std::optional(static_cast<int64_t>(value)) : std::nullopt;
}

/// Blocks that did not reach the disk before a power cut read as zeros.
bool isWhole(QIODevice &file, const Sample &sample)
{
    if (!file.seek(sample.offset))
        return false;
    const QByteArray jpeg = file.read(sample.size);
    return BWJpeg::looksComplete(reinterpret_cast<const uint8_t *>(jpeg.constData()), jpeg.size());
}

std::optional<Fragments> Fragments::read(QIODevice &file)
{
    const int64_t size = file.size();
    const Place kind = at(file, 0, size);
    if (kind.type != type("ftyp"))
        return std::nullopt;
    Fragments found;
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
    // The last pictures may have been written only in part.
    while (!found.samples.empty() && !isWhole(file, found.samples.back()))
        found.samples.pop_back();
    if (!found.samples.empty())
        found.end = found.samples.back().offset + found.samples.back().size;
    return found;
}

template <typename Integer>
void append(QByteArray &bytes, Integer value)
{
    const qsizetype end = bytes.size();
    bytes.resize(end + static_cast<qsizetype>(sizeof value));
    qToBigEndian(value, bytes.data() + end);
}

/// A table of the sample table box: version and flags 0, then the number of entries.
QByteArray table(std::size_t entries)
{
    QByteArray bytes(4, '\0');
    append(bytes, static_cast<uint32_t>(entries));
    return bytes;
}

int64_t durationOf(const std::vector<Sample> &samples, std::size_t index, uint32_t timeScale)
{
    if (index + 1 < samples.size())
        return samples[index + 1].time - samples[index].time;
    // The last picture has no known duration; it gets that of the one before it.
    return index > 0 ? samples[index].time - samples[index - 1].time : timeScale / 30;
}

QByteArray timesToSamples(const std::vector<Sample> &samples, uint32_t timeScale)
{
    std::vector<std::pair<uint32_t, uint32_t>> runs; // number of samples of one duration
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto duration = static_cast<uint32_t>(durationOf(samples, i, timeScale));
        if (runs.empty() || runs.back().second != duration)
            runs.emplace_back(0, duration);
        ++runs.back().first;
    }
    QByteArray bytes = table(runs.size());
    for (const auto &[count, duration] : runs) {
        append(bytes, count);
        append(bytes, duration);
    }
    return bytes;
}

QByteArray samplesToChunks()
{
    QByteArray bytes = table(1);
    for (const uint32_t value : {1U, 1U, 1U}) // from the first chunk on, one sample each, of the first description
        append(bytes, value);
    return bytes;
}

QByteArray sampleSizes(const std::vector<Sample> &samples)
{
    QByteArray bytes(8, '\0'); // and no common size
    append(bytes, static_cast<uint32_t>(samples.size()));
    for (const Sample &sample : samples)
        append(bytes, sample.size);
    return bytes;
}

QByteArray chunkOffsets(const std::vector<Sample> &samples)
{
    QByteArray bytes = table(samples.size());
    for (const Sample &sample : samples)
        append(bytes, static_cast<uint64_t>(sample.offset));
    return bytes;
}

/// A movie, track or media header: version and flags, two dates, the time scale or in its place `between` bytes, and
/// the duration. Dates and duration have 32 bits in version 0 and 64 in version 1.
class Header {
public:
    explicit Header(Box *box, qsizetype between = 4) : m_box(box), m_between(between) { }

    bool isValid() const { return m_box && m_box->bytes.size() >= durationPlace() + (isLong() ? 8 : 4); }
    uint32_t timeScale() const { return qFromBigEndian<uint32_t>(m_box->bytes.constData() + timeScalePlace()); }
    void setDuration(int64_t value) const
    {
        char *const place = m_box->bytes.data() + durationPlace();
        if (isLong())
            qToBigEndian(value, place);
        else
            qToBigEndian(static_cast<uint32_t>(std::min<int64_t>(value, UINT32_MAX)), place);
    }

private:
    bool isLong() const { return m_box->bytes.startsWith('\1'); }
    qsizetype timeScalePlace() const { return isLong() ? 20 : 12; }
    qsizetype durationPlace() const { return timeScalePlace() + m_between; }

    Box *m_box;
    qsizetype m_between;
};

Box *descend(Box &box, std::initializer_list<uint32_t> path)
{
    Box *at = &box;
    for (const uint32_t step : path)
        at = at ? at->child(step) : nullptr;
    return at;
}

/// The movie box of the plain movie that a movie of fragments becomes: that of the fragments, with the tables of the
/// pictures filled in. Empty if the box in front of the fragments lacks what it must have.
QByteArray makeIndex(const Fragments &fragments)
{
    Box movie = fragments.index;
    const Header movieHeader(movie.child(type("mvhd")));
    const Header trackHeader(descend(movie, {type("trak"), type("tkhd")}), 8); // its number, and 4 unused bytes
    const Header mediaHeader(descend(movie, {type("trak"), type("mdia"), type("mdhd")}));
    Box *const tables = descend(movie, {type("trak"), type("mdia"), type("minf"), type("stbl")});
    if (!movieHeader.isValid() || !trackHeader.isValid() || !mediaHeader.isValid() || !tables
        || !tables->child(type("stsd")))
        return {};
    const uint32_t timeScale = mediaHeader.timeScale();
    if (timeScale == 0)
        return {};

    const std::vector<Sample> &samples = fragments.samples;
    const int64_t duration =
        samples.back().time - samples.front().time + durationOf(samples, samples.size() - 1, timeScale);
    mediaHeader.setDuration(duration);
    // Floating point: both scales may be any number.
    const double inMovieScale = static_cast<double>(duration) * movieHeader.timeScale() / timeScale;
    const int64_t movieDuration = std::llround(std::min(inMovieScale, static_cast<double>(latest)));
    movieHeader.setDuration(movieDuration);
    trackHeader.setDuration(movieDuration);

    const Box description = *tables->child(type("stsd"));
    tables->children = {description,
                        {type("stts"), timesToSamples(samples, timeScale)},
                        {type("stsc"), samplesToChunks()},
                        {type("stsz"), sampleSizes(samples)},
                        {type("co64"), chunkOffsets(samples)}};
    std::erase_if(movie.children, [](const Box &box) { return box.type == type("mvex"); });
    return movie.serialized();
}

/// Everything written so far is on the disk when this returns true.
bool writeAt(QFile &file, int64_t offset, const QByteArray &bytes)
{
    return file.seek(offset) && file.write(bytes) == bytes.size() && file.flush()
        && BWFileBytes::synchronizeData(file.handle());
}

/// The header of a media data box with a 64-bit size.
QByteArray longDataHeader(int64_t size)
{
    QByteArray header(16, Qt::Uninitialized);
    qToBigEndian<uint32_t>(1, header.data());
    std::memcpy(header.data() + 4, "mdat", 4);
    qToBigEndian(static_cast<uint64_t>(size), header.data() + 8);
    return header;
}

template <typename Fail>
BWMovieCompletion complete(const QString &path, const Fail &fail)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        return fail(file.errorString());
    const std::optional<Fragments> fragments = Fragments::read(file);
    if (!fragments)
        return fail(QStringLiteral("it is not a recording of this program"));
    if (fragments->isPlain)
        return BWMovieCompletion::Plain;
    if (fragments->samples.empty())
        return BWMovieCompletion::Empty;
    const QByteArray index = makeIndex(*fragments);
    if (index.isEmpty())
        return fail(QStringLiteral("its header is damaged"));

    if (!file.resize(fragments->end) || !writeAt(file, fragments->end, index)) {
        const QString reason = file.errorString();
        file.resize(fragments->end);
        return fail(reason);
    }
    const int64_t begin = fragments->movie.offset;
    if (!writeAt(file, begin, longDataHeader(fragments->end - begin)))
        return fail(file.errorString());
    return BWMovieCompletion::Completed;
}

} // namespace

BWMovieCompletion completeMovie(const QString &path, QString *error)
{
    const auto fail = [error](const QString &reason) {
        if (error)
            *error = reason;
        return BWMovieCompletion::Failed;
    };
    try {
        return complete(path, fail);
    } catch (const std::bad_alloc &) {
        return fail(QStringLiteral("there is no memory for its index"));
    }
}
