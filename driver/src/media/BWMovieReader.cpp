#include "media/BWMovieReader.h"

#include "base/BWDriverLog.h"
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

} // namespace

int BWMovieReader::openFile()
{
    int result = 0;
    m_input = BWLibav::openInput(m_path, result);
    if (!m_input)
        return result;
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

bool BWMovieReader::toStart()
{
    m_draining = false;
    avcodec_flush_buffers(m_codec.get());
    const int64_t start = m_input->streams[m_stream]->start_time;
    const int64_t target = start == AV_NOPTS_VALUE ? 0 : start;
    if (avformat_seek_file(m_input.get(), m_stream, INT64_MIN, target, target, 0) >= 0)
        return true;
    return openFile() >= 0; // some kinds of file can only be read forward
}

bool BWMovieReader::isWhole(const AVPacket &candidate) const
{
    const auto size = static_cast<std::size_t>(candidate.size);
    if (m_native == BWPixelFormat::MJPEG)
        return BWJpeg::looksComplete(candidate.data, size);
    return size == static_cast<std::size_t>(parameters().width) * static_cast<std::size_t>(parameters().height) * 2;
}

void BWMovieReader::logDamage(const QString &what)
{
    if (!std::exchange(m_damageLogged, true))
        qCWarning(bwMedia) << m_path << "is damaged:" << what << "- its bad pictures are left out";
}

/// To the next good picture, or libav's error number, which is AVERROR_EOF at the end.
int BWMovieReader::step()
{
    return m_native ? stepNative() : stepDecoded();
}

int BWMovieReader::stepNative()
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

int BWMovieReader::stepDecoded()
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

BWMovieReader::BWMovieReader(const QString &path) : m_path(path) { }

std::unique_ptr<BWMovieReader> BWMovieReader::open(const QString &path, QString &error)
{
    std::unique_ptr<BWMovieReader> reader(new BWMovieReader(path));
    int result = reader->openFile();
    if (result >= 0)
        result = reader->step();
    if (result < 0) {
        error = BWLibav::errorText(result);
        return nullptr;
    }
    if (reader->parameters().width <= 0 || reader->parameters().height <= 0) {
        error = QStringLiteral("the movie does not state its size");
        return nullptr;
    }
    return reader;
}

BWResolution BWMovieReader::size() const
{
    return {parameters().width, parameters().height};
}

double BWMovieReader::frameRate() const
{
    constexpr double usual = 30;
    constexpr double fastest = 1000;
    const double rate = av_q2d(av_guess_frame_rate(m_input.get(), m_input->streams[m_stream], nullptr));
    return rate > 0 && rate <= fastest ? rate : usual;
}

std::optional<BWPixelFormat> BWMovieReader::nativeFormat() const
{
    return m_native;
}

BWColorMatrix BWMovieReader::matrix() const
{
    return BWFrameScaler::matrixOf(parameters().color_space, parameters().codec_id, parameters().height);
}

BWColorRange BWMovieReader::range() const
{
    const bool full = m_native == BWPixelFormat::MJPEG || parameters().color_range == AVCOL_RANGE_JPEG;
    return full ? BWColorRange::Full : BWColorRange::Limited;
}

bool BWMovieReader::advance()
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

bool BWMovieReader::rewind()
{
    if (m_exhausted || !toStart())
        return false;
    return advance();
}

std::span<const uint8_t> BWMovieReader::packet() const
{
    if (!m_native)
        return {};
    return {m_packet->data, static_cast<std::size_t>(m_packet->size)};
}

std::shared_ptr<const void> BWMovieReader::packetKeeper() const
{
    return {av_packet_clone(m_packet.get()), BWLibav::Deleter()};
}

bool BWMovieReader::decode(BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes)
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
