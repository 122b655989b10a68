#include "media/BWMovieIndex.h"

#include <algorithm>
#include <QtEndian>

namespace {

using namespace BWMovieBoxes;

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

int64_t durationOf(const std::vector<BWMovieSample> &samples, std::size_t index, uint32_t timeScale)
{
    if (index + 1 < samples.size())
        return samples[index + 1].time - samples[index].time;
    // Nobody knows how long the last picture was shown: as long as the one before it.
    return index > 0 ? samples[index].time - samples[index - 1].time : timeScale / 30;
}

QByteArray timesToSamples(const std::vector<BWMovieSample> &samples, uint32_t timeScale)
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

QByteArray sampleSizes(const std::vector<BWMovieSample> &samples)
{
    QByteArray bytes(8, '\0'); // and no common size
    append(bytes, static_cast<uint32_t>(samples.size()));
    for (const BWMovieSample &sample : samples)
        append(bytes, sample.size);
    return bytes;
}

QByteArray chunkOffsets(const std::vector<BWMovieSample> &samples)
{
    QByteArray bytes = table(samples.size());
    for (const BWMovieSample &sample : samples)
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

} // namespace

QByteArray makeMovieIndex(const BWMovieFragments &fragments)
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

    const std::vector<BWMovieSample> &samples = fragments.samples;
    const int64_t duration =
        samples.back().time - samples.front().time + durationOf(samples, samples.size() - 1, timeScale);
    mediaHeader.setDuration(duration);
    const int64_t movieDuration = (duration * movieHeader.timeScale() + timeScale / 2) / timeScale;
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
