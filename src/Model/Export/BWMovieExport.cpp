// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWMovieExport.h"

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWJpegHeader.h"
#include "BWACUDriver/BWMovieWriter.h"
#include "BWACUDriver/BWStill.h"
#include "Model/Albums/BWFileNameOrder.h"
#include "Model/Export/BWExportSource.h"
#include "Model/Export/BWPartFile.h"
#include "Model/Measuring/BWJpegSegments.h"
#include "Model/Thumbnails/BWJpegPicture.h"
#include "Utils/BWFilePath.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <QFile>
#include <QPainter>
#include <QThread>
#include <sys/stat.h>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Outcome = BWExportResult::Outcome;
using Problem = BWExportResult::Problem;

constexpr qint64 parts = 1'000'000; // of the work on a movie
constexpr int64_t mostPicturePixels = 100'000'000;
constexpr qint64 headerBytes = 64 << 10; // enough for nearly all
constexpr qint64 pictureWork = 20; // to take a picture, beside a look at its header
constexpr uint32_t encodedSampling = 0x211111; // 4:2:2, as we encode

qint64 sizeOf(int file)
{
    struct stat info;
    return ::fstat(file, &info) == 0 ? info.st_size : 0;
}

/// What a JPEG file says of itself.
struct JpegKind {
    QSize size; ///< upright; empty if it is damaged
    uint32_t sampling = 0;
    bool canBeCopied = false; ///< as far as it alone is concerned

    static JpegKind of(const QByteArray &jpeg);
    auto key() const { return std::tuple(size.width(), size.height(), sampling, canBeCopied); }
};

JpegKind JpegKind::of(const QByteArray &jpeg)
{
    const auto *const bytes = reinterpret_cast<const uint8_t *>(jpeg.constData());
    const auto length = static_cast<std::size_t>(jpeg.size());
    const BWJpegHeader header(bytes, length);
    if (!header.isWhole() || header.height() <= 0)
        return {};
    const BWJpegPicture::Turn turn = header.hasExif() ? BWJpegPicture::turnOf({bytes, length}) : BWJpegPicture::Turn{};
    const QSize size(header.width(), header.height());
    constexpr uint32_t fourComponents = 1 << 24; // printers' colours
    return {turn.degrees % 180 == 0 ? size : size.transposed(), header.sampling(),
            header.isBaseline() && !turn.mirrored && turn.degrees == 0 && header.sampling() < fourComponents};
}

/// The bytes of a file, up to so many; empty if it cannot be read.
QByteArray bytesOf(const QUrl &file, qint64 most)
{
    const auto source = BWExportSource::open(file);
    if (!source || source->size() > BWJpegPicture::largestFile)
        return {};
    QByteArray bytes(std::min(source->size(), most), Qt::Uninitialized);
    return source->readAt(0, bytes.data(), bytes.size()) ? bytes : QByteArray();
}

/// The picture alone: what it says of its camera and of measurements belongs to the picture's own file.
QByteArray withoutMetadata(const QByteArray &jpeg)
{
    constexpr uint8_t last = 0xef; // of the application segments
    constexpr uint8_t colours = 0xee; // how three components are to be read
    constexpr uint8_t comment = 0xfe;
    BWJpegSegments picture(jpeg);
    picture.segments.removeIf([](const BWJpegSegments::Segment &segment) {
        return segment.marker == comment
            || (segment.marker >= BWJpegSegments::app1 && segment.marker <= last && segment.marker != colours);
    });
    return picture.joined();
}

class Joining {
public:
    Joining(int rate, BWPartFile &part, BWExportWatch &watch) : m_rate(rate), m_part(part), m_watch(watch) { }

    BWExportResult run(const QList<QUrl> &pictures);

private:
    bool decide(const QList<QUrl> &pictures);
    QByteArray fitting(const QByteArray &jpeg);
    QImage onCanvas(const QImage &picture) const;
    bool write(const QByteArray &jpeg);

    const int m_rate;
    BWPartFile &m_part;
    BWExportWatch &m_watch;
    QSize m_size; // of the movie
    uint32_t m_sampling = encodedSampling; // of its pictures, as not every player takes to a change
    std::unique_ptr<BWMovieWriter> m_writer;
    BWJpegPicture m_decoder;
    int64_t m_written = 0;
};

/// From the beginnings of the files. False if it was cancelled.
bool Joining::decide(const QList<QUrl> &pictures)
{
    std::map<std::tuple<int, int, uint32_t, bool>, int> kinds;
    std::map<std::pair<int, int>, int> sizes;
    for (const QUrl &picture : pictures) {
        if (m_watch.isCancelled())
            return false;
        JpegKind kind = JpegKind::of(bytesOf(picture, headerBytes));
        if (kind.size.isEmpty())
            kind = JpegKind::of(bytesOf(picture, BWJpegPicture::largestFile));
        m_watch.add(1);
        if (kind.size.isEmpty())
            continue;
        ++kinds[kind.key()];
        ++sizes[{kind.size.width(), kind.size.height()}];
    }
    int most = 0;
    for (const auto &[size, count] : sizes) { // the larger one of two that are as frequent
        const QSize candidate(size.first, size.second);
        const auto pixels = [](QSize of) { return int64_t{of.width()} * of.height(); };
        if (count > most || (count == most && pixels(candidate) > pixels(m_size)))
            m_size = candidate;
        most = std::max(most, count);
    }
    if (kinds.size() == 1)
        m_sampling = std::get<2>(kinds.begin()->first);
    return true;
}

QImage Joining::onCanvas(const QImage &picture) const
{
    if (picture.size() == m_size)
        return picture;
    QImage canvas(m_size, QImage::Format_RGB32);
    if (canvas.isNull())
        return {};
    canvas.fill(Qt::black);
    const QImage scaled = picture.scaled(m_size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&canvas);
    painter.drawImage((m_size.width() - scaled.width()) / 2, (m_size.height() - scaled.height()) / 2, scaled);
    return canvas;
}

/// The picture as the movie takes it; null if it is damaged, as far as that shows.
QByteArray Joining::fitting(const QByteArray &jpeg)
{
    const JpegKind kind = JpegKind::of(jpeg);
    if (kind.canBeCopied && kind.sampling == m_sampling && kind.size == m_size)
        return withoutMetadata(jpeg); // the writer looks whether its end is there
    const BWJpegPicture::Whole whole =
        m_decoder.whole({reinterpret_cast<const uint8_t *>(jpeg.constData()), static_cast<std::size_t>(jpeg.size())},
                        mostPicturePixels);
    if (whole.image.isNull() || whole.damaged)
        return {};
    const QImage canvas = onCanvas(whole.image).convertToFormat(QImage::Format_RGB32);
    BWFrameInfo info;
    info.pixelFormat = BWPixelFormat::XBGR32;
    info.width = canvas.width();
    info.height = canvas.height();
    info.planes[0] = {canvas.constBits(), static_cast<std::size_t>(canvas.sizeInBytes()),
                      static_cast<int>(canvas.bytesPerLine())};
    return BWStill::jpegOf(BWFrame(info, [] {}));
}

bool Joining::write(const QByteArray &jpeg)
{
    const auto time = std::chrono::nanoseconds(std::chrono::seconds(m_written)) / m_rate;
    BWFrameInfo info;
    info.pixelFormat = BWPixelFormat::MJPEG;
    info.width = m_size.width();
    info.height = m_size.height();
    info.planes[0] = {reinterpret_cast<const uint8_t *>(jpeg.constData()), static_cast<std::size_t>(jpeg.size()), 0};
    info.timestamp = std::chrono::steady_clock::time_point(time);
    const bool written = m_writer->write(BWFrame(info, [] {}));
    m_written += written ? 1 : 0;
    return written;
}

BWExportResult Joining::run(const QList<QUrl> &pictures)
{
    m_watch.begin(pictures.size() * (1 + pictureWork));
    if (!decide(pictures))
        return BWExportResult::cancelled();
    QString reason;
    m_writer = BWMovieWriter::create(u"/proc/self/fd/%1"_s.arg(m_part.descriptor()), &reason);
    if (!m_writer)
        return BWExportResult::failed(Problem::NoEncoder, m_part.target(), reason);
    for (const QUrl &picture : pictures) {
        if (m_watch.isCancelled())
            return BWExportResult::cancelled();
        const QByteArray jpeg = m_size.isEmpty() ? QByteArray() : fitting(bytesOf(picture, BWJpegPicture::largestFile));
        if (!jpeg.isEmpty() && !write(jpeg) && m_writer->hasFailed())
            break;
        m_watch.add(pictureWork);
    }
    const bool full = m_writer->diskIsFull(); // finishing says only whether there is a movie
    const bool whole = m_writer->finish();
    if (!full && m_writer->isEmpty())
        return BWExportResult::failed(Problem::NoPictures, pictures.value(0), u"none of the pictures can be read"_s);
    if (!whole)
        return BWExportResult::targetFailed(m_part.target(), full ? ENOSPC : EIO);
    BWExportResult result = BWExportResult::done(m_part.target());
    result.leftOut = static_cast<int>(pictures.size() - m_written);
    return result;
}

/// The end of either kind of export: the new movie takes its name.
BWExportResult completed(BWPartFile &part, const BWExportResult &result, const BWExportWatch &watch)
{
    if (result.outcome != Outcome::Done)
        return result;
    if (watch.isCancelled())
        return BWExportResult::cancelled();
    return part.complete() ? result : BWExportResult::targetFailed(part.target(), errno);
}

} // namespace

BWExportResult BWMovieExport::makeSmaller(const QUrl &movie, const QUrl &target, BWSmallerMovie::Quality quality,
                                          BWExportWatch &watch)
{
    const auto source = BWExportSource::open(movie);
    if (!source)
        return BWExportResult::sourceFailed(movie, errno);
    if (source->isAt(BWFilePath::native(target)))
        return BWExportResult::targetIsSource(target);
    BWPartFile part(target);
    if (!part.create())
        return BWExportResult::targetFailed(target, errno);

    watch.begin(parts);
    qint64 reported = 0;
    const auto progress = [&](double done) {
        const auto now = static_cast<qint64>(done * parts);
        watch.add(now - reported);
        reported = now;
        part.written(sizeOf(part.descriptor()));
        return !watch.isCancelled();
    };
    // One processor is left to the live image and a recording.
    const BWSmallerMovie::Options options{.quality = quality, .threads = std::max(1, QThread::idealThreadCount() - 1)};
    const BWSmallerMovie::Result made =
        BWSmallerMovie::make(source->descriptor(), part.descriptor(), options, progress);
    BWExportResult result = BWExportResult::done(target);
    result.leftOut = made.leftOut;
    switch (made.end) {
    case BWSmallerMovie::End::Done:
        break;
    case BWSmallerMovie::End::Cancelled:
        return BWExportResult::cancelled();
    case BWSmallerMovie::End::NoEncoder:
        return BWExportResult::failed(Problem::NoEncoder, target, made.reason);
    case BWSmallerMovie::End::NoPictures:
        return BWExportResult::failed(Problem::NoPictures, movie, made.reason);
    case BWSmallerMovie::End::WriteFailed:
        return BWExportResult::targetFailed(target, made.error);
    case BWSmallerMovie::End::Failed:
        return BWExportResult::failed(Problem::Other, target, made.reason);
    }
    if (!source->isUnchanged())
        return BWExportResult::sourceChanged(movie);
    return completed(part, result, watch);
}

BWExportResult BWMovieExport::joinPictures(const QList<QUrl> &pictures, int rate, const QUrl &target,
                                           BWExportWatch &watch)
{
    if (pictures.contains(BWFilePath::normalized(target)))
        return BWExportResult::targetIsSource(target);
    BWPartFile part(target);
    if (!part.create())
        return BWExportResult::targetFailed(target, errno);
    const BWExportResult result = Joining(std::clamp(rate, 1, mostRate), part, watch).run(pictures);
    return completed(part, result, watch);
}

QList<QUrl> BWMovieExport::inOrder(QList<QUrl> pictures)
{
    std::map<QUrl, QString> keys;
    for (const QUrl &picture : std::as_const(pictures))
        keys[picture] = BWFileNameOrder::key(QFile::decodeName(BWFilePath::lastComponent(picture)));
    std::stable_sort(pictures.begin(), pictures.end(), [&keys](const QUrl &a, const QUrl &b) {
        return BWFileNameOrder::compareKeys(keys.at(a), keys.at(b)) < 0;
    });
    return pictures;
}
