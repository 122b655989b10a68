#include "Model/LiveView/BWFrameReader.h"

#include <algorithm>
#include <array>
#include <libyuv.h>
#include <turbojpeg.h>

struct BWFrameReader::Yuv {
    enum class Layout { I420, I422, I444, Grey, ARGB };

    Layout layout = Layout::I420;
    std::array<std::vector<uint8_t>, 3> planes;
    std::array<int, 3> strides{};
};

namespace {

const libyuv::YuvConstants *constantsFor(BWColorMatrix matrix, BWColorRange range)
{
    if (matrix == BWColorMatrix::BT709)
        return range == BWColorRange::Full ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
    return range == BWColorRange::Full ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
}

} // namespace

void BWFrameReader::DecoderDeleter::operator()(void *decoder) const
{
    tjDestroy(decoder);
}

BWFrameReader::BWFrameReader() : m_jpeg(std::make_unique<Yuv>()) { }

BWFrameReader::~BWFrameReader() = default;

void BWFrameReader::clear()
{
    m_frame = BWFrame();
    m_size = QSize();
}

bool BWFrameReader::setFrame(const BWFrame &frame, Scale scale)
{
    m_frame = frame;
    m_size = QSize();
    if (frame.pixelFormat() == BWPixelFormat::MJPEG) {
        if (!m_decoder)
            m_decoder.reset(tjInitDecompress());
        const bool decoded = m_decoder && decodeJpeg(scale);
        if (!decoded)
            m_decoder.reset(); // after a damaged header it would take every frame for damaged
        return decoded;
    }
    if (!frame.info().isWholeRawPicture())
        return false;
    // Packed 4:2:2 is what raw cameras deliver; its chroma is halved along with the luma, so the sides are multiples of 4.
    const bool isPacked = frame.pixelFormat() == BWPixelFormat::YUYV || frame.pixelFormat() == BWPixelFormat::UYVY;
    const bool canHalve = isPacked && frame.width() % 4 == 0 && frame.height() % 2 == 0;
    m_scale = canHalve ? scale : Scale::Full;
    m_size = m_scale == Scale::Half ? frame.size() / 2 : frame.size();
    return true;
}

bool BWFrameReader::decodeJpeg(Scale scale)
{
    const BWPlane &bytes = m_frame.plane(0);
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colorSpace = 0;
    if (!bytes.data
        || tjDecompressHeader3(m_decoder.get(), bytes.data, bytes.size, &width, &height, &subsampling, &colorSpace)
            != 0)
        return false;

    const int divisor = scale == Scale::Half ? 2 : 1;
    const QSize target((width + divisor - 1) / divisor, (height + divisor - 1) / divisor);
    switch (subsampling) {
    case TJSAMP_420:
        m_jpeg->layout = Yuv::Layout::I420;
        break;
    case TJSAMP_422:
        m_jpeg->layout = Yuv::Layout::I422;
        break;
    case TJSAMP_444:
        m_jpeg->layout = Yuv::Layout::I444;
        break;
    case TJSAMP_GRAY:
        m_jpeg->layout = Yuv::Layout::Grey;
        break;
    default:
        return decodeJpegToARGB(target);
    }
    if (colorSpace != TJCS_YCbCr && colorSpace != TJCS_GRAY)
        return decodeJpegToARGB(target);

    std::array<unsigned char *, 3> planes{};
    const std::size_t planeCount = m_jpeg->layout == Yuv::Layout::Grey ? 1 : 3;
    for (std::size_t i = 0; i < planeCount; ++i) {
        const int component = static_cast<int>(i);
        m_jpeg->strides[i] = tjPlaneWidth(component, target.width(), subsampling);
        m_jpeg->planes[i].resize(tjPlaneSizeYUV(component, target.width(), 0, target.height(), subsampling));
        planes[i] = m_jpeg->planes[i].data();
    }
    // A warning means that a part of the picture is missing or made up: such a picture is not shown.
    if (tjDecompressToYUVPlanes(m_decoder.get(), bytes.data, bytes.size, planes.data(), target.width(),
                                m_jpeg->strides.data(), target.height(), 0)
        != 0)
        return false;
    m_size = target;
    return true;
}

bool BWFrameReader::decodeJpegToARGB(const QSize &target)
{
    const BWPlane &bytes = m_frame.plane(0);
    m_jpeg->layout = Yuv::Layout::ARGB;
    m_jpeg->strides[0] = target.width() * 4;
    m_jpeg->planes[0].resize(static_cast<std::size_t>(m_jpeg->strides[0]) * static_cast<std::size_t>(target.height()));
    if (tjDecompress2(m_decoder.get(), bytes.data, bytes.size, m_jpeg->planes[0].data(), target.width(),
                      m_jpeg->strides[0], target.height(), TJPF_BGRA, 0)
        != 0)
        return false;
    m_size = target;
    return true;
}

void BWFrameReader::toARGB(const QRect &part, uint8_t *argb, int stride)
{
    const int x = part.x();
    const int y = part.y();
    const int width = part.width();
    const int height = part.height();
    const BWFrameInfo &info = m_frame.info();

    if (info.pixelFormat != BWPixelFormat::MJPEG) {
        rawToARGB(part, argb, stride);
        return;
    }

    const auto &planes = m_jpeg->planes;
    const auto &strides = m_jpeg->strides;
    const libyuv::YuvConstants *jpegConstants = &libyuv::kYuvJPEGConstants; // JFIF: full-range BT.601
    const uint8_t *luma = planes[0].data() + y * strides[0];
    const auto chroma = [&](std::size_t plane, int horizontal, int vertical) {
        return planes[plane].data() + (y / vertical) * strides[plane] + x / horizontal;
    };
    switch (m_jpeg->layout) {
    case Yuv::Layout::I420:
        libyuv::I420ToARGBMatrix(luma + x, strides[0], chroma(1, 2, 2), strides[1], chroma(2, 2, 2), strides[2], argb,
                                 stride, jpegConstants, width, height);
        break;
    case Yuv::Layout::I422:
        libyuv::I422ToARGBMatrix(luma + x, strides[0], chroma(1, 2, 1), strides[1], chroma(2, 2, 1), strides[2], argb,
                                 stride, jpegConstants, width, height);
        break;
    case Yuv::Layout::I444:
        libyuv::I444ToARGBMatrix(luma + x, strides[0], chroma(1, 1, 1), strides[1], chroma(2, 1, 1), strides[2], argb,
                                 stride, jpegConstants, width, height);
        break;
    case Yuv::Layout::Grey:
        libyuv::I400ToARGBMatrix(luma + x, strides[0], argb, stride, jpegConstants, width, height);
        break;
    case Yuv::Layout::ARGB:
        libyuv::ARGBCopy(luma + x * 4, strides[0], argb, stride, width, height);
        break;
    }
}

void BWFrameReader::rawToARGB(const QRect &part, uint8_t *argb, int stride)
{
    const int x = part.x();
    const int y = part.y();
    const int width = part.width();
    const int height = part.height();
    const BWFrameInfo &info = m_frame.info();
    const libyuv::YuvConstants *constants = constantsFor(info.matrix, info.range);
    const auto row = [&](std::size_t plane, int vertical, int bytesIn) {
        return info.planes[plane].data + (y / vertical) * info.planes[plane].stride + bytesIn;
    };

    switch (info.pixelFormat) {
    case BWPixelFormat::YUYV:
    case BWPixelFormat::UYVY:
        packedToARGB(part, argb, stride);
        break;
    case BWPixelFormat::NV12:
        libyuv::NV12ToARGBMatrix(row(0, 1, x), info.planes[0].stride, row(1, 2, x), info.planes[1].stride, argb, stride,
                                 constants, width, height);
        break;
    case BWPixelFormat::YU12:
        libyuv::I420ToARGBMatrix(row(0, 1, x), info.planes[0].stride, row(1, 2, x / 2), info.planes[1].stride,
                                 row(2, 2, x / 2), info.planes[2].stride, argb, stride, constants, width, height);
        break;
    case BWPixelFormat::GREY:
        libyuv::I400ToARGBMatrix(row(0, 1, x), info.planes[0].stride, argb, stride, constants, width, height);
        break;
    case BWPixelFormat::RGB24: // libyuv names formats by the order in a little-endian word
        libyuv::RAWToARGB(row(0, 1, x * 3), info.planes[0].stride, argb, stride, width, height);
        break;
    case BWPixelFormat::BGR24:
        libyuv::RGB24ToARGB(row(0, 1, x * 3), info.planes[0].stride, argb, stride, width, height);
        break;
    case BWPixelFormat::None:
    case BWPixelFormat::MJPEG:
        break;
    }
}

void BWFrameReader::packedToARGB(const QRect &part, uint8_t *argb, int stride)
{
    const BWFrameInfo &info = m_frame.info();
    const BWPlane &pixels = info.planes[0];
    const libyuv::YuvConstants *constants = constantsFor(info.matrix, info.range);
    const auto split = info.pixelFormat == BWPixelFormat::YUYV ? libyuv::YUY2ToI422 : libyuv::UYVYToI422;

    // By way of planes, because only those can be converted with any matrix and range; a few rows at a time, so that
    // what lies between stays in the cache.
    constexpr int band = 16;
    const int factor = m_scale == Scale::Half ? 2 : 1;
    const int chromaWidth = (part.width() + 1) / 2;
    const auto planesOf = [](uint8_t *start, int width, int chroma, int rows) {
        return std::array<uint8_t *, 3>{start, start + width * rows, start + (width + chroma) * rows};
    };
    const int wideWidth = part.width() * factor;
    const int wideChroma = (wideWidth + 1) / 2;
    const int wideSize = (wideWidth + 2 * wideChroma) * band * factor;
    m_scratch.resize(static_cast<std::size_t>(wideSize + (part.width() + 2 * chromaWidth) * band));

    for (int y = 0; y < part.height(); y += band) {
        const int rows = std::min(band, part.height() - y);
        const auto wide = planesOf(m_scratch.data(), wideWidth, wideChroma, rows * factor);
        const uint8_t *source =
            pixels.data + (part.y() + y) * factor * static_cast<std::ptrdiff_t>(pixels.stride) + part.x() * factor * 2;
        split(source, pixels.stride, wide[0], wideWidth, wide[1], wideChroma, wide[2], wideChroma, wideWidth,
              rows * factor);
        auto planes = wide;
        if (factor == 2) {
            planes = planesOf(m_scratch.data() + wideSize, part.width(), chromaWidth, rows);
            libyuv::ScalePlane(wide[0], wideWidth, wideWidth, rows * 2, planes[0], part.width(), part.width(), rows,
                               libyuv::kFilterBox);
            for (std::size_t i = 1; i < 3; ++i)
                libyuv::ScalePlane(wide[i], wideChroma, wideChroma, rows * 2, planes[i], chromaWidth, chromaWidth, rows,
                                   libyuv::kFilterBox);
        }
        libyuv::I422ToARGBMatrix(planes[0], part.width(), planes[1], chromaWidth, planes[2], chromaWidth,
                                 argb + y * static_cast<std::ptrdiff_t>(stride), stride, constants, part.width(), rows);
    }
}
