#include "App/Capture/BWSoundDecoder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

namespace {

struct Deleter {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
    void operator()(SwrContext *context) const { swr_free(&context); }
    void operator()(AVIOContext *context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};
template <typename Type>
using Owner = std::unique_ptr<Type, Deleter>;

/// The bytes as libav reads a file.
struct Reader {
    const QByteArray &bytes;
    int64_t position = 0;

    static int read(void *opaque, uint8_t *buffer, int size)
    {
        Reader &self = *static_cast<Reader *>(opaque);
        const int64_t count = std::min<int64_t>(size, self.bytes.size() - self.position);
        if (count <= 0)
            return AVERROR_EOF;
        std::copy_n(self.bytes.constData() + self.position, count, buffer);
        self.position += count;
        return static_cast<int>(count);
    }

    static int64_t seek(void *opaque, int64_t offset, int whence)
    {
        Reader &self = *static_cast<Reader *>(opaque);
        const int64_t size = self.bytes.size();
        if (whence == AVSEEK_SIZE)
            return size;
        const int64_t from = whence == SEEK_CUR ? self.position : whence == SEEK_END ? size : 0;
        if (from + offset < 0 || from + offset > size)
            return AVERROR(EINVAL);
        self.position = from + offset;
        return self.position;
    }
};

AVSampleFormat sampleFormat(const QAudioFormat &format)
{
    switch (format.sampleFormat()) {
    case QAudioFormat::UInt8:
        return AV_SAMPLE_FMT_U8;
    case QAudioFormat::Int16:
        return AV_SAMPLE_FMT_S16;
    case QAudioFormat::Int32:
        return AV_SAMPLE_FMT_S32;
    case QAudioFormat::Float:
        return AV_SAMPLE_FMT_FLT;
    default:
        return AV_SAMPLE_FMT_NONE;
    }
}

class Decoding {
public:
    Decoding(const QByteArray &file, const QAudioFormat &format) : m_reader{file}, m_format(format) { }

    int run(QByteArray &samples);

private:
    int open();
    int decodePacket(const AVPacket *packet, QByteArray &samples);
    int convert(AVFrame *frame, QByteArray &samples);

    Reader m_reader;
    const QAudioFormat m_format;
    Owner<AVIOContext> m_io; // outlives what reads through it
    Owner<AVFormatContext> m_input;
    Owner<AVCodecContext> m_codec;
    Owner<SwrContext> m_converter;
    Owner<AVFrame> m_frame{av_frame_alloc()};
    int m_stream = 0;
};

int Decoding::open()
{
    constexpr int bufferSize = 4096;
    auto *buffer = static_cast<uint8_t *>(av_malloc(bufferSize));
    m_io.reset(avio_alloc_context(buffer, bufferSize, 0, &m_reader, &Reader::read, nullptr, &Reader::seek));
    AVFormatContext *input = avformat_alloc_context();
    input->pb = m_io.get();
    int result = avformat_open_input(&input, nullptr, nullptr, nullptr); // frees it on failure
    if (result < 0)
        return result;
    m_input.reset(input);
    result = avformat_find_stream_info(input, nullptr);
    if (result < 0)
        return result;
    const AVCodec *codec = nullptr;
    m_stream = av_find_best_stream(input, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (m_stream < 0)
        return m_stream;
    const AVStream *stream = input->streams[m_stream];
    m_codec.reset(avcodec_alloc_context3(codec));
    result = avcodec_parameters_to_context(m_codec.get(), stream->codecpar);
    if (result < 0)
        return result;
    m_codec->pkt_timebase = stream->time_base; // without it the encoder's silence would not be cut off
    return avcodec_open2(m_codec.get(), codec, nullptr);
}

int Decoding::convert(AVFrame *frame, QByteArray &samples)
{
    if (!m_converter && frame) {
        AVChannelLayout layout;
        av_channel_layout_default(&layout, m_format.channelCount());
        SwrContext *converter = nullptr;
        int result =
            swr_alloc_set_opts2(&converter, &layout, sampleFormat(m_format), m_format.sampleRate(), &frame->ch_layout,
                                static_cast<AVSampleFormat>(frame->format), frame->sample_rate, 0, nullptr);
        m_converter.reset(converter);
        if (result >= 0)
            result = swr_init(converter);
        if (result < 0)
            return result;
    }
    if (!m_converter)
        return 0;
    const int room = swr_get_out_samples(m_converter.get(), frame ? frame->nb_samples : 0);
    QByteArray part(qsizetype(room) * m_format.bytesPerFrame(), Qt::Uninitialized);
    auto *out = reinterpret_cast<uint8_t *>(part.data());
    const int count =
        swr_convert(m_converter.get(), &out, room, frame ? const_cast<const uint8_t **>(frame->extended_data) : nullptr,
                    frame ? frame->nb_samples : 0);
    if (count < 0)
        return count;
    samples.append(part.constData(), qsizetype(count) * m_format.bytesPerFrame());
    return 0;
}

int Decoding::decodePacket(const AVPacket *packet, QByteArray &samples)
{
    int result = avcodec_send_packet(m_codec.get(), packet);
    while (result >= 0) {
        result = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (result >= 0)
            result = convert(m_frame.get(), samples);
    }
    return result == AVERROR(EAGAIN) || result == AVERROR_EOF ? 0 : result;
}

int Decoding::run(QByteArray &samples)
{
    int result = open();
    const Owner<AVPacket> packet(av_packet_alloc());
    while (result >= 0 && (result = av_read_frame(m_input.get(), packet.get())) >= 0) {
        if (packet->stream_index == m_stream)
            result = decodePacket(packet.get(), samples);
        av_packet_unref(packet.get());
    }
    if (result != AVERROR_EOF)
        return result;
    result = decodePacket(nullptr, samples);
    return result < 0 ? result : convert(nullptr, samples); // what the converter still held back
}

} // namespace

QByteArray BWSoundDecoder::decode(const QByteArray &file, const QAudioFormat &format, QString *error)
{
    av_log_set_level(AV_LOG_FATAL); // the caller learns of faults, and the log from the caller
    QByteArray samples;
    int result = AVERROR(EINVAL);
    if (format.isValid() && sampleFormat(format) != AV_SAMPLE_FMT_NONE)
        result = Decoding(file, format).run(samples);
    if (result >= 0 && !samples.isEmpty())
        return samples;
    if (error) {
        std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
        av_strerror(result < 0 ? result : AVERROR_INVALIDDATA, text.data(), text.size());
        *error = QString::fromLocal8Bit(text.data());
    }
    return {};
}
