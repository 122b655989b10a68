// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Thumbnails/BWJpegPicture.h"

#include "BWACUDriver/BWJpegHeader.h"
#include "Model/LiveView/BWScaling.h"

#include <algorithm>
#include <cstring>
#include <libexif/exif-data.h>
#include <libyuv.h>
#include <mutex>
#include <QTransform>
#include <turbojpeg.h>
#include <utility>

struct BWJpegPicture::Picture {
    int64_t pixels() const { return int64_t(size.width()) * size.height(); }
    bool isCmyk() const { return colourSpace == TJCS_CMYK || colourSpace == TJCS_YCCK; }

    QSize size;
    QSize scaled; ///< in which it is decoded
    int colourSpace = TJCS_YCbCr;
    bool progressive = false;
};

namespace {

constexpr int64_t maxPixels = 256'000'000;
// A progressive image has to be held whole, as two bytes for each sample.
constexpr int64_t maxProgressivePixels = 128'000'000;
constexpr int64_t largeProgressivePixels = 16'000'000;

/// Very large ones are decoded one at a time, however many threads there are.
std::unique_lock<std::mutex> turnFor(bool progressive, int64_t pixels)
{
    static std::mutex oneLarge;
    std::unique_lock lock(oneLarge, std::defer_lock);
    if (progressive && pixels > largeProgressivePixels)
        lock.lock();
    return lock;
}

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

QImage turned(QImage image, BWJpegPicture::Turn turn)
{
    if (turn.mirrored)
        image = std::move(image).mirrored(true, false); // in place
    return turn.degrees == 0 ? image : image.transformed(QTransform().rotate(turn.degrees));
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

/// Rows that the decoder did not get to, which are still zero, become grey like those that it makes up itself. False if
/// there are no others.
bool greyOutMissing(QImage &image)
{
    bool anything = false;
    for (int y = 0; y < image.height(); ++y) {
        const std::span row(reinterpret_cast<QRgb *>(image.scanLine(y)), static_cast<std::size_t>(image.width()));
        if (qAlpha(row.front()) == 0)
            std::fill(row.begin(), row.end(), qRgb(128, 128, 128));
        else
            anything = true;
    }
    return anything;
}

} // namespace

BWJpegPicture::BWJpegPicture() = default;

BWJpegPicture::~BWJpegPicture()
{
    reset();
}

/// A decoder that has met a damaged header takes every image after it for damaged, too.
void BWJpegPicture::reset()
{
    tjDestroy(std::exchange(m_decoder, nullptr));
}

BWJpegPicture::Turn BWJpegPicture::turnOf(std::span<const uint8_t> jpeg)
{
    const int orientation = orientationOf(jpeg);
    const int degrees = orientation == 3 || orientation == 4 ? 180
        : orientation == 5 || orientation == 8               ? 270
        : orientation == 6 || orientation == 7               ? 90
                                                             : 0;
    return {orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7, degrees};
}

QString BWJpegPicture::error() const
{
    return QString::fromLatin1(tjGetErrorStr2(m_decoder));
}

bool BWJpegPicture::open(std::span<const uint8_t> jpeg, Picture &picture)
{
    if (!m_decoder)
        m_decoder = tjInitDecompress();
    int subsampling = 0;
    const bool opened = tjDecompressHeader3(m_decoder, jpeg.data(), jpeg.size(), &picture.size.rwidth(),
                                            &picture.size.rheight(), &subsampling, &picture.colourSpace)
        == 0;
    picture.progressive = !BWJpegHeader(jpeg.data(), jpeg.size(), jpeg.size()).isBaseline();
    return opened && !picture.size.isEmpty();
}

bool BWJpegPicture::decode(std::span<const uint8_t> jpeg, const Picture &picture, QImage &image, int flags)
{
    return tjDecompress2(m_decoder, jpeg.data(), jpeg.size(), image.bits(), picture.scaled.width(),
                         static_cast<int>(image.bytesPerLine()), picture.scaled.height(),
                         picture.isCmyk() ? TJPF_CMYK : TJPF_BGRA, flags | TJFLAG_LIMITSCANS)
        == 0;
}

/// False if it is damaged.
bool BWJpegPicture::decode(std::span<const uint8_t> jpeg, const Picture &picture, QImage &image)
{
    if (decode(jpeg, picture, image, TJFLAG_STOPONWARNING))
        return true;
    // Meaningless bytes between the parts of an image, as some cameras leave them, do no harm.
    const auto isHarmless = [this] { return error().contains(QLatin1String("extraneous bytes")); };
    return isHarmless() && (decode(jpeg, picture, image, 0) || isHarmless());
}

QImage BWJpegPicture::thumbnail(std::span<const uint8_t> jpeg, BWThumbnailSize size, QString *error)
{
    const auto fail = [this, error](const QString &why) {
        if (error)
            *error = why;
        reset();
        return QImage();
    };
    Picture picture;
    if (!open(jpeg, picture))
        return fail(this->error());
    if (picture.pixels() > (picture.progressive ? maxProgressivePixels : maxPixels))
        return fail(QStringLiteral("%1x%2 is too large").arg(picture.size.width()).arg(picture.size.height()));
    const auto turn = turnFor(picture.progressive, picture.pixels());
    const QSize wanted = BWThumbnailSizes::fitted(picture.size, size);
    picture.scaled = scaledSize(picture.size, wanted);
    if (m_scaled.size() != picture.scaled || !m_scaled.isDetached())
        m_scaled = QImage(picture.scaled, QImage::Format_RGB32);
    if (m_scaled.isNull())
        return fail(QStringLiteral("out of memory"));
    if (!decode(jpeg, picture, m_scaled))
        return fail(this->error());
    if (picture.isCmyk())
        fromCmyk(m_scaled);

    QImage image = m_scaled;
    if (picture.scaled != wanted) {
        image = QImage(wanted, QImage::Format_RGB32);
        if (image.isNull())
            return fail(QStringLiteral("out of memory"));
        libyuv::ARGBScale(m_scaled.constBits(), static_cast<int>(m_scaled.bytesPerLine()), picture.scaled.width(),
                          picture.scaled.height(), image.bits(), static_cast<int>(image.bytesPerLine()), image.width(),
                          image.height(), BWScaling::filterFor(picture.scaled, wanted));
    } else {
        m_scaled = {}; // handed out: must not be written again
    }
    return turned(std::move(image), turnOf(jpeg));
}

BWJpegPicture::Whole BWJpegPicture::whole(std::span<const uint8_t> jpeg, int64_t mostPixels)
{
    Picture picture;
    if (!open(jpeg, picture)) {
        Whole damaged{.damaged = true, .error = error()};
        reset();
        return damaged;
    }
    if (picture.pixels() > mostPixels)
        return {.tooLarge = true,
                .error = QStringLiteral("%1x%2 is too large").arg(picture.size.width()).arg(picture.size.height())};
    const auto turn = turnFor(picture.progressive, picture.pixels());
    picture.scaled = picture.size;
    Whole whole{.image = QImage(picture.size, QImage::Format_RGB32)};
    if (whole.image.isNull())
        return {.error = QStringLiteral("out of memory")};
    if (!decode(jpeg, picture, whole.image)) {
        whole.damaged = true;
        // Once more, to the end of what can be decoded.
        std::memset(whole.image.bits(), 0, static_cast<std::size_t>(whole.image.sizeInBytes()));
        decode(jpeg, picture, whole.image, 0);
        whole.error = error();
        reset();
        if (!picture.isCmyk() && !greyOutMissing(whole.image))
            return {.damaged = true, .error = whole.error};
    }
    if (picture.isCmyk())
        fromCmyk(whole.image);
    whole.image = turned(std::move(whole.image), turnOf(jpeg));
    return whole;
}
