#include "Model/Thumbnails/BWJpegThumbnail.h"

#include "BWACUDriver/BWJpegHeader.h"

#include <cstring>
#include <libexif/exif-data.h>
#include <libyuv.h>
#include <mutex>
#include <QTransform>
#include <turbojpeg.h>
#include <utility>

struct BWJpegThumbnail::Picture {
    QSize size;
    QSize scaled; ///< in which it is decoded
    QSize wanted;
    int colourSpace = TJCS_YCbCr;
};

namespace {

constexpr int64_t maxPixels = 256'000'000;
// A progressive image has to be held whole, as two bytes for each sample.
constexpr int64_t maxProgressivePixels = 128'000'000;
constexpr int64_t largeProgressivePixels = 16'000'000;

/// The smallest scale of the decoder at which no detail of the wanted size is lost.
QSize scaledSize(QSize size, QSize wanted)
{
    int count = 0;
    const tjscalingfactor *const factors = tjGetScalingFactors(&count);
    QSize best = size;
    for (const tjscalingfactor &factor : std::span(factors, static_cast<std::size_t>(count))) {
        const QSize scaled(TJSCALED(size.width(), factor), TJSCALED(size.height(), factor));
        const bool suffices = scaled.width() >= wanted.width() && scaled.height() >= wanted.height();
        if (suffices && scaled.width() <= best.width())
            best = scaled;
    }
    return best;
}

int orientationOf(std::span<const uint8_t> jpeg)
{
    constexpr std::size_t farEnough = 256 << 10;
    const auto size = static_cast<unsigned int>(std::min(jpeg.size(), farEnough));
    ExifData *const data = exif_data_new_from_data(jpeg.data(), size);
    if (!data)
        return 1;
    const ExifEntry *const entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    const bool isNumber = entry && entry->format == EXIF_FORMAT_SHORT && entry->components == 1 && entry->size >= 2;
    const int orientation = isNumber ? exif_get_short(entry->data, exif_data_get_byte_order(data)) : 1;
    exif_data_unref(data);
    return orientation;
}

QImage turned(const QImage &image, int orientation)
{
    const bool mirrored = orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
    const int degrees = orientation == 3 || orientation == 4 ? 180
        : orientation == 5 || orientation == 8               ? 270
        : orientation == 6 || orientation == 7               ? 90
                                                             : 0;
    const QImage result = mirrored ? image.mirrored(true, false) : image;
    return degrees == 0 ? result : result.transformed(QTransform().rotate(degrees));
}

/// Printers' colours as files hold them: inverted, the amount of black folded in.
void fromCmyk(QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        auto *const line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (QRgb &pixel : std::span(line, static_cast<std::size_t>(image.width()))) {
            uint8_t cmyk[4];
            std::memcpy(cmyk, &pixel, sizeof cmyk);
            pixel = qRgb(cmyk[0] * cmyk[3] / 255, cmyk[1] * cmyk[3] / 255, cmyk[2] * cmyk[3] / 255);
        }
    }
}

} // namespace

BWJpegThumbnail::BWJpegThumbnail() = default;

BWJpegThumbnail::~BWJpegThumbnail()
{
    tjDestroy(m_decoder);
}

bool BWJpegThumbnail::decode(std::span<const uint8_t> jpeg, const Picture &picture, int flags)
{
    const bool isCmyk = picture.colourSpace == TJCS_CMYK || picture.colourSpace == TJCS_YCCK;
    return tjDecompress2(m_decoder, jpeg.data(), jpeg.size(), m_scaled.bits(), picture.scaled.width(),
                         static_cast<int>(m_scaled.bytesPerLine()), picture.scaled.height(),
                         isCmyk ? TJPF_CMYK : TJPF_BGRA, flags | TJFLAG_LIMITSCANS)
        == 0;
}

QImage BWJpegThumbnail::make(std::span<const uint8_t> jpeg, BWThumbnailSize size, QString *error)
{
    // A decoder that has met a damaged header takes every image after it for damaged, too.
    const auto fail = [this, error](const QString &why) {
        if (error)
            *error = why;
        tjDestroy(std::exchange(m_decoder, nullptr));
        return QImage();
    };
    const auto decoderError = [this] { return QString::fromLatin1(tjGetErrorStr2(m_decoder)); };

    if (!m_decoder)
        m_decoder = tjInitDecompress();
    Picture picture;
    int subsampling = 0;
    if (tjDecompressHeader3(m_decoder, jpeg.data(), jpeg.size(), &picture.size.rwidth(), &picture.size.rheight(),
                            &subsampling, &picture.colourSpace)
        != 0)
        return fail(decoderError());
    const int64_t pixels = int64_t(picture.size.width()) * picture.size.height();
    const bool progressive = !BWJpegHeader(jpeg.data(), jpeg.size(), jpeg.size()).isBaseline();
    if (pixels > (progressive ? maxProgressivePixels : maxPixels))
        return fail(QStringLiteral("%1x%2 is too large").arg(picture.size.width()).arg(picture.size.height()));
    // Very large ones one at a time, however many threads there are.
    static std::mutex oneLarge;
    std::unique_lock lock(oneLarge, std::defer_lock);
    if (progressive && pixels > largeProgressivePixels)
        lock.lock();

    picture.wanted = BWThumbnailSizes::fitted(picture.size, size);
    picture.scaled = scaledSize(picture.size, picture.wanted);
    if (m_scaled.size() != picture.scaled || !m_scaled.isDetached())
        m_scaled = QImage(picture.scaled, QImage::Format_RGB32);
    if (m_scaled.isNull())
        return fail(QStringLiteral("out of memory"));
    if (!decode(jpeg, picture, TJFLAG_STOPONWARNING)) {
        // Meaningless bytes between the parts of an image, as some cameras leave them, do no harm.
        const auto isHarmless = [&] { return decoderError().contains(QLatin1String("extraneous bytes")); };
        if (!isHarmless() || (!decode(jpeg, picture, 0) && !isHarmless()))
            return fail(decoderError());
    }
    if (picture.colourSpace == TJCS_CMYK || picture.colourSpace == TJCS_YCCK)
        fromCmyk(m_scaled);

    QImage image = m_scaled;
    if (picture.scaled != picture.wanted) {
        image = QImage(picture.wanted, QImage::Format_RGB32);
        if (image.isNull())
            return fail(QStringLiteral("out of memory"));
        libyuv::ARGBScale(m_scaled.constBits(), static_cast<int>(m_scaled.bytesPerLine()), picture.scaled.width(),
                          picture.scaled.height(), image.bits(), static_cast<int>(image.bytesPerLine()), image.width(),
                          image.height(), libyuv::kFilterBox);
    } else {
        m_scaled = {}; // handed out: must not be written again
    }
    return turned(image, orientationOf(jpeg));
}
