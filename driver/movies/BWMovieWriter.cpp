// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWMovieWriter.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWFileBytes.h"
#include "BWACUDriver/BWMovie.h"
#include "BWLibav.h"
#include "media/BWJpeg.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <QDateTime>
#include <QFile>
#include <QtEndian>
#include <span>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr int ticksPerSecond = 90000;
constexpr std::chrono::milliseconds syncInterval(800); // what a power cut may cost
constexpr int rawQuality = 95; // of frames that the camera did not compress itself

/// Syncs a file to the disk on its own thread: that may take the disk a while, and the writer goes on meanwhile.
class DiskSync {
public:
    /// Takes over the open file.
    explicit DiskSync(int file) : m_file(file), m_thread(&DiskSync::run, this) { }
    /// Waits for a request in progress, and closes the file.
    ~DiskSync();

    /// Returns at once. A request made while one is in progress is carried out after it.
    void request();
    /// The errno of the first sync that failed; 0 as long as all is well. The kernel reports a lost block only once.
    int error() const { return m_error; }

    int file() const { return m_file; }

private:
    void run();

    const int m_file;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_wanted = false;
    bool m_ending = false;
    std::atomic<int> m_error = 0;
    std::thread m_thread;
};

DiskSync::~DiskSync()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        m_changed.notify_all();
    }
    m_thread.join();
    close(m_file);
}

void DiskSync::request()
{
    const std::lock_guard lock(m_mutex);
    m_wanted = true;
    m_changed.notify_all();
}

void DiskSync::run()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_wanted || m_ending; });
        if (m_ending)
            return;
        m_wanted = false;
        lock.unlock();
        if (m_error == 0 && !BWFileBytes::synchronizeData(m_file))
            m_error = errno;
        lock.lock();
    }
}

/// What stands in a file in front of the pictures; empty, with libav's error number in `result`, if libav fails.
QByteArray makeHeader(QSize size, int &result)
{
    AVFormatContext *context = nullptr;
    result = avformat_alloc_output_context2(&context, nullptr, "mov", nullptr);
    if (result < 0)
        return {};
    const BWLibav::Output movie(context);
    AVStream *const stream = avformat_new_stream(context, nullptr);
    result = stream ? avio_open_dyn_buf(&context->pb) : AVERROR(ENOMEM);
    if (result < 0)
        return {};
    AVCodecParameters *codec = stream->codecpar;
    codec->codec_type = AVMEDIA_TYPE_VIDEO;
    codec->codec_id = AV_CODEC_ID_MJPEG;
    codec->width = size.width();
    codec->height = size.height();
    codec->format = AV_PIX_FMT_YUVJ422P;
    codec->color_range = AVCOL_RANGE_JPEG;
    codec->color_space = AVCOL_SPC_SMPTE170M;
    codec->color_primaries = AVCOL_PRI_BT709;
    codec->color_trc = AVCOL_TRC_BT709;
    stream->time_base = {1, ticksPerSecond};
    const QByteArray now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1();
    av_dict_set(&context->metadata, "creation_time", now.constData(), 0);
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "frag_keyframe+empty_moov", 0);
    result = avformat_write_header(context, &options);
    av_dict_free(&options);
    uint8_t *bytes = nullptr;
    const int written = avio_close_dyn_buf(std::exchange(context->pb, nullptr), &bytes);
    QByteArray header(reinterpret_cast<const char *>(bytes), result < 0 ? 0 : written);
    av_free(bytes);
    return header;
}

constexpr uint32_t type(const char (&name)[5])
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<uint8_t>(name[i]);
    return value;
}

using FragmentHeader = std::array<uint32_t, 29>;

/// What stands in front of a picture: a movie fragment (ISO/IEC 14496-12) of one sample, and the header of its data.
/// libav would make it, too, but it copies the picture twice on the way, and writes it when the next one comes.
FragmentHeader makeFragment(uint32_t number, int64_t offset, int64_t time, int64_t duration, std::size_t bytes)
{
    constexpr uint32_t isSync = 0x02000000; // it depends on no other picture
    constexpr uint32_t size = sizeof(FragmentHeader);
    const auto high = [](int64_t value) { return static_cast<uint32_t>(static_cast<uint64_t>(value) >> 32); };
    const auto low = [](int64_t value) { return static_cast<uint32_t>(value); };
    const auto length = static_cast<uint32_t>(bytes);
    FragmentHeader header{
        108,          type("moof"), // box by box: its size, its type, its version and flags, its fields
        16,           type("mfhd"),  0,         number,       84,           type("traf"), 24,
        type("tfhd"), 0x1,           1,         high(offset), low(offset),  20,           type("tfdt"),
        0x01000000,   high(time),    low(time), 32,           type("trun"), 0x701,        1,
        size,         low(duration), length,    isSync,       8 + length,   type("mdat"),
    };
    qToBigEndian<uint32_t>(header.data(), header.size(), header.data());
    return header;
}

class MovWriter final : public BWMovieWriter {
public:
    /// Takes over the open file, which is empty.
    MovWriter(QString path, int file) : m_path(std::move(path)), m_disk(file) { }
    ~MovWriter() override { MovWriter::finish(); }

    bool write(const BWFrame &frame) override;
    bool finish() override;
    int64_t bytesWritten() const override { return m_goodSize; }
    bool hasFailed() const override { return m_failed; }
    bool diskIsFull() const override { return m_diskIsFull; }
    bool isRemoved() const override;
    bool isEmpty() const override { return m_empty; }

private:
    bool begin(const BWFrame &frame);
    static BWJpeg::Bytes compressed(const BWFrame &frame);
    bool writePicture(const BWJpeg::Parts &jpeg, int64_t time);
    bool writeParts(std::span<const BWJpeg::Bytes> parts);
    int64_t timeOf(const BWFrame &frame) const;
    bool fail(int error);
    bool fail(const QString &reason);
    void leaveOut(const BWFrame &frame, const char *reason);
    void complete();
    QString pathOfOpenFile() const;

    QString m_path;
    DiskSync m_disk;
    std::chrono::steady_clock::time_point m_synced = std::chrono::steady_clock::now();
    BWFrameInfo m_first;
    bool m_begun = false;
    uint32_t m_fragments = 0;
    int64_t m_lastTime = 0;
    int64_t m_lastDuration = ticksPerSecond / 30;
    int64_t m_goodSize = 0; ///< bytes of the file known to be good
    bool m_empty = true;
    bool m_failed = false;
    bool m_diskIsFull = false;
    bool m_finished = false;
    bool m_leftOutLogged = false;
};

bool MovWriter::begin(const BWFrame &frame)
{
    m_begun = true;
    m_first = frame.info();
    m_first.planes = {};
    int result = 0;
    const QByteArray header = makeHeader(frame.size(), result);
    if (header.isEmpty())
        return fail(BWLibav::errorText(result));
    const BWJpeg::Bytes bytes{reinterpret_cast<const uint8_t *>(header.constData()),
                              static_cast<std::size_t>(header.size())};
    return writeParts({&bytes, 1});
}

int64_t MovWriter::timeOf(const BWFrame &frame) const
{
    using Ticks = std::chrono::duration<int64_t, std::ratio<1, ticksPerSecond>>;
    return std::chrono::round<Ticks>(frame.timestamp() - m_first.timestamp).count();
}

bool MovWriter::write(const BWFrame &frame)
{
    if (m_failed || m_finished)
        return false;
    if (m_disk.error() != 0)
        return fail(m_disk.error());
    if (m_begun
        && (frame.size() != QSize(m_first.width, m_first.height) || frame.pixelFormat() != m_first.pixelFormat)) {
        leaveOut(frame, "it differs from the first");
        return false;
    }
    BWJpeg::Parts jpeg;
    if (frame.pixelFormat() != BWPixelFormat::MJPEG)
        jpeg[0] = compressed(frame);
    else if (BWJpeg::looksComplete(frame.plane(0).data, frame.plane(0).size))
        jpeg = BWJpeg::partsWithHuffmanTables(frame.plane(0).data, frame.plane(0).size);
    if (jpeg[0].empty()) {
        leaveOut(frame, "it is damaged, or there is no memory to encode it");
        return false;
    }
    if (!m_begun && !begin(frame))
        return false;
    return writePicture(jpeg, timeOf(frame));
}

/// Empty if it is damaged, or if there is no memory for it just now.
BWJpeg::Bytes MovWriter::compressed(const BWFrame &frame)
{
    try {
        return BWJpeg::compress(frame, rawQuality);
    } catch (const std::bad_alloc &) {
        return {};
    }
}

bool MovWriter::writePicture(const BWJpeg::Parts &jpeg, int64_t time)
{
    if (!m_empty) {
        time = std::max(time, m_lastTime + 1);
        m_lastDuration = time - m_lastTime;
    }
    const std::size_t size = jpeg[0].size() + jpeg[1].size() + jpeg[2].size();
    const FragmentHeader header = makeFragment(++m_fragments, m_goodSize, time, m_lastDuration, size);
    const BWJpeg::Bytes head{reinterpret_cast<const uint8_t *>(header.data()), sizeof header};
    if (!writeParts(std::array{head, jpeg[0], jpeg[1], jpeg[2]}))
        return false;
    m_empty = false;
    m_lastTime = time;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_synced >= syncInterval) {
        m_synced = now;
        m_disk.request();
    }
    return true;
}

/// In one piece, if the disk can: a kill then leaves all of them or none.
bool MovWriter::writeParts(std::span<const BWJpeg::Bytes> parts)
{
    if (!BWFileBytes::write(m_disk.file(), parts))
        return fail(errno);
    for (const BWJpeg::Bytes &part : parts)
        m_goodSize += static_cast<int64_t>(part.size());
    return true;
}

bool MovWriter::fail(int error)
{
    m_diskIsFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return fail(QString::fromLocal8Bit(std::strerror(error)));
}

bool MovWriter::fail(const QString &reason)
{
    qCWarning(bwMedia) << "Recording to" << m_path << "failed:" << reason;
    m_failed = true;
    if (!m_finished && ::ftruncate(m_disk.file(), m_goodSize) != 0) // cuts off the piece that was being written
        qCWarning(bwMedia) << "What was written of the last picture stays:" << std::strerror(errno);
    return false;
}

bool MovWriter::isRemoved() const
{
    struct stat open { };
    struct stat named { };
    if (fstat(m_disk.file(), &open) != 0)
        return false;
    const int result = stat(QFile::encodeName(m_path).constData(), &named);
    return result != 0 ? errno == ENOENT : named.st_dev != open.st_dev || named.st_ino != open.st_ino;
}

/// The kernel has a name for every open file, even for one that was removed.
QString MovWriter::pathOfOpenFile() const
{
    return isRemoved() ? QStringLiteral("/proc/self/fd/%1").arg(m_disk.file()) : m_path;
}

void MovWriter::leaveOut(const BWFrame &frame, const char *reason)
{
    if (m_leftOutLogged)
        return;
    m_leftOutLogged = true;
    qCWarning(bwMedia) << "Frame" << frame.sequence() << "was left out of" << m_path << "because" << reason
                       << "- others may follow";
}

bool MovWriter::finish()
{
    if (m_finished)
        return !m_failed && !m_empty;
    m_finished = true;
    complete();
    // A block that was lost on the way to the disk is reported to each open file: to this one, too, whoever synced it.
    if (!m_empty && !m_failed && (m_disk.error() != 0 || !BWFileBytes::synchronizeData(m_disk.file())))
        fail(m_disk.error() != 0 ? m_disk.error() : errno);
    return !m_failed && !m_empty;
}

void MovWriter::complete()
{
    QString reason;
    const BWMovieCompletion completion = m_empty ? BWMovieCompletion::Empty : completeMovie(pathOfOpenFile(), &reason);
    if (completion == BWMovieCompletion::Failed)
        qCWarning(bwMedia).noquote() << m_path << "is whole, but stays in fragments:" << reason;
    if (completion != BWMovieCompletion::Empty)
        return;
    m_empty = true;
    if (!isRemoved())
        QFile::remove(m_path);
}

} // namespace

std::unique_ptr<BWMovieWriter> BWLibav::createWriter(const QString &path, QString &error)
{
    silence();
    const int file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0) {
        error = QString::fromLocal8Bit(std::strerror(errno));
        return nullptr;
    }
    return std::make_unique<MovWriter>(path, file);
}
