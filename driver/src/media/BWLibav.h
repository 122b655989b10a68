#pragma once

#include <memory>
#include <QString>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

/// Owners for libav's objects.
namespace BWLibav {

struct Deleter {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(SwsContext *context) const { sws_freeContext(context); }
};
struct InputDeleter {
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};
/// Closes the file without completing it.
struct OutputDeleter {
    void operator()(AVFormatContext *context) const
    {
        avio_closep(&context->pb);
        avformat_free_context(context);
    }
};

using Packet = std::unique_ptr<AVPacket, Deleter>;
using Frame = std::unique_ptr<AVFrame, Deleter>;
using Codec = std::unique_ptr<AVCodecContext, Deleter>;
using Scaler = std::unique_ptr<SwsContext, Deleter>;
using Input = std::unique_ptr<AVFormatContext, InputDeleter>;
using Output = std::unique_ptr<AVFormatContext, OutputDeleter>;

/// Opens a movie file for reading; null, with libav's error number in `result`, where that cannot be done.
Input openInput(const QString &path, int &result);
/// Creates a QuickTime file; null, with libav's error number in `result`, where that cannot be done.
Output createMov(const QString &path, int &result);

/// Keeps libav from telling of every bad picture on standard error; whoever meets a fault logs it.
void silence();

QString errorText(int error);

} // namespace BWLibav
