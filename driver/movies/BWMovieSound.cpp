// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWMovieSound.h"

#include <algorithm>

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int bitsPerChannel = 64'000; // a second
constexpr int usualRate = 48'000;
constexpr int mostChannels = 2;

/// The rate itself, if the encoder knows it.
int rateFor(const AVCodec &encoder, int rate)
{
    for (const int *known = encoder.supported_samplerates; known && *known != 0; ++known) {
        if (*known == rate)
            return rate;
    }
    return encoder.supported_samplerates ? usualRate : rate;
}

} // namespace

std::unique_ptr<BWMovieSound> BWMovieSound::open(const AVFormatContext &input, AVFormatContext &output)
{
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        if (input.streams[i]->codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
            continue;
        std::unique_ptr<BWMovieSound> sound(new BWMovieSound(input.streams[i]));
        return sound->prepare(output) ? std::move(sound) : nullptr;
    }
    return nullptr;
}

BWMovieSound::~BWMovieSound()
{
    swr_free(&m_resampler);
    av_audio_fifo_free(m_samples);
}

bool BWMovieSound::prepare(AVFormatContext &output)
{
    const AVCodecParameters &parameters = *m_input->codecpar;
    if (parameters.codec_id != AV_CODEC_ID_AAC) {
        const AVCodec *const decoder = avcodec_find_decoder(parameters.codec_id);
        const AVCodec *const encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
        m_decoder.reset(decoder && encoder ? avcodec_alloc_context3(decoder) : nullptr);
        m_encoder.reset(m_decoder ? avcodec_alloc_context3(encoder) : nullptr);
        if (!m_encoder || avcodec_parameters_to_context(m_decoder.get(), &parameters) < 0
            || avcodec_open2(m_decoder.get(), decoder, nullptr) < 0)
            return false;
        const int channels = std::clamp(m_decoder->ch_layout.nb_channels, 1, mostChannels);
        av_channel_layout_default(&m_encoder->ch_layout, channels);
        m_encoder->sample_rate = rateFor(*encoder, m_decoder->sample_rate);
        m_encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
        m_encoder->bit_rate = int64_t{channels} * bitsPerChannel;
        m_encoder->time_base = {1, m_encoder->sample_rate};
        m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        m_resampler = swr_alloc();
        m_samples = av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, channels, 1);
        if (!m_resampler || !m_samples || avcodec_open2(m_encoder.get(), encoder, nullptr) < 0)
            return false;
    }
    m_stream = avformat_new_stream(&output, nullptr);
    if (!m_stream)
        return false;
    m_stream->time_base = isCopied() ? m_input->time_base : m_encoder->time_base;
    const int result = isCopied() ? avcodec_parameters_copy(m_stream->codecpar, &parameters)
                                  : avcodec_parameters_from_context(m_stream->codecpar, m_encoder.get());
    m_stream->codecpar->codec_tag = 0; // the container chooses
    return result >= 0;
}

bool BWMovieSound::take(const AVPacket *packet, const Write &write)
{
    if (isCopied()) {
        const BWLibav::Packet copy(packet ? av_packet_clone(packet) : nullptr);
        return !copy || write(*copy, *m_stream, m_input->time_base);
    }
    decode(packet);
    return encode(!packet, write);
}

/// Into m_samples.
void BWMovieSound::decode(const AVPacket *packet)
{
    const BWLibav::Frame decoded(av_frame_alloc());
    if (!decoded || avcodec_send_packet(m_decoder.get(), packet) < 0)
        return;
    while (avcodec_receive_frame(m_decoder.get(), decoded.get()) >= 0) {
        if (decoded->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
            av_channel_layout_default(&decoded->ch_layout, decoded->ch_layout.nb_channels);
        const BWLibav::Frame converted(av_frame_alloc());
        if (!converted)
            return;
        converted->format = AV_SAMPLE_FMT_FLTP;
        converted->sample_rate = m_encoder->sample_rate;
        av_channel_layout_copy(&converted->ch_layout, &m_encoder->ch_layout);
        if (swr_convert_frame(m_resampler, converted.get(), decoded.get()) < 0)
            continue;
        if (m_time == AV_NOPTS_VALUE && decoded->pts != AV_NOPTS_VALUE)
            m_time = av_rescale_q(decoded->pts, m_input->time_base, m_encoder->time_base);
        av_audio_fifo_write(m_samples, reinterpret_cast<void **>(converted->extended_data), converted->nb_samples);
    }
}

bool BWMovieSound::encode(bool ends, const Write &write)
{
    while (av_audio_fifo_size(m_samples) >= (ends ? 1 : m_encoder->frame_size)) {
        const BWLibav::Frame frame(av_frame_alloc());
        if (!frame)
            return false;
        frame->nb_samples = std::min(av_audio_fifo_size(m_samples), m_encoder->frame_size);
        frame->format = AV_SAMPLE_FMT_FLTP;
        frame->sample_rate = m_encoder->sample_rate;
        av_channel_layout_copy(&frame->ch_layout, &m_encoder->ch_layout);
        if (av_frame_get_buffer(frame.get(), 0) < 0)
            return false;
        av_audio_fifo_read(m_samples, reinterpret_cast<void **>(frame->extended_data), frame->nb_samples);
        frame->pts = m_time == AV_NOPTS_VALUE ? 0 : m_time;
        m_time = frame->pts + frame->nb_samples;
        if (!send(frame.get(), write))
            return false;
    }
    return !ends || send(nullptr, write);
}

bool BWMovieSound::send(const AVFrame *frame, const Write &write)
{
    const BWLibav::Packet packet(av_packet_alloc());
    if (!packet || avcodec_send_frame(m_encoder.get(), frame) < 0)
        return true;
    while (avcodec_receive_packet(m_encoder.get(), packet.get()) >= 0) {
        if (!write(*packet, *m_stream, m_encoder->time_base))
            return false;
    }
    return true;
}
