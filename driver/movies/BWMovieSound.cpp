// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWMovieSound.h"

#include <algorithm>
#include <array>
#include <cstdlib>

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int bitsPerChannel = 64'000; // a second
constexpr int usualRate = 48'000;
constexpr int mostChannels = 2;
constexpr double sharpness = 0.05; // seconds; what is less out of time nobody notices
constexpr int64_t longestGap = 3600; // seconds

/// The rate itself, if the encoder knows it.
int rateFor(const AVCodec &encoder, int rate)
{
    const int *const rates = BWLibav::sampleRates(encoder);
    for (const int *known = rates; known && *known != 0; ++known) {
        if (*known == rate)
            return rate;
    }
    return rates ? usualRate : rate;
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
        m_decoder->pkt_timebase = m_input->time_base;
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
    return decode(packet, write) && encode(!packet, write);
}

/// With a buffer, as the encoder takes it; null without memory.
BWLibav::Frame BWMovieSound::emptyFrame(int samples) const
{
    BWLibav::Frame frame(av_frame_alloc());
    if (!frame)
        return nullptr;
    frame->format = m_encoder->sample_fmt;
    frame->sample_rate = m_encoder->sample_rate;
    frame->nb_samples = samples;
    av_channel_layout_copy(&frame->ch_layout, &m_encoder->ch_layout);
    return samples == 0 || av_frame_get_buffer(frame.get(), 0) >= 0 ? std::move(frame) : nullptr;
}

/// Into m_samples.
bool BWMovieSound::decode(const AVPacket *packet, const Write &write)
{
    const BWLibav::Frame decoded(av_frame_alloc());
    if (!decoded || avcodec_send_packet(m_decoder.get(), packet) < 0)
        return true;
    while (avcodec_receive_frame(m_decoder.get(), decoded.get()) >= 0) {
        if (decoded->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
            av_channel_layout_default(&decoded->ch_layout, decoded->ch_layout.nb_channels);
        const BWLibav::Frame converted = emptyFrame(0);
        if (!converted || swr_convert_frame(m_resampler, converted.get(), decoded.get()) < 0)
            continue;
        if (decoded->pts != AV_NOPTS_VALUE
            && !keepTime(av_rescale_q(decoded->pts, m_input->time_base, m_encoder->time_base), write))
            return false;
        add(*converted);
    }
    const BWLibav::Frame rest = packet ? nullptr : emptyFrame(0);
    if (rest && swr_is_initialized(m_resampler) && swr_convert_frame(m_resampler, rest.get(), nullptr) >= 0)
        add(*rest);
    return true;
}

/// For samples of that time.
bool BWMovieSound::keepTime(int64_t time, const Write &write)
{
    if (m_next == AV_NOPTS_VALUE)
        m_next = time;
    int64_t gap = time - m_next;
    if (std::abs(gap) < m_encoder->sample_rate * sharpness)
        return true;
    if (gap > m_encoder->sample_rate * longestGap)
        return true; // a mistake in the file
    m_surplus = std::max<int64_t>(0, -gap);
    while (gap > 0) {
        const BWLibav::Frame silence = emptyFrame(static_cast<int>(std::min<int64_t>(gap, m_encoder->frame_size)));
        if (!silence)
            return true;
        av_samples_set_silence(silence->extended_data, 0, silence->nb_samples, silence->ch_layout.nb_channels,
                               m_encoder->sample_fmt);
        add(*silence);
        gap -= silence->nb_samples;
        if (!encode(false, write))
            return false;
    }
    return true;
}

void BWMovieSound::add(const AVFrame &samples)
{
    const int surplus = static_cast<int>(std::min<int64_t>(m_surplus, samples.nb_samples));
    m_surplus -= surplus;
    std::array<void *, mostChannels> planes{};
    for (int channel = 0; channel < samples.ch_layout.nb_channels; ++channel)
        planes.at(channel) = reinterpret_cast<float *>(samples.extended_data[channel]) + surplus;
    if (m_next == AV_NOPTS_VALUE)
        m_next = 0;
    m_next += std::max(0, av_audio_fifo_write(m_samples, planes.data(), samples.nb_samples - surplus));
}

bool BWMovieSound::encode(bool ends, const Write &write)
{
    while (av_audio_fifo_size(m_samples) >= (ends ? 1 : m_encoder->frame_size)) {
        const int waiting = av_audio_fifo_size(m_samples);
        const BWLibav::Frame frame = emptyFrame(std::min(waiting, m_encoder->frame_size));
        if (!frame)
            return false;
        av_audio_fifo_read(m_samples, reinterpret_cast<void **>(frame->extended_data), frame->nb_samples);
        frame->pts = m_next - waiting;
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
