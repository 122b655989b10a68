// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWLibav.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <QFile>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

bool isRgb(AVPixelFormat format)
{
    const AVPixFmtDescriptor *descriptor = av_pix_fmt_desc_get(format);
    return descriptor && (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL));
}

/// Formats that libav itself reads as full range.
bool isFullRangeFormat(AVPixelFormat format)
{
    constexpr std::array formats{AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P,
                                 AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUVJ411P, AV_PIX_FMT_GRAY8,
                                 AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_GRAY16BE, AV_PIX_FMT_YA8};
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

/// Crops the frame to the proportions of the size.
void cropTo(AVFrame &frame, BWResolution size)
{
    const int64_t wide = int64_t(frame.width) * size.height();
    const int64_t high = int64_t(frame.height) * size.width();
    if (wide > high) {
        const auto excess = static_cast<std::size_t>(frame.width - high / size.height());
        frame.crop_left = excess / 4 * 2; // even: chroma stays where it is
        frame.crop_right = excess - frame.crop_left;
    } else {
        const auto excess = static_cast<std::size_t>(frame.height - wide / size.width());
        frame.crop_top = excess / 4 * 2;
        frame.crop_bottom = excess - frame.crop_top;
    }
    av_frame_apply_cropping(&frame, AV_FRAME_CROP_UNALIGNED);
}

constexpr int bufferSize = 64 * 1024;
constexpr std::size_t matrixSize = 9 * sizeof(int32_t);

int refuseToOpen(AVFormatContext *, AVIOContext **, const char *, int, AVDictionary **)
{
    return AVERROR(EACCES);
}

} // namespace

void BWLibav::silence()
{
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_FATAL); });
}

BWLibav::Input BWLibav::openInput(const QString &path, int &result)
{
    silence();
    AVFormatContext *context = nullptr;
    result = avformat_open_input(&context, QFile::encodeName(path).constData(), nullptr, nullptr);
    return result < 0 ? nullptr : Input(context);
}

QString BWLibav::errorText(int error)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return QString::fromLocal8Bit(text.data());
}

#if LIBAVFORMAT_VERSION_MAJOR >= 61 // FFmpeg 7

const int32_t *BWLibav::displayMatrix(const AVStream &stream)
{
    const AVPacketSideData *const data = av_packet_side_data_get(
        stream.codecpar->coded_side_data, stream.codecpar->nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
    return data && data->size >= matrixSize ? reinterpret_cast<const int32_t *>(data->data) : nullptr;
}

void BWLibav::copyDisplayMatrix(const AVStream &from, AVStream &to)
{
    const int32_t *const matrix = displayMatrix(from);
    AVCodecParameters &parameters = *to.codecpar;
    AVPacketSideData *const copy = !matrix
        ? nullptr
        : av_packet_side_data_new(&parameters.coded_side_data, &parameters.nb_coded_side_data,
                                  AV_PKT_DATA_DISPLAYMATRIX, matrixSize, 0);
    if (copy)
        std::memcpy(copy->data, matrix, matrixSize);
}

int64_t BWLibav::duration(const AVFrame &frame)
{
    return frame.duration;
}

#else

const int32_t *BWLibav::displayMatrix(const AVStream &stream)
{
    std::size_t size = 0;
    const uint8_t *const data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    return data && size >= matrixSize ? reinterpret_cast<const int32_t *>(data) : nullptr;
}

void BWLibav::copyDisplayMatrix(const AVStream &from, AVStream &to)
{
    const int32_t *const matrix = displayMatrix(from);
    uint8_t *const copy = matrix ? av_stream_new_side_data(&to, AV_PKT_DATA_DISPLAYMATRIX, matrixSize) : nullptr;
    if (copy)
        std::memcpy(copy, matrix, matrixSize);
}

int64_t BWLibav::duration(const AVFrame &frame)
{
    return frame.pkt_duration;
}

#endif

const int *BWLibav::sampleRates(const AVCodec &encoder)
{
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100) // FFmpeg 7.1
    const void *rates = nullptr;
    if (avcodec_get_supported_config(nullptr, &encoder, AV_CODEC_CONFIG_SAMPLE_RATE, 0, &rates, nullptr) < 0)
        return nullptr;
    return static_cast<const int *>(rates);
#else
    return encoder.supported_samplerates;
#endif
}

BWMovieFile::BWMovieFile(int file) : m_file(file) { }

BWMovieFile::~BWMovieFile()
{
    m_input.reset();
    if (m_io)
        av_freep(&m_io->buffer);
    avio_context_free(&m_io);
}

int BWMovieFile::open()
{
    BWLibav::silence();
    auto *const buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    if (!buffer)
        return AVERROR(ENOMEM);
    m_io = avio_alloc_context(buffer, bufferSize, 0, this, &BWMovieFile::read, nullptr, &BWMovieFile::seek);
    if (!m_io) {
        av_free(buffer);
        return AVERROR(ENOMEM);
    }
    AVFormatContext *context = avformat_alloc_context();
    if (!context)
        return AVERROR(ENOMEM);
    context->pb = m_io;
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->io_open = &refuseToOpen;
    const int result = avformat_open_input(&context, nullptr, av_find_input_format("mov"), nullptr);
    if (result >= 0) // else libav has freed it
        m_input.reset(context);
    return result;
}

int BWMovieFile::read(void *self, uint8_t *buffer, int size)
{
    auto *const file = static_cast<BWMovieFile *>(self);
    ssize_t count = 0;
    do {
        count = ::pread(file->m_file, buffer, static_cast<std::size_t>(size), file->m_position);
    } while (count < 0 && errno == EINTR);
    if (count < 0)
        return AVERROR(errno);
    file->m_position += count;
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

int64_t BWMovieFile::seek(void *self, int64_t offset, int whence)
{
    auto *const file = static_cast<BWMovieFile *>(self);
    struct stat info;
    if (::fstat(file->m_file, &info) != 0)
        return AVERROR(errno);
    const int how = whence & ~AVSEEK_FORCE;
    if (how == AVSEEK_SIZE)
        return info.st_size;
    const int64_t base = how == SEEK_CUR ? file->m_position : how == SEEK_END ? info.st_size : 0;
    if (offset > INT64_MAX - base || base + offset < 0) // a damaged header may lead anywhere
        return AVERROR(EINVAL);
    return file->m_position = base + offset;
}

BWColorMatrix BWFrameScaler::matrixOf(AVColorSpace space, AVCodecID codec, int height)
{
    constexpr int tallestOfTv = 576;
    const bool unspecified = space == AVCOL_SPC_UNSPECIFIED || space == AVCOL_SPC_RESERVED;
    const bool plain = codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_RAWVIDEO;
    if (space == AVCOL_SPC_BT709 || (unspecified && !plain && height > tallestOfTv))
        return BWColorMatrix::BT709;
    return BWColorMatrix::BT601;
}

bool BWFrameScaler::isFullRange(const AVFrame &frame)
{
    const auto format = static_cast<AVPixelFormat>(frame.format);
    return !isRgb(format) && (isFullRangeFormat(format) || frame.color_range == AVCOL_RANGE_JPEG);
}

bool BWFrameScaler::scale(const AVFrame &frame, AVCodecID codec, BWResolution size, BWColorMatrix wanted,
                          BWYuvPlanes &planes)
{
    const BWLibav::Frame part(av_frame_clone(&frame));
    if (!part || !size.isValid())
        return false;
    cropTo(*part, size);
    const auto format = static_cast<AVPixelFormat>(part->format);
    const bool fullFormat = isFullRangeFormat(format);
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), part->width, part->height, format, size.width(),
                                        size.height(), fullFormat ? AV_PIX_FMT_YUVJ422P : AV_PIX_FMT_YUV422P,
                                        SWS_BICUBIC | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    if (!m_scaler)
        return false;
    planes.resize(size.width(), size.height());
    const std::array<uint8_t *, 4> data{planes.y(), planes.u(), planes.v(), nullptr};
    const std::array<int, 4> strides{planes.stride(), planes.chromaStride(), planes.chromaStride(), 0};
    if (sws_scale(m_scaler.get(), part->data, part->linesize, 0, part->height, data.data(), strides.data())
        != size.height())
        return false;

    // libav converts RGB to BT.601 of limited range, and leaves YUV as it is.
    const bool rgb = isRgb(format);
    const bool full = isFullRange(*part);
    const BWColorMatrix matrix = rgb ? BWColorMatrix::BT601 : matrixOf(part->colorspace, codec, part->height);
    planes.padOddColumn();
    BWYuvConvert::toJpegColours(planes, matrix == wanted ? BWColorMatrix::BT601 : matrix,
                                full ? BWColorRange::Full : BWColorRange::Limited);
    return true;
}

extern "C" Q_DECL_EXPORT const BWMovieLibrary bwMovieLibrary{&BWLibav::openReader, &BWLibav::createWriter,
                                                             &BWLibav::readPicture, &BWLibav::makeSmaller};
