// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWStillLoader.h"

#include "BWACUDriver/BWMovie.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Model/Thumbnails/BWJpegPicture.h"
#include "Model/Thumbnails/BWThumbnailMaker.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <sys/stat.h>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using Problem = BWAlbumPicture::Problem;

namespace {

constexpr QSize largestMovie(10'000, 10'000);
constexpr int readerMegabytes = 800; // a picture of the largest size with 16 bits a colour

bool isTooLarge(const QSize &size)
{
    return qint64(size.width()) * size.height() > BWStillLoader::mostPixels;
}

/// As the screen has it: transparent places become grey, on which black as well as white drawings can be seen.
QImage opaque(QImage image)
{
    if (!image.hasAlphaChannel())
        return std::move(image).convertToFormat(QImage::Format_RGB32);
    QImage ground(image.size(), QImage::Format_RGB32);
    if (ground.isNull())
        return {};
    ground.fill(Qt::gray);
    QPainter(&ground).drawImage(0, 0, image);
    return ground;
}

void readJpeg(const BWThumbnailFile &file, BWAlbumPicture &still, QString &error)
{
    std::vector<uint8_t> bytes;
    if (!file.read(bytes, BWJpegPicture::largestFile)) {
        const std::optional<BWFileStamp> stamp = file.stamp();
        still.problem = stamp && stamp->size > BWJpegPicture::largestFile ? Problem::TooLarge : Problem::Unreadable;
        return;
    }
    BWJpegPicture::Whole whole = BWJpegPicture().whole(bytes, BWStillLoader::mostPixels);
    still.image = std::move(whole.image);
    error = whole.error;
    if (whole.damaged)
        still.problem = still.image.isNull() ? Problem::Damaged : Problem::PartlyDamaged;
    else if (still.image.isNull())
        still.problem = whole.tooLarge ? Problem::TooLarge : Problem::NoMemory;
}

void readMovie(const BWThumbnailFile &file, BWAlbumPicture &still, QString &error)
{
    if (const auto picture = BWMoviePicture::read(file.descriptor(), largestMovie, &error)) {
        still.isMovie = true;
        still.image = opaque(picture->image);
    } else {
        still.problem = still.isMovie ? Problem::NoMoviePicture : Problem::NotAPicture;
    }
}

/// A picture of any other kind that Qt knows. Drawings in text form are none: they may refer to other files.
void readOther(const BWThumbnailFile &file, BWAlbumPicture &still, QString &error)
{
    QFile device;
    device.open(file.descriptor(), QIODevice::ReadOnly);
    QImageReader reader(&device);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (reader.format().isEmpty() || reader.format().startsWith("svg")) {
        readMovie(file, still, error);
        return;
    }
    if (isTooLarge(reader.size())) {
        still.problem = Problem::TooLarge;
        return;
    }
    QImage image;
    if (!reader.read(&image)) {
        error = reader.errorString();
        still.problem = Problem::Damaged;
        return;
    }
    still.problem = isTooLarge(image.size()) ? Problem::TooLarge : Problem::None;
    if (still.problem == Problem::None)
        still.image = opaque(std::move(image));
    if (still.problem == Problem::None && still.image.isNull())
        still.problem = Problem::NoMemory;
}

std::optional<BWFileStamp> stampOf(const BWThumbnailFile &file)
{
    return file.isOpen() ? file.stamp() : std::nullopt;
}

Problem problemOfUnopened(const QByteArray &path)
{
    struct stat info;
    return ::stat(path.constData(), &info) != 0 && (errno == ENOENT || errno == ENOTDIR) ? Problem::Gone
                                                                                         : Problem::Unreadable;
}

} // namespace

QString BWAlbumPicture::text(Problem problem, BWLocalizationManager &texts)
{
    switch (problem) {
    case Problem::None:
        return {};
    case Problem::PartlyDamaged:
        return texts.text(u"look_back"_s, u"partly_damaged"_s, u"Damaged: a part of the picture is missing"_s);
    case Problem::Damaged:
        return texts.text(u"look_back"_s, u"damaged"_s, u"The picture is damaged and cannot be shown."_s);
    case Problem::Gone:
        return texts.text(u"look_back"_s, u"gone"_s, u"The file is no longer there."_s);
    case Problem::Unreadable:
        return texts.text(u"look_back"_s, u"unreadable"_s, u"The file cannot be read."_s);
    case Problem::Empty:
        return texts.text(u"look_back"_s, u"empty"_s, u"The file is empty."_s);
    case Problem::NotAPicture:
        return texts.text(u"look_back"_s, u"not_a_picture"_s, u"The file is not a picture."_s);
    case Problem::NoMoviePicture:
        return texts.text(u"look_back"_s, u"no_movie_picture"_s, u"The video has no picture that can be shown."_s);
    case Problem::TooLarge:
        return texts.text(u"look_back"_s, u"too_large"_s,
                          u"The picture is too large: it has more than 100 megapixels."_s);
    case Problem::NoMemory:
        return texts.text(u"look_back"_s, u"no_memory"_s, u"There is not enough memory to show the picture."_s);
    }
    return {};
}

/// Pictures may be very large: they are read one at a time, unless one takes so long that its disk must be hanging.
struct BWStillLoader::Shared {
    /// Nothing if another picture is wanted by then, or if the file still has the stamp that is known.
    std::optional<BWAlbumPicture> read(const QUrl &file, const std::optional<BWFileStamp> &known, unsigned number)
    {
        constexpr std::chrono::seconds turn{2};
        std::unique_lock lock(mutex);
        changed.wait_for(lock, turn, [&] { return !busy || newest != number; });
        if (newest != number)
            return std::nullopt;
        busy = true;
        lock.unlock();
        std::optional<BWAlbumPicture> still;
        if (!known || stampOf(BWThumbnailFile(BWFilePath::native(file))) != known)
            still = BWStillLoader::read(file);
        lock.lock();
        busy = false;
        changed.notify_all();
        return still;
    }
    void ask()
    {
        const std::lock_guard lock(mutex);
        ++newest;
        changed.notify_all();
    }

    std::atomic<unsigned> newest = 0;
    std::mutex mutex;
    std::condition_variable changed;
    bool busy = false;
};

BWStillLoader::BWStillLoader(BWClock &clock) : m_clock(clock), m_shared(std::make_shared<Shared>())
{
    QImageReader::setAllocationLimit(readerMegabytes);
}

BWStillLoader::~BWStillLoader()
{
    cancel();
}

void BWStillLoader::cancel()
{
    m_shared->ask();
    if (const auto slow = std::exchange(m_slow, {}))
        slow->cancel();
}

void BWStillLoader::load(const QUrl &file)
{
    cancel();
    m_slow = DispatchAfterStrict::dispatchForQueue(
        this, [this, file] { Q_EMIT takesLong(file); }, patience, m_clock);
    start(file, std::nullopt);
}

void BWStillLoader::loadIfChanged(const BWAlbumPicture &shown)
{
    cancel();
    start(shown.file, shown.stamp);
}

void BWStillLoader::start(const QUrl &file, const std::optional<BWFileStamp> &known)
{
    // A thread for each request, as the last one may wait for its disk for ever.
    m_thread = std::make_unique<BWWorkerPool>(1, std::chrono::milliseconds(0));
    m_thread->run([this, file, known, number = m_shared->newest.load(), shared = m_shared, alive = m_alive.watch()] {
        const auto still = shared->read(file, known, number);
        if (!still)
            return;
        BWMainQueue::post(alive, [this, number, still = *still] {
            if (number != m_shared->newest)
                return;
            cancel();
            Q_EMIT loaded(still);
        });
    });
}

BWAlbumPicture BWStillLoader::read(const QUrl &file)
{
    const QByteArray path = BWFilePath::native(file);
    BWAlbumPicture still{file};
    const BWThumbnailFile opened(path);
    still.stamp = stampOf(opened);
    QString error;
    if (!still.stamp) {
        still.problem = problemOfUnopened(path);
    } else if (still.stamp->size == 0) {
        still.problem = Problem::Empty;
    } else if (opened.head(2) == "\xff\xd8") {
        readJpeg(opened, still, error);
    } else if (path.endsWith(".mov")) {
        still.isMovie = true;
        readMovie(opened, still, error);
    } else {
        readOther(opened, still, error);
    }
    if (still.problem != Problem::None)
        qCInfo(bwModel).noquote() << "Cannot show all of" << file.toDisplayString() << "- problem"
                                  << static_cast<int>(still.problem) << error;
    return still;
}
