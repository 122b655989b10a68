#include "media/BWMovieWriter.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWFileBytes.h"
#include "BWACUDriver/BWMovie.h"
#include "BWLibav.h"
#include "media/BWJpeg.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <QDateTime>
#include <QFile>
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
    /// Keeps the file open; no effect if it cannot be opened.
    explicit DiskSync(const QString &path);
    /// Waits for a request in progress.
    ~DiskSync();

    /// Returns at once. A request made while one is in progress is carried out after it.
    void request();

    /// The open file; -1 if it could not be opened.
    int descriptor() const { return m_descriptor; }

private:
    void run();

    const int m_descriptor;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_wanted = false;
    bool m_ending = false;
    std::thread m_thread;
};

DiskSync::DiskSync(const QString &path)
    : m_descriptor(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC)), m_thread(&DiskSync::run, this)
{
}

DiskSync::~DiskSync()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        m_changed.notify_all();
    }
    m_thread.join();
    if (m_descriptor >= 0)
        close(m_descriptor);
}

void DiskSync::request()
{
    const std::lock_guard lock(m_mutex);
    m_wanted = true;
    m_changed.notify_all();
}

void DiskSync::run()
{
    bool warned = false;
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_wanted || m_ending; });
        if (m_ending)
            return;
        m_wanted = false;
        lock.unlock();
        if (m_descriptor >= 0 && !BWFileBytes::synchronizeData(m_descriptor) && !std::exchange(warned, true))
            qCWarning(bwMedia) << "A recording cannot be synced to the disk:" << std::strerror(errno);
        lock.lock();
    }
}

class MovWriter final : public BWMovieWriter {
public:
    MovWriter(QString path, BWLibav::Output output)
        : m_path(std::move(path)), m_output(std::move(output)), m_disk(m_path)
    {
    }
    ~MovWriter() override { MovWriter::finish(); }

    bool write(const BWFrame &frame) override;
    bool finish() override;
    int64_t bytesWritten() const override { return m_goodSize; }
    bool diskIsFull() const override { return m_diskIsFull; }
    bool isRemoved() const override;
    bool isEmpty() const override { return m_empty; }

private:
    bool begin(const BWFrame &frame);
    bool writePacket(BWJpeg::Bytes jpeg, int64_t time);
    int64_t timeOf(const BWFrame &frame) const;
    bool fail(int result);
    void leaveOut(const BWFrame &frame, const char *reason);
    void complete();
    QString pathOfOpenFile() const;

    QString m_path;
    BWLibav::Output m_output;
    DiskSync m_disk;
    std::chrono::steady_clock::time_point m_synced = std::chrono::steady_clock::now();
    AVStream *m_stream = nullptr;
    BWFrameInfo m_first;
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
    m_first = frame.info();
    m_first.planes = {};
    m_stream = avformat_new_stream(m_output.get(), nullptr);
    if (!m_stream)
        return fail(AVERROR(ENOMEM));
    AVCodecParameters *codec = m_stream->codecpar;
    codec->codec_type = AVMEDIA_TYPE_VIDEO;
    codec->codec_id = AV_CODEC_ID_MJPEG;
    codec->width = frame.width();
    codec->height = frame.height();
    codec->format = AV_PIX_FMT_YUVJ422P;
    codec->color_range = AVCOL_RANGE_JPEG;
    codec->color_space = AVCOL_SPC_SMPTE170M;
    codec->color_primaries = AVCOL_PRI_BT709;
    codec->color_trc = AVCOL_TRC_BT709;
    m_stream->time_base = {1, ticksPerSecond};
    const QByteArray now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1();
    av_dict_set(&m_output->metadata, "creation_time", now.constData(), 0);

    // One fragment per picture, written at once: the file can be played whatever happens next.
    m_output->flags |= AVFMT_FLAG_FLUSH_PACKETS;
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "frag_keyframe+empty_moov+skip_trailer", 0);
    const int result = avformat_write_header(m_output.get(), &options);
    av_dict_free(&options);
    if (result < 0)
        return fail(result);
    m_goodSize = avio_tell(m_output->pb);
    return true;
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
    if (m_stream
        && (frame.size() != QSize(m_first.width, m_first.height) || frame.pixelFormat() != m_first.pixelFormat)) {
        leaveOut(frame, "it differs from the first");
        return false;
    }
    QByteArray completed;
    BWJpeg::Bytes jpeg;
    if (frame.pixelFormat() != BWPixelFormat::MJPEG) {
        jpeg = BWJpeg::compress(frame, rawQuality);
    } else if (BWJpeg::looksComplete(frame.plane(0).data, frame.plane(0).size)) {
        completed = BWJpeg::withHuffmanTables(frame.plane(0).data, frame.plane(0).size);
        jpeg = {reinterpret_cast<const uint8_t *>(completed.constData()), static_cast<std::size_t>(completed.size())};
    }
    if (jpeg.empty()) {
        leaveOut(frame, "it is damaged");
        return false;
    }
    if (!m_stream && !begin(frame))
        return false;
    return writePacket(jpeg, timeOf(frame));
}

bool MovWriter::writePacket(BWJpeg::Bytes jpeg, int64_t time)
{
    if (!m_empty) {
        time = std::max(time, m_lastTime + 1);
        m_lastDuration = time - m_lastTime;
    }
    const BWLibav::Packet packet(av_packet_alloc());
    if (!packet)
        return fail(AVERROR(ENOMEM));
    packet->data = const_cast<uint8_t *>(jpeg.data()); // libav only reads it
    packet->size = static_cast<int>(jpeg.size());
    packet->flags = AV_PKT_FLAG_KEY;
    packet->pts = packet->dts = av_rescale_q(time, {1, ticksPerSecond}, m_stream->time_base);
    packet->duration = av_rescale_q(m_lastDuration, {1, ticksPerSecond}, m_stream->time_base);
    int result = av_write_frame(m_output.get(), packet.get());
    if (result >= 0)
        result = m_output->pb->error;
    if (result < 0)
        return fail(result);
    m_empty = false;
    m_lastTime = time;
    m_goodSize = avio_tell(m_output->pb);
    const auto now = std::chrono::steady_clock::now();
    if (now - m_synced >= syncInterval) {
        m_synced = now;
        m_disk.request();
    }
    return true;
}

bool MovWriter::fail(int result)
{
    qCWarning(bwMedia) << "Recording to" << m_path << "failed:" << BWLibav::errorText(result);
    m_failed = true;
    m_diskIsFull = result == AVERROR(ENOSPC) || result == AVERROR(EDQUOT) || result == AVERROR(EFBIG);
    m_output.reset();
    QFile::resize(pathOfOpenFile(), m_goodSize); // cuts off the piece that was being written
    return false;
}

bool MovWriter::isRemoved() const
{
    struct stat open { };
    struct stat named { };
    if (fstat(m_disk.descriptor(), &open) != 0)
        return false;
    const int result = stat(QFile::encodeName(m_path).constData(), &named);
    return result != 0 ? errno == ENOENT : named.st_dev != open.st_dev || named.st_ino != open.st_ino;
}

/// The kernel has a name for every open file, even for one that was removed.
QString MovWriter::pathOfOpenFile() const
{
    return isRemoved() ? QStringLiteral("/proc/self/fd/%1").arg(m_disk.descriptor()) : m_path;
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
        return !m_failed;
    m_finished = true;
    if (!m_failed && m_stream) {
        int result = av_write_trailer(m_output.get());
        if (result >= 0)
            result = m_output->pb->error;
        if (result < 0)
            fail(result);
    }
    m_output.reset();
    complete();
    return !m_failed;
}

void MovWriter::complete()
{
    QString reason;
    const BWMovieCompletion completion = m_empty ? BWMovieCompletion::Empty : completeMovie(pathOfOpenFile(), &reason);
    if (completion == BWMovieCompletion::Failed)
        qCWarning(bwMedia).noquote() << m_path << "is whole, but stays in fragments:" << reason;
    if (completion != BWMovieCompletion::Empty)
        return;
    // The first picture reaches the file with the second one, which a full disk may refuse.
    m_empty = true;
    m_failed = true;
    if (!isRemoved())
        QFile::remove(m_path);
}

} // namespace

std::unique_ptr<BWMovieWriter> BWLibav::createWriter(const QString &path, QString &error)
{
    int result = 0;
    Output output = createMov(path, result);
    if (!output) {
        error = errorText(result);
        return nullptr;
    }
    return std::make_unique<MovWriter>(path, std::move(output));
}
