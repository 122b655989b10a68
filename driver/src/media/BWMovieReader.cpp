#include "media/BWMovieReader.h"

#include "base/BWDriverLog.h"
#include "media/BWJpeg.h"
#include "media/BWLibav.h"

#include <utility>

struct BWMovieReader::Private {
    QString path;
    BWLibav::Input input;
    int stream = -1;
    BWLibav::Codec codec;
    BWLibav::Packet packet{av_packet_alloc()}; ///< of the current picture, where it is native
    BWLibav::Packet next{av_packet_alloc()};
    BWLibav::Frame frame{av_frame_alloc()}; ///< the current picture, once decoded
    BWLibav::Frame nextFrame{av_frame_alloc()};
    std::optional<BWPixelFormat> native;
    BWFrameScaler scaler;
    bool decoded = false; ///< `frame` is the current picture
    bool draining = false; ///< the file is at its end, the decoder not yet
    bool exhausted = false;
    bool damageLogged = false;

    const AVCodecParameters &parameters() const { return *input->streams[stream]->codecpar; }

    int open();
    bool toStart();
    int step();
    int stepNative();
    int stepDecoded();
    bool isWhole(const AVPacket &candidate) const;
    void logDamage(const QString &what);
};

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

int BWMovieReader::Private::open()
{
    int result = 0;
    input = BWLibav::openInput(path, result);
    if (!input)
        return result;
    result = avformat_find_stream_info(input.get(), nullptr);
    if (result < 0)
        return result;
    const AVCodec *decoder = nullptr;
    stream = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (stream < 0)
        return stream;
    for (unsigned i = 0; i < input->nb_streams; ++i)
        input->streams[i]->discard = static_cast<int>(i) == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    codec.reset(avcodec_alloc_context3(decoder));
    if (!codec || !packet || !next || !frame || !nextFrame)
        return AVERROR(ENOMEM);
    result = avcodec_parameters_to_context(codec.get(), &parameters());
    if (result >= 0)
        result = avcodec_open2(codec.get(), decoder, nullptr);
    native = nativeFormatOf(parameters());
    return result;
}

bool BWMovieReader::Private::toStart()
{
    draining = false;
    avcodec_flush_buffers(codec.get());
    const int64_t start = input->streams[stream]->start_time;
    const int64_t target = start == AV_NOPTS_VALUE ? 0 : start;
    if (avformat_seek_file(input.get(), stream, INT64_MIN, target, target, 0) >= 0)
        return true;
    return open() >= 0; // some kinds of file can only be read forward
}

bool BWMovieReader::Private::isWhole(const AVPacket &candidate) const
{
    const auto size = static_cast<std::size_t>(candidate.size);
    if (native == BWPixelFormat::MJPEG)
        return BWJpeg::looksComplete(candidate.data, size);
    return size == static_cast<std::size_t>(parameters().width) * static_cast<std::size_t>(parameters().height) * 2;
}

void BWMovieReader::Private::logDamage(const QString &what)
{
    if (!std::exchange(damageLogged, true))
        qCWarning(bwMedia) << path << "is damaged:" << what << "- its bad pictures are left out";
}

/// To the next good picture, or libav's error number, which is AVERROR_EOF at the end.
int BWMovieReader::Private::step()
{
    return native ? stepNative() : stepDecoded();
}

int BWMovieReader::Private::stepNative()
{
    for (;;) {
        av_packet_unref(next.get());
        const int result = av_read_frame(input.get(), next.get());
        if (result < 0)
            return result;
        if (next->stream_index != stream)
            continue;
        if (isWhole(*next)) {
            packet.swap(next);
            decoded = false;
            return 0;
        }
        logDamage(QStringLiteral("a picture of %1 bytes is incomplete").arg(next->size));
    }
}

int BWMovieReader::Private::stepDecoded()
{
    for (;;) {
        int result = avcodec_receive_frame(codec.get(), nextFrame.get());
        if (result >= 0) {
            frame.swap(nextFrame);
            decoded = true;
            return 0;
        }
        if (result == AVERROR_EOF || draining)
            return AVERROR_EOF;
        if (result != AVERROR(EAGAIN))
            logDamage(BWLibav::errorText(result));
        av_packet_unref(next.get());
        result = av_read_frame(input.get(), next.get());
        if (result < 0) {
            if (result != AVERROR_EOF)
                logDamage(BWLibav::errorText(result));
            draining = true;
            avcodec_send_packet(codec.get(), nullptr);
            continue;
        }
        if (next->stream_index != stream)
            continue;
        result = avcodec_send_packet(codec.get(), next.get());
        if (result < 0)
            logDamage(BWLibav::errorText(result));
    }
}

BWMovieReader::BWMovieReader(std::unique_ptr<Private> priv) : d(std::move(priv)) { }

BWMovieReader::~BWMovieReader() = default;

std::unique_ptr<BWMovieReader> BWMovieReader::open(const QString &path, QString &error)
{
    auto priv = std::make_unique<Private>();
    priv->path = path;
    int result = priv->open();
    if (result >= 0)
        result = priv->step();
    if (result < 0) {
        error = BWLibav::errorText(result);
        return nullptr;
    }
    if (priv->parameters().width <= 0 || priv->parameters().height <= 0) {
        error = QStringLiteral("the movie does not state its size");
        return nullptr;
    }
    return std::unique_ptr<BWMovieReader>(new BWMovieReader(std::move(priv)));
}

BWResolution BWMovieReader::size() const
{
    return {d->parameters().width, d->parameters().height};
}

double BWMovieReader::frameRate() const
{
    constexpr double usual = 30;
    constexpr double fastest = 1000;
    const double rate = av_q2d(av_guess_frame_rate(d->input.get(), d->input->streams[d->stream], nullptr));
    return rate > 0 && rate <= fastest ? rate : usual;
}

std::optional<BWPixelFormat> BWMovieReader::nativeFormat() const
{
    return d->native;
}

BWColorMatrix BWMovieReader::matrix() const
{
    return BWFrameScaler::matrixOf(d->parameters().color_space, d->parameters().codec_id, d->parameters().height);
}

BWColorRange BWMovieReader::range() const
{
    const bool full = d->native == BWPixelFormat::MJPEG || d->parameters().color_range == AVCOL_RANGE_JPEG;
    return full ? BWColorRange::Full : BWColorRange::Limited;
}

bool BWMovieReader::advance()
{
    if (d->exhausted)
        return false;
    int result = d->step();
    if (result < 0) {
        if (result != AVERROR_EOF)
            d->logDamage(BWLibav::errorText(result));
        result = d->toStart() ? d->step() : AVERROR_EOF;
    }
    if (result < 0) {
        d->exhausted = true;
        qCWarning(bwMedia) << d->path << "has no more good pictures; the last one stays";
    }
    return result >= 0;
}

bool BWMovieReader::rewind()
{
    if (d->exhausted || !d->toStart())
        return false;
    return advance();
}

std::span<const uint8_t> BWMovieReader::packet() const
{
    if (!d->native)
        return {};
    return {d->packet->data, static_cast<std::size_t>(d->packet->size)};
}

bool BWMovieReader::decode(BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes)
{
    if (!d->decoded) {
        avcodec_flush_buffers(d->codec.get());
        int result = avcodec_send_packet(d->codec.get(), d->packet.get());
        if (result >= 0)
            result = avcodec_receive_frame(d->codec.get(), d->frame.get());
        if (result < 0) {
            d->logDamage(BWLibav::errorText(result));
            return false;
        }
        d->decoded = true;
    }
    return d->scaler.scale(*d->frame, d->codec->codec_id, size, wanted, planes);
}
