#include "media/BWMovieRemux.h"

#include "media/BWLibav.h"

#include <algorithm>

namespace {

/// Returns libav's error number, or 0.
int copyMovie(const QString &from, const QString &to)
{
    int result = 0;
    const BWLibav::Input input = BWLibav::openInput(from, result);
    if (!input)
        return result;
    const int videoIndex = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (videoIndex < 0)
        return videoIndex;
    const AVStream *video = input->streams[videoIndex];

    const BWLibav::Output output = BWLibav::createMov(to, result);
    if (!output)
        return result;
    AVStream *copy = avformat_new_stream(output.get(), nullptr);
    BWLibav::Packet packet(av_packet_alloc());
    BWLibav::Packet next(av_packet_alloc());
    if (!copy || !packet || !next)
        return AVERROR(ENOMEM);
    result = avcodec_parameters_copy(copy->codecpar, video->codecpar);
    if (result < 0)
        return result;
    copy->codecpar->codec_tag = 0;
    copy->time_base = video->time_base;
    av_dict_copy(&copy->metadata, video->metadata, 0);
    av_dict_copy(&output->metadata, input->metadata, 0);
    result = avformat_write_header(output.get(), nullptr);
    if (result < 0)
        return result;
    // A fragmented movie tells no durations with its packets: each lasts until the next, the last until the end.
    const auto write = [&](int64_t until) {
        packet->duration = std::max<int64_t>(until - packet->pts, 0);
        av_packet_rescale_ts(packet.get(), video->time_base, copy->time_base);
        packet->stream_index = 0;
        packet->pos = -1;
        return av_write_frame(output.get(), packet.get());
    };
    bool pending = false;
    while ((result = av_read_frame(input.get(), next.get())) >= 0) {
        if (next->stream_index == videoIndex) {
            if (pending)
                result = write(next->pts);
            packet.swap(next);
            pending = true;
        }
        av_packet_unref(next.get());
        if (result < 0)
            return result;
    }
    if (pending && result == AVERROR_EOF) {
        const int64_t start = video->start_time == AV_NOPTS_VALUE ? 0 : video->start_time;
        const int written = write(start + std::max<int64_t>(video->duration, 0));
        result = written < 0 ? written : result;
    }
    if (result != AVERROR_EOF)
        return result;
    result = av_write_trailer(output.get());
    avio_flush(output->pb);
    return result < 0 ? result : std::min(output->pb->error, 0);
}

} // namespace

bool remuxToPlainMov(const QString &from, const QString &to, QString &error)
{
    const int result = copyMovie(from, to);
    if (result < 0)
        error = BWLibav::errorText(result);
    return result >= 0;
}
