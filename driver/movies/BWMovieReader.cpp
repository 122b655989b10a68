// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/BWMovieReader.h"

#include "base/BWDriverLog.h"
#include "BWLibav.h"
#include "media/BWJpeg.h"

#include <utility>

namespace {

std::optional<BWPixelFormat> nativeFormatOf(const AVCodecParameters &parameters)
{
    if (parameters.codec_id == AV_CODEC_ID_MJPEG)
        return BWPixelFormat::MJPEG;
    const bool yuyv = parameters.codec_id == AV_CODEC_ID_RAWVIDEO && parameters.format == AV_PIX_FMT_YUYV422;
    if (yuyv && parameters.width % 2 == 0)
        return BWPixelFormat::YUYV;
    return std::nullopt;
}

/// Whether the header has all that is needed of a movie. Else libav decodes the first pictures, which takes time.
bool headerSuffices(const AVFormatContext &movie)
{
    for (unsigned i = 0; i < movie.nb_streams; ++i) {
        const AVStream &stream = *movie.streams[i];
        const AVCodecParameters &codec = *stream.codecpar;
        if (codec.codec_type == AVMEDIA_TYPE_VIDEO)
            return codec.codec_id == AV_CODEC_ID_MJPEG && codec.width > 0 && codec.height > 0
                && stream.avg_frame_rate.num > 0;
    }
    return false;
}

/// With libav.
class LibavReader final : public BWMovieReader {
public:
    explicit LibavReader(const QString &path) : m_path(path) { }

    /// Steps to the first good picture; libav's error number on failure.
    int open();
    bool statesSize() const { return parameters().width > 0 && parameters().height > 0; }

    BWResolution size() const override;
    double frameRate() const override;
    std::optional<BWPixelFormat> nativeFormat() const override { return m_native; }
    BWColorMatrix matrix() const override;
    BWColorRange range() const override;
    bool advance() override;
    bool rewind() override;
    std::span<const uint8_t> packet() const override;
    std::shared_ptr<const void> packetKeeper() const override;
    bool decode(BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes) override;

private:
    const AVCodecParameters &parameters() const { return *m_input->streams[m_stream]->codecpar; }
    int openFile();
    bool toStart();
    int step();
    int stepNative();
    int stepDecoded();
    bool isWhole(const AVPacket &candidate) const;
    void logDamage(const QString &what);

    QString m_path;
    BWLibav::Input m_input;
    int m_stream = -1;
    BWLibav::Codec m_codec;
    BWLibav::Packet m_packet{av_packet_alloc()}; ///< of the current picture, if it is native
    BWLibav::Packet m_next{av_packet_alloc()};
    BWLibav::Frame m_frame{av_frame_alloc()}; ///< the current picture, once decoded
    BWLibav::Frame m_nextFrame{av_frame_alloc()};
    std::optional<BWPixelFormat> m_native;
    BWFrameScaler m_scaler;
    bool m_decoded = false; ///< m_frame is the current picture
    bool m_draining = false; ///< the file is at its end, the decoder not yet
    bool m_exhausted = false;
    bool m_damageLogged = false;
};

int LibavReader::openFile()
{
    int result = 0;
    m_input = BWLibav::openInput(m_path, result);
    if (!m_input)
        return result;
    if (!headerSuffices(*m_input))
        result = avformat_find_stream_info(m_input.get(), nullptr);
    if (result < 0)
        return result;
    const AVCodec *decoder = nullptr;
    m_stream = av_find_best_stream(m_input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (m_stream < 0)
        return m_stream;
    for (unsigned i = 0; i < m_input->nb_streams; ++i)
        m_input->streams[i]->discard = static_cast<int>(i) == m_stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    m_codec.reset(avcodec_alloc_context3(decoder));
    if (!m_codec || !m_packet || !m_next || !m_frame || !m_nextFrame)
        return AVERROR(ENOMEM);
    result = avcodec_parameters_to_context(m_codec.get(), &parameters());
    if (result >= 0)
        result = avcodec_open2(m_codec.get(), decoder, nullptr);
    m_native = nativeFormatOf(parameters());
    return result;
}

bool LibavReader::toStart()
{
    m_draining = false;
    avcodec_flush_buffers(m_codec.get());
    const int64_t start = m_input->streams[m_stream]->start_time;
    const int64_t target = start == AV_NOPTS_VALUE ? 0 : start;
    if (avformat_seek_file(m_input.get(), m_stream, INT64_MIN, target, target, 0) >= 0)
        return true;
    return openFile() >= 0; // some kinds of file can only be read forward
}

bool LibavReader::isWhole(const AVPacket &candidate) const
{
    const auto size = static_cast<std::size_t>(candidate.size);
    if (m_native == BWPixelFormat::MJPEG)
        return BWJpeg::looksComplete(candidate.data, size);
    return size == static_cast<std::size_t>(parameters().width) * static_cast<std::size_t>(parameters().height) * 2;
}

void LibavReader::logDamage(const QString &what)
{
    if (!std::exchange(m_damageLogged, true))
        qCWarning(bwMedia) << m_path << "is damaged:" << what << "- its bad pictures are left out";
}

/// To the next good picture, or libav's error number, which is AVERROR_EOF at the end.
int LibavReader::step()
{
    return m_native ? stepNative() : stepDecoded();
}

int LibavReader::stepNative()
{
    for (;;) {
        av_packet_unref(m_next.get());
        const int result = av_read_frame(m_input.get(), m_next.get());
        if (result < 0)
            return result;
        if (m_next->stream_index != m_stream)
            continue;
        if (isWhole(*m_next)) {
            m_packet.swap(m_next);
            m_decoded = false;
            return 0;
        }
        logDamage(QStringLiteral("a picture of %1 bytes is incomplete").arg(m_next->size));
    }
}

int LibavReader::stepDecoded()
{
    for (;;) {
        int result = avcodec_receive_frame(m_codec.get(), m_nextFrame.get());
        if (result >= 0) {
            m_frame.swap(m_nextFrame);
            m_decoded = true;
            return 0;
        }
        if (result == AVERROR_EOF || m_draining)
            return AVERROR_EOF;
        if (result != AVERROR(EAGAIN))
            logDamage(BWLibav::errorText(result));
        av_packet_unref(m_next.get());
        result = av_read_frame(m_input.get(), m_next.get());
        if (result < 0) {
            if (result != AVERROR_EOF)
                logDamage(BWLibav::errorText(result));
            m_draining = true;
            avcodec_send_packet(m_codec.get(), nullptr);
            continue;
        }
        if (m_next->stream_index != m_stream)
            continue;
        result = avcodec_send_packet(m_codec.get(), m_next.get());
        if (result < 0)
            logDamage(BWLibav::errorText(result));
    }
}

int LibavReader::open()
{
    const int result = openFile();
    return result < 0 ? result : step();
}

BWResolution LibavReader::size() const
{
    return {parameters().width, parameters().height};
}

double LibavReader::frameRate() const
{
    constexpr double usual = 30;
    constexpr double fastest = 1000;
    AVStream *const stream = m_input->streams[m_stream];
    const AVRational guess = av_guess_frame_rate(m_input.get(), stream, nullptr);
    const double rate = av_q2d(guess.num > 0 ? guess : stream->avg_frame_rate);
    return rate > 0 && rate <= fastest ? rate : usual;
}

BWColorMatrix LibavReader::matrix() const
{
    return BWFrameScaler::matrixOf(parameters().color_space, parameters().codec_id, parameters().height);
}

BWColorRange LibavReader::range() const
{
    const bool full = m_native == BWPixelFormat::MJPEG || parameters().color_range == AVCOL_RANGE_JPEG;
    return full ? BWColorRange::Full : BWColorRange::Limited;
}

bool LibavReader::advance()
{
    if (m_exhausted)
        return false;
    int result = step();
    if (result < 0) {
        if (result != AVERROR_EOF)
            logDamage(BWLibav::errorText(result));
        result = toStart() ? step() : AVERROR_EOF;
    }
    if (result < 0) {
        m_exhausted = true;
        qCWarning(bwMedia) << m_path << "has no more good pictures; the last one stays";
    }
    return result >= 0;
}

bool LibavReader::rewind()
{
    if (m_exhausted || !toStart())
        return false;
    return advance();
}

std::span<const uint8_t> LibavReader::packet() const
{
    if (!m_native)
        return {};
    return {m_packet->data, static_cast<std::size_t>(m_packet->size)};
}

std::shared_ptr<const void> LibavReader::packetKeeper() const
{
    return {av_packet_clone(m_packet.get()), BWLibav::Deleter()};
}

bool LibavReader::decode(BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes)
{
    if (!m_decoded) {
        avcodec_flush_buffers(m_codec.get());
        int result = avcodec_send_packet(m_codec.get(), m_packet.get());
        if (result >= 0)
            result = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (result < 0) {
            logDamage(BWLibav::errorText(result));
            return false;
        }
        m_decoded = true;
    }
    return m_scaler.scale(*m_frame, m_codec->codec_id, size, wanted, planes);
}

} // namespace

std::unique_ptr<BWMovieReader> BWLibav::openReader(const QString &path, QString &error)
{
    auto reader = std::make_unique<LibavReader>(path);
    if (const int result = reader->open(); result < 0) {
        error = errorText(result);
        return nullptr;
    }
    if (!reader->statesSize()) {
        error = QStringLiteral("the movie does not state its size");
        return nullptr;
    }
    return reader;
}
