// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWSmallerMovie.h"

#include "BWLibav.h"
#include "BWMovieSound.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <map>
#include <QSize>
#include <vector>

namespace {

using End = BWSmallerMovie::End;
using Quality = BWSmallerMovie::Quality;

constexpr int64_t mostPixels = 100'000'000; // a damaged header may claim any size
constexpr double wholeRate = 1000; // frames per second; a higher one is a mistake in a header
constexpr double keyFrameSeconds = 5; // at most, between the places to which a player can jump
constexpr double encoded = 0.98; // of the work; the rest is to bring the index to the front, and the check

struct Step {
    int factor; ///< x264's constant rate factor
    double bitsPerPixel; ///< for an encoder that has none
};

constexpr Step stepOf(Quality quality)
{
    switch (quality) {
    case Quality::High:
        return {17, 0.4};
    case Quality::Medium:
        return {23, 0.15};
    case Quality::Small:
        break;
    }
    return {26, 0.1};
}

/// 4:2:0 needs even sides.
QSize sizeFor(QSize size, Quality quality)
{
    if (quality == Quality::Small && std::max(size.width(), size.height()) > BWSmallerMovie::smallSide)
        size.scale(BWSmallerMovie::smallSide, BWSmallerMovie::smallSide, Qt::KeepAspectRatio);
    return {std::max(2, size.width() & ~1), std::max(2, size.height() & ~1)};
}

/// Lets libav decode the first pictures, for what the header does not say.
int examinePictures(AVFormatContext &movie)
{
    std::vector<AVDictionary *> limits(movie.nb_streams);
    for (AVDictionary *&limit : limits)
        av_dict_set_int(&limit, "max_pixels", mostPixels, 0);
    const int result = avformat_find_stream_info(&movie, limits.data());
    for (AVDictionary *&limit : limits)
        av_dict_free(&limit);
    return result;
}

class Maker {
public:
    Maker(int movie, int target, const BWSmallerMovie::Options &options, const BWSmallerMovie::Progress &progress)
        : m_options(options), m_progress(progress), m_target(target), m_movie(movie)
    {
    }
    ~Maker();
    Maker(const Maker &) = delete;
    Maker &operator=(const Maker &) = delete;

    BWSmallerMovie::Result run();

private:
    AVStream &source() const { return *m_movie.input()->streams[m_index]; }
    bool openSource();
    bool openEncoder();
    void describeColours();
    bool createFile();
    bool convertAll();
    bool decode(const AVPacket *packet);
    BWLibav::Frame converted(const AVFrame &picture);
    bool add(const AVFrame &picture);
    bool encode(const AVFrame *picture);
    bool write(AVPacket &packet, const AVStream &stream, AVRational base);
    bool complete();
    bool check();
    bool firstPictureIsGood(const AVStream &stream, const AVPacket &packet) const;
    bool goOn(double done);
    bool fail(End end, int error);
    static int isStopped(void *self);

    const BWSmallerMovie::Options &m_options;
    const BWSmallerMovie::Progress &m_progress;
    const int m_target;
    BWSmallerMovie::Result m_result;
    BWMovieFile m_movie;
    int m_index = -1;
    BWLibav::Codec m_decoder;
    BWLibav::Codec m_encoder;
    BWLibav::Output m_output;
    AVStream *m_stream = nullptr; ///< of the pictures, in the output
    std::unique_ptr<BWMovieSound> m_sound;
    BWLibav::Scaler m_scaler;
    BWLibav::Packet m_packet{av_packet_alloc()};
    BWLibav::Frame m_frame{av_frame_alloc()};
    std::map<int64_t, int64_t> m_durations; ///< of the pictures in the encoder, by their times
    int64_t m_firstTime = AV_NOPTS_VALUE;
    int64_t m_lastTime = AV_NOPTS_VALUE;
    int64_t m_lastDuration = 0;
    int64_t m_found = 0; ///< pictures in the source, good or not
    double m_done = 0;
    bool m_cancelled = false;
};

Maker::~Maker()
{
    if (m_output)
        avio_closep(&m_output->pb);
}

bool Maker::fail(End end, int error)
{
    m_result.end = m_cancelled ? End::Cancelled : end;
    if (m_cancelled)
        return false;
    constexpr int mostErrno = 4095;
    if (end == End::WriteFailed)
        m_result.error = error < 0 && error >= -mostErrno ? AVUNERROR(error) : EIO;
    m_result.reason = BWLibav::errorText(error);
    return false;
}

bool Maker::goOn(double done)
{
    m_done = std::clamp(done, m_done, 1.0);
    m_cancelled = m_cancelled || !m_progress(m_done);
    return !m_cancelled;
}

/// Asked by libav while it writes.
int Maker::isStopped(void *self)
{
    auto &maker = *static_cast<Maker *>(self);
    return maker.goOn(maker.m_done) ? 0 : 1;
}

bool Maker::openSource()
{
    if (!m_packet || !m_frame)
        return fail(End::Failed, AVERROR(ENOMEM));
    int result = m_movie.open();
    if (result < 0)
        return fail(End::NoPictures, result);
    const AVCodec *decoder = nullptr;
    m_index = av_find_best_stream(m_movie.input(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (m_index < 0)
        return fail(End::NoPictures, m_index);
    const AVCodecParameters &parameters = *source().codecpar;
    // libav leaves the size of MPEG-4 and older kinds to their decoders.
    if (parameters.width <= 0 || parameters.height <= 0)
        result = examinePictures(*m_movie.input());
    m_decoder.reset(avcodec_alloc_context3(decoder));
    if (!m_decoder)
        return fail(End::Failed, AVERROR(ENOMEM));
    if (result >= 0)
        result = avcodec_parameters_to_context(m_decoder.get(), &parameters);
    m_decoder->max_pixels = mostPixels;
    m_decoder->thread_count = m_options.threads;
    if (result >= 0)
        result = avcodec_open2(m_decoder.get(), decoder, nullptr);
    if (result >= 0 && (parameters.width <= 0 || parameters.height <= 0))
        result = AVERROR_INVALIDDATA;
    return result >= 0 || fail(End::NoPictures, result);
}

/// They stay what they are, but for the range: that of JPEG is not one which every browser knows.
void Maker::describeColours()
{
    const AVCodecParameters &parameters = *source().codecpar;
    const BWColorMatrix matrix =
        BWFrameScaler::matrixOf(parameters.color_space, parameters.codec_id, parameters.height);
    m_encoder->color_range = AVCOL_RANGE_MPEG;
    m_encoder->colorspace = matrix == BWColorMatrix::BT709 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    m_encoder->color_primaries = AVCOL_PRI_BT709;
    m_encoder->color_trc = AVCOL_TRC_BT709;
}

bool Maker::openEncoder()
{
    const AVCodec *encoder = nullptr;
    for (const QByteArray &name : m_options.encoders) {
        encoder = avcodec_find_encoder_by_name(name.constData());
        if (encoder)
            break;
    }
    if (!encoder)
        return fail(End::NoEncoder, AVERROR_ENCODER_NOT_FOUND);
    m_encoder.reset(avcodec_alloc_context3(encoder));
    if (!m_encoder)
        return fail(End::Failed, AVERROR(ENOMEM));
    const AVCodecParameters &parameters = *source().codecpar;
    const QSize size = sizeFor({parameters.width, parameters.height}, m_options.quality);
    const AVRational guess = av_guess_frame_rate(m_movie.input(), &source(), nullptr);
    const bool known = guess.num > 0 && guess.den > 0 && av_q2d(guess) <= wholeRate;
    const AVRational rate = known ? guess : AVRational{25, 1};
    m_encoder->width = size.width();
    m_encoder->height = size.height();
    m_encoder->pix_fmt = AV_PIX_FMT_YUV420P;
    m_encoder->sample_aspect_ratio = av_guess_sample_aspect_ratio(m_movie.input(), &source(), nullptr);
    m_encoder->time_base = source().time_base; // pictures may come at any time
    m_encoder->framerate = rate;
    m_encoder->gop_size = std::max(1, static_cast<int>(std::lround(keyFrameSeconds * av_q2d(rate))));
    m_encoder->thread_count = m_options.threads;
    m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    describeColours();
    const Step step = stepOf(m_options.quality);
    AVDictionary *settings = nullptr;
    if (std::strcmp(encoder->name, "libx264") == 0) {
        av_dict_set(&settings, "preset", "faster", 0);
        av_dict_set_int(&settings, "crf", step.factor, 0);
    } else {
        m_encoder->bit_rate =
            static_cast<int64_t>(step.bitsPerPixel * size.width() * size.height() * std::max(1.0, av_q2d(rate)));
    }
    const int result = avcodec_open2(m_encoder.get(), encoder, &settings);
    av_dict_free(&settings);
    return result >= 0 || fail(End::Failed, result);
}

bool Maker::createFile()
{
    // The kernel has a name for every open file; libav opens it a second time to bring the index to the front.
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(m_target);
    AVFormatContext *context = nullptr;
    int result = avformat_alloc_output_context2(&context, nullptr, "mp4", path.constData());
    if (result < 0)
        return fail(End::Failed, result);
    m_output.reset(context);
    context->interrupt_callback = {&Maker::isStopped, this};
    m_stream = avformat_new_stream(context, nullptr);
    if (!m_stream || avcodec_parameters_from_context(m_stream->codecpar, m_encoder.get()) < 0)
        return fail(End::Failed, AVERROR(ENOMEM));
    m_stream->time_base = m_encoder->time_base;
    m_stream->avg_frame_rate = m_encoder->framerate;
    m_stream->sample_aspect_ratio = m_encoder->sample_aspect_ratio;
    BWLibav::copyDisplayMatrix(source(), *m_stream);
    m_sound = BWMovieSound::open(*m_movie.input(), *context);
    if (const AVDictionaryEntry *time = av_dict_get(m_movie.input()->metadata, "creation_time", nullptr, 0))
        av_dict_set(&context->metadata, time->key, time->value, 0);
    result = avio_open2(&context->pb, context->url, AVIO_FLAG_WRITE, &context->interrupt_callback, nullptr);
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "faststart", 0);
    if (result >= 0)
        result = avformat_write_header(context, &options);
    av_dict_free(&options);
    return result >= 0 || fail(End::WriteFailed, result);
}

bool Maker::convertAll()
{
    const auto writer = [this](AVPacket &packet, const AVStream &stream, AVRational base) {
        return write(packet, stream, base);
    };
    int64_t passedOver = 0; // an edit list hides them
    for (int result = 0;;) {
        av_packet_unref(m_packet.get());
        result = av_read_frame(m_movie.input(), m_packet.get());
        if (result < 0) // the end, or all that can be read
            break;
        if (m_sound && m_packet->stream_index == m_sound->index() && !m_sound->take(m_packet.get(), writer))
            return false;
        if (m_packet->stream_index != m_index)
            continue;
        const auto length = static_cast<double>(source().duration);
        if (!goOn(length > 0 ? encoded * static_cast<double>(m_packet->pts) / length : 0))
            return fail(End::Cancelled, 0);
        passedOver += (m_packet->flags & AV_PKT_FLAG_DISCARD) != 0 ? 1 : 0;
        ++m_found;
        if (!decode(m_packet.get()))
            return false;
    }
    m_found = std::max(m_found, source().nb_frames) - passedOver;
    if (!decode(nullptr))
        return false;
    if (m_result.pictures == 0)
        return fail(End::NoPictures, AVERROR_INVALIDDATA);
    m_result.leftOut = static_cast<int>(std::max<int64_t>(0, m_found - m_result.pictures));
    return encode(nullptr) && (!m_sound || m_sound->take(nullptr, writer));
}

/// A damaged picture is left out.
bool Maker::decode(const AVPacket *packet)
{
    if (avcodec_send_packet(m_decoder.get(), packet) < 0)
        return true;
    while (avcodec_receive_frame(m_decoder.get(), m_frame.get()) >= 0) {
        const bool added = add(*m_frame);
        av_frame_unref(m_frame.get());
        if (!added)
            return false;
    }
    return true;
}

/// An odd last row or column is left out, so that the others need no scaling.
BWLibav::Frame Maker::converted(const AVFrame &picture)
{
    BWLibav::Frame result(av_frame_alloc());
    const BWLibav::Frame part(av_frame_clone(&picture));
    if (!result || !part)
        return nullptr;
    if ((part->width & ~1) == m_encoder->width && (part->height & ~1) == m_encoder->height) {
        part->width = m_encoder->width;
        part->height = m_encoder->height;
    }
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), part->width, part->height,
                                        static_cast<AVPixelFormat>(part->format), m_encoder->width, m_encoder->height,
                                        m_encoder->pix_fmt, SWS_BICUBIC | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    result->format = m_encoder->pix_fmt;
    result->width = m_encoder->width;
    result->height = m_encoder->height;
    if (!m_scaler || av_frame_get_buffer(result.get(), 0) < 0)
        return nullptr;
    constexpr int unchanged = 1 << 16; // contrast and saturation
    const int *const matrix = sws_getCoefficients(m_encoder->colorspace);
    sws_setColorspaceDetails(m_scaler.get(), matrix, BWFrameScaler::isFullRange(*part) ? 1 : 0, matrix, 0, 0, unchanged,
                             unchanged);
    const int rows =
        sws_scale(m_scaler.get(), part->data, part->linesize, 0, part->height, result->data, result->linesize);
    return rows == result->height ? std::move(result) : nullptr;
}

bool Maker::add(const AVFrame &picture)
{
    const BWLibav::Frame frame = converted(picture);
    if (!frame)
        return true;
    const bool isFirst = m_lastTime == AV_NOPTS_VALUE;
    const int64_t next = isFirst ? 0 : m_lastTime + 1; // times rise
    const int64_t time = picture.best_effort_timestamp;
    frame->pts = time == AV_NOPTS_VALUE ? next : isFirst ? time : std::max(time, next);
    m_firstTime = isFirst ? frame->pts : m_firstTime;
    m_lastTime = frame->pts;
    m_lastDuration = std::max<int64_t>(BWLibav::duration(picture), 1);
    m_durations[m_lastTime] = m_lastDuration;
    ++m_result.pictures;
    return encode(frame.get());
}

/// Null ends.
bool Maker::encode(const AVFrame *picture)
{
    int result = avcodec_send_frame(m_encoder.get(), picture);
    if (result < 0)
        return fail(End::Failed, result);
    const BWLibav::Packet packet(av_packet_alloc());
    while (packet && (result = avcodec_receive_packet(m_encoder.get(), packet.get())) >= 0) {
        if (const auto duration = m_durations.find(packet->pts); duration != m_durations.end()) {
            packet->duration = duration->second;
            m_durations.erase(duration);
        }
        if (!write(*packet, *m_stream, m_encoder->time_base))
            return false;
        if (!goOn(m_done))
            return fail(End::Cancelled, 0);
    }
    return result == AVERROR(EAGAIN) || result == AVERROR_EOF || fail(End::Failed, result);
}

bool Maker::write(AVPacket &packet, const AVStream &stream, AVRational base)
{
    av_packet_rescale_ts(&packet, base, stream.time_base);
    packet.stream_index = stream.index;
    const int result = av_interleaved_write_frame(m_output.get(), &packet);
    return result >= 0 || fail(End::WriteFailed, result);
}

bool Maker::complete()
{
    int result = av_write_trailer(m_output.get());
    if (result >= 0)
        result = m_output->pb->error;
    const int closed = avio_closep(&m_output->pb);
    if (result >= 0)
        result = closed;
    return (result >= 0 && goOn(encoded)) || fail(End::WriteFailed, result);
}

bool Maker::firstPictureIsGood(const AVStream &stream, const AVPacket &packet) const
{
    const AVCodec *const decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    const BWLibav::Codec codec(decoder ? avcodec_alloc_context3(decoder) : nullptr);
    const BWLibav::Frame frame(av_frame_alloc());
    const BWLibav::Packet first(av_packet_clone(&packet));
    if (first)
        first->flags &= ~AV_PKT_FLAG_DISCARD; // by an edit list
    return codec && frame && first && avcodec_parameters_to_context(codec.get(), stream.codecpar) >= 0
        && avcodec_open2(codec.get(), decoder, nullptr) >= 0 && avcodec_send_packet(codec.get(), first.get()) >= 0
        && avcodec_send_packet(codec.get(), nullptr) >= 0 && avcodec_receive_frame(codec.get(), frame.get()) >= 0
        && frame->width == m_encoder->width && frame->height == m_encoder->height;
}

/// Reads the new movie as it lies on the disk.
bool Maker::check()
{
    BWMovieFile movie(m_target);
    int result = movie.open();
    if (result < 0)
        return fail(End::Failed, result);
    const AVStream &stream = *movie.input()->streams[0];
    int pictures = 0;
    bool good = stream.codecpar->codec_id == AV_CODEC_ID_H264;
    for (;;) {
        av_packet_unref(m_packet.get());
        if (av_read_frame(movie.input(), m_packet.get()) < 0)
            break;
        if (m_packet->stream_index != stream.index)
            continue;
        good = good && (m_packet->flags & AV_PKT_FLAG_CORRUPT) == 0;
        good = good && (pictures > 0 || firstPictureIsGood(stream, *m_packet));
        ++pictures;
        if (!goOn(m_done))
            return fail(End::Cancelled, 0);
    }
    const int64_t length = av_rescale_q(stream.duration, stream.time_base, m_encoder->time_base);
    const int64_t wanted =
        m_lastTime - std::max<int64_t>(m_firstTime, 0) + m_lastDuration; // an edit list hides the rest
    const int64_t rounding = av_rescale_q(2, {1, 1000}, m_encoder->time_base); // by the file's own clock
    if (good && pictures == m_result.pictures && std::abs(length - wanted) <= std::max(m_lastDuration, rounding))
        return goOn(1) || fail(End::Cancelled, 0);
    fail(End::Failed, AVERROR_INVALIDDATA);
    m_result.reason = QStringLiteral("it was written with %1 pictures and a length of %2, but has %3 and %4")
                          .arg(m_result.pictures)
                          .arg(wanted)
                          .arg(pictures)
                          .arg(length);
    return false;
}

BWSmallerMovie::Result Maker::run()
{
    if (openSource() && openEncoder() && createFile() && convertAll() && complete() && check())
        m_result.end = End::Done;
    return m_result;
}

} // namespace

BWSmallerMovie::Result BWLibav::makeSmaller(int movie, int target, const BWSmallerMovie::Options &options,
                                            const BWSmallerMovie::Progress &progress)
{
    return Maker(movie, target, options, progress).run();
}
