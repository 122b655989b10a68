// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWMovie.h"

#include "BWLibav.h"

#include <cmath>
#include <cstdint>
#include <libyuv.h>
#include <QTransform>

extern "C" {
#include <libavutil/display.h>
}

namespace {

constexpr int64_t maxMoviePixels = 100'000'000; // a damaged header may claim any size
constexpr int maxTries = 16; // pictures examined in search of a good one
constexpr int maxPackets = 1000; // including those of sound

class FirstPicture {
public:
    int open(int file, QSize most);
    int find();

    QImage image();
    std::optional<std::chrono::milliseconds> length() const;

private:
    const AVStream &stream() const { return *m_movie->input()->streams[m_stream]; }
    int openDecoder(const AVCodec *decoder);
    int decode();
    QSize shownSize() const;
    int quarterTurns() const;
    QSize mostUnturned() const { return quarterTurns() % 2 == 0 ? m_most : m_most.transposed(); }

    QSize m_most;
    std::optional<BWMovieFile> m_movie;
    int m_stream = -1;
    BWLibav::Codec m_codec;
    BWLibav::Packet m_packet{av_packet_alloc()};
    BWLibav::Frame m_frame{av_frame_alloc()};
};

int FirstPicture::open(int file, QSize most)
{
    if (!m_packet || !m_frame)
        return AVERROR(ENOMEM);
    m_most = most;
    m_movie.emplace(file);
    int result = m_movie->open();
    if (result < 0)
        return result;
    const AVCodec *decoder = nullptr;
    m_stream = av_find_best_stream(m_movie->input(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (m_stream < 0)
        return m_stream;
    // The header says enough for decoding, so libav need not analyse pictures first.
    return openDecoder(decoder);
}

int FirstPicture::openDecoder(const AVCodec *decoder)
{
    m_codec.reset(avcodec_alloc_context3(decoder));
    if (!m_codec)
        return AVERROR(ENOMEM);
    const int result = avcodec_parameters_to_context(m_codec.get(), stream().codecpar);
    if (result < 0)
        return result;
    m_codec->thread_count = 1;
    m_codec->max_pixels = maxMoviePixels;
    m_codec->err_recognition = AV_EF_CRCCHECK | AV_EF_EXPLODE;
    // Some decoders can leave out detail at no cost.
    const QSize most = mostUnturned();
    while (m_codec->lowres < decoder->max_lowres && m_codec->width >> (m_codec->lowres + 1) >= most.width()
           && m_codec->height >> (m_codec->lowres + 1) >= most.height())
        ++m_codec->lowres;
    return avcodec_open2(m_codec.get(), decoder, nullptr);
}

int FirstPicture::find()
{
    int tries = 0;
    for (int packets = 0; packets < maxPackets; ++packets) {
        av_packet_unref(m_packet.get());
        int result = av_read_frame(m_movie->input(), m_packet.get());
        if (result < 0)
            return result;
        if (m_packet->stream_index != m_stream)
            continue;
        result = decode();
        if (result >= 0 || ++tries == maxTries)
            return result;
    }
    return AVERROR_INVALIDDATA;
}

/// The packet alone: a decoder that reorders pictures learns that none follow, so that it does not wait for more.
int FirstPicture::decode()
{
    avcodec_flush_buffers(m_codec.get());
    int result = avcodec_send_packet(m_codec.get(), m_packet.get());
    if (result >= 0)
        result = avcodec_send_packet(m_codec.get(), nullptr);
    if (result >= 0)
        result = avcodec_receive_frame(m_codec.get(), m_frame.get());
    if (result >= 0 && (m_frame->decode_error_flags != 0 || (m_frame->flags & AV_FRAME_FLAG_CORRUPT)))
        return AVERROR_INVALIDDATA;
    return result;
}

/// How many times to rotate the picture clockwise by 90 degrees, 0 to 3.
int FirstPicture::quarterTurns() const
{
    const int32_t *const matrix = BWLibav::displayMatrix(stream());
    if (!matrix)
        return 0;
    const double angle = av_display_rotation_get(matrix); // counter-clockwise
    return std::isnan(angle) ? 0 : (4 - static_cast<int>(std::lround(angle / 90))) % 4;
}

/// In square pixels, before rotation.
QSize FirstPicture::shownSize() const
{
    const AVRational aspect =
        av_guess_sample_aspect_ratio(m_movie->input(), m_movie->input()->streams[m_stream], m_frame.get());
    const AVCodecParameters &stored = *stream().codecpar; // the frame may have been decoded smaller
    QSizeF size(stored.width > 0 ? stored.width : m_frame->width, stored.height > 0 ? stored.height : m_frame->height);
    if (aspect.num > aspect.den && aspect.den > 0)
        size.setHeight(size.height() * aspect.den / aspect.num);
    else if (aspect.num > 0 && aspect.den > 0)
        size.setWidth(size.width() * aspect.num / aspect.den);
    return size.toSize().expandedTo({1, 1});
}

QImage FirstPicture::image()
{
    const QSize most = mostUnturned();
    QSize size = shownSize();
    if (size.width() > most.width() || size.height() > most.height())
        size = size.scaled(most, Qt::KeepAspectRatio).expandedTo({1, 1});

    BWFrameScaler scaler;
    BWYuvPlanes planes;
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull()
        || !scaler.scale(*m_frame, m_codec->codec_id, {size.width(), size.height()}, BWColorMatrix::BT601, planes))
        return {};
    libyuv::J422ToARGB(planes.y(), planes.stride(), planes.u(), planes.chromaStride(), planes.v(),
                       planes.chromaStride(), image.bits(), static_cast<int>(image.bytesPerLine()), size.width(),
                       size.height());
    return quarterTurns() == 0 ? image : image.transformed(QTransform().rotate(90 * quarterTurns()));
}

std::optional<std::chrono::milliseconds> FirstPicture::length() const
{
    int64_t length = m_movie->input()->duration;
    // Newer versions of libav take it out of the header only once they have analysed pictures.
    if ((length == AV_NOPTS_VALUE || length == 0) && stream().duration > 0)
        length = av_rescale_q(stream().duration, stream().time_base, AVRational{1, AV_TIME_BASE});
    if (length == AV_NOPTS_VALUE || length < 0)
        return std::nullopt;
    return std::chrono::milliseconds(length / (AV_TIME_BASE / 1000));
}

} // namespace

std::optional<BWMoviePicture> BWLibav::readPicture(int file, QSize most, QString &error)
{
    FirstPicture first;
    int result = first.open(file, most);
    if (result >= 0)
        result = first.find();
    BWMoviePicture picture;
    if (result >= 0) {
        picture = {first.image(), first.length()};
        if (!picture.image.isNull())
            return picture;
        result = AVERROR_INVALIDDATA;
    }
    error = errorText(result);
    return std::nullopt;
}
