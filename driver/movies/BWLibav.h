// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/BWMovieLibrary.h"
#include "media/BWYuvPlanes.h"

#include <memory>
#include <QString>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

/// Owners for libav's objects, and what the library offers.
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
/// Of one that writes no file.
struct OutputDeleter {
    void operator()(AVFormatContext *context) const { avformat_free_context(context); }
};

using Packet = std::unique_ptr<AVPacket, Deleter>;
using Frame = std::unique_ptr<AVFrame, Deleter>;
using Codec = std::unique_ptr<AVCodecContext, Deleter>;
using Scaler = std::unique_ptr<SwsContext, Deleter>;
using Input = std::unique_ptr<AVFormatContext, InputDeleter>;
using Output = std::unique_ptr<AVFormatContext, OutputDeleter>;

/// Opens a movie file for reading; null, with libav's error number in `result`, on failure.
Input openInput(const QString &path, int &result);

/// Keeps libav from printing every bad picture to standard error; our callers log faults.
void silence();

QString errorText(int error);

// What libav's releases offer under different names.
/// How the pictures are to be turned before they are shown: nine numbers, or null for not at all.
const int32_t *displayMatrix(const AVStream &stream);
/// Makes `to` be shown as turned as `from`. Before the file's header is written.
void copyDisplayMatrix(const AVStream &from, AVStream &to);
/// In units of the frame's stream; 0 if unknown.
int64_t duration(const AVFrame &frame);
/// The rates that the encoder knows, with 0 at the end; null for any.
const int *sampleRates(const AVCodec &encoder);

std::unique_ptr<BWMovieReader> openReader(const QString &path, QString &error);
std::unique_ptr<BWMovieWriter> createWriter(const QString &path, QString &error);
std::optional<BWMoviePicture> readPicture(int file, QSize most, QString &error);
BWSmallerMovie::Result makeSmaller(int movie, int target, const BWSmallerMovie::Options &options,
                                   const BWSmallerMovie::Progress &progress);

} // namespace BWLibav

/// An open file as libav's input. The file must stay open; its position is neither used nor changed.
class BWMovieFile {
public:
    explicit BWMovieFile(int file);
    ~BWMovieFile();
    BWMovieFile(const BWMovieFile &) = delete;
    BWMovieFile &operator=(const BWMovieFile &) = delete;

    /// Reads the header of a QuickTime or MP4 movie; libav's error number, below zero, where it is none. Other files
    /// that the movie refers to are not opened.
    int open();

    AVFormatContext *input() const { return m_input.get(); }

private:
    static int read(void *self, uint8_t *buffer, int size);
    static int64_t seek(void *self, int64_t offset, int whence);

    int m_file;
    int64_t m_position = 0;
    AVIOContext *m_io = nullptr;
    BWLibav::Input m_input;
};

/// Converts decoded pictures of any kind and size to planes of a given size and full range.
class BWFrameScaler {
public:
    /// The colour matrix of a stream: the one it states, else BT.709 for compressed pictures larger than a TV's.
    static BWColorMatrix matrixOf(AVColorSpace space, AVCodecID codec, int height);

    /// Whether the values of a picture use the full range, as those of a JPEG do.
    static bool isFullRange(const AVFrame &frame);

    /// Fills the size, cropped at the middle. Colours are converted to BT.601, or kept if the picture has the matrix
    /// `wanted`. False if libav cannot do it.
    bool scale(const AVFrame &frame, AVCodecID codec, BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes);

private:
    BWLibav::Scaler m_scaler;
};
