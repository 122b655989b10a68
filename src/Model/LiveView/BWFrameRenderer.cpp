#include "Model/LiveView/BWFrameRenderer.h"

#include "Model/LiveView/BWRenderRequest.h"

#include <algorithm>
#include <libyuv.h>

namespace {

/// Around a change of the camera's resolution, frames briefly have another size than the requested layout.
BWRenderRequest layoutOf(const BWFrame &frame, const BWRenderRequest &requested)
{
    return requested.forPicture({frame.width(), frame.height()});
}

/// Left and upper edges moved outwards to even numbers: colour is stored for pairs of pixels.
QRect aligned(const QRect &part)
{
    QRect even = part;
    even.setLeft(part.left() & ~1);
    even.setTop(part.top() & ~1);
    return even;
}

} // namespace

BWFrameReader::Scale BWFrameRenderer::scaleFor(const BWFrame &frame, const BWRenderRequest &request)
{
    const QSize upright = BWOrientation(request.rotation, request.flip).turned(request.imageSize);
    const bool halfIsEnough = upright.width() * 2 <= frame.width() && upright.height() * 2 <= frame.height();
    return halfIsEnough && !upright.isEmpty() ? BWFrameReader::Scale::Half : BWFrameReader::Scale::Full;
}

bool BWFrameRenderer::setFrame(const BWFrame &frame, const BWRenderRequest &request)
{
    const BWFrameReader::Scale scale = scaleFor(frame, layoutOf(frame, request));
    if (!m_reader.setFrame(frame, scale)) {
        // The last good frame is read again when it is next drawn.
        m_reader.clear();
        return false;
    }
    m_frame = frame;
    m_scale = scale;
    ++m_frameNumber;
    return true;
}

void BWFrameRenderer::clear()
{
    m_reader.clear();
    m_frame = BWFrame();
}

BWRenderedImage BWFrameRenderer::render(const BWRenderRequest &requested)
{
    const BWRenderRequest request = layoutOf(m_frame, requested);
    if (m_frame.isNull() || request.visible.isEmpty())
        return {};
    const BWFrameReader::Scale scale = scaleFor(m_frame, request);
    if (m_reader.size().isEmpty() || scale != m_scale) {
        if (!m_reader.setFrame(m_frame, scale))
            return {};
        m_scale = scale;
    }

    const BWOrientation orientation(request.rotation, request.flip);
    const QSize upright = orientation.turned(request.imageSize);
    QRect part = orientation.toUpright(request.visible, upright);
    const bool unscaled = upright == m_reader.size();
    if (unscaled)
        part = aligned(part);
    const QRect shown = orientation.toTurned(part, upright);

    const bool moved = orientation.mirrored() || orientation.clockwise() != 0;
    QImage &image = freeImage(shown.size());
    Pixels pixels{image.bits(), static_cast<int>(image.bytesPerLine())};
    const auto step = [&](std::size_t index) {
        m_steps[index].resize(static_cast<std::size_t>(part.width()) * static_cast<std::size_t>(part.height()) * 4);
        return Pixels{m_steps[index].data(), part.width() * 4};
    };

    Pixels upRight = moved ? step(0) : pixels;
    if (unscaled)
        m_reader.toARGB(part, upRight.data, upRight.stride);
    else
        scalePart(part, upright, upRight);
    if (orientation.mirrored()) {
        const Pixels mirrored = orientation.clockwise() != 0 ? step(1) : pixels;
        libyuv::ARGBMirror(upRight.data, upRight.stride, mirrored.data, mirrored.stride, part.width(), part.height());
        upRight = mirrored;
    }
    if (orientation.clockwise() != 0)
        libyuv::ARGBRotate(upRight.data, upRight.stride, pixels.data, pixels.stride, part.width(), part.height(),
                           static_cast<libyuv::RotationMode>(orientation.clockwise()));
    return {image, request.target + shown.topLeft(), m_frameNumber, request};
}

void BWFrameRenderer::scalePart(const QRect &part, QSize whole, Pixels target)
{
    const QSize size = m_reader.size();
    // The pixels that the part is made from, and a few around it for the filter. They are put where they belong in a
    // buffer of the whole picture, so that scaling is exact and does not crawl when the view is scrolled.
    const double scaleX = static_cast<double>(size.width()) / whole.width();
    const double scaleY = static_cast<double>(size.height()) / whole.height();
    constexpr int margin = 3;
    QRect source(
        QPoint(static_cast<int>(part.left() * scaleX) - margin, static_cast<int>(part.top() * scaleY) - margin),
        QPoint(static_cast<int>((part.right() + 1) * scaleX) + margin,
               static_cast<int>((part.bottom() + 1) * scaleY) + margin));
    source = aligned(source.intersected(QRect(QPoint(0, 0), size)));

    const int stride = size.width() * 4;
    m_unscaled.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(size.height()));
    m_reader.toARGB(source, m_unscaled.data() + source.top() * static_cast<std::ptrdiff_t>(stride) + source.left() * 4,
                    stride);
    libyuv::ARGBScaleClip(m_unscaled.data(), stride, size.width(), size.height(),
                          target.data - part.top() * static_cast<std::ptrdiff_t>(target.stride) - part.left() * 4,
                          target.stride, whole.width(), whole.height(), part.left(), part.top(), part.width(),
                          part.height(), libyuv::kFilterBox);
}

QImage &BWFrameRenderer::freeImage(QSize size)
{
    // Reuses an image that has no other holder, which isDetached() shows.
    const auto isFree = [](const QImage &image) { return image.isNull() || image.isDetached(); };
    auto found = std::find_if(m_images.begin(), m_images.end(),
                              [&](const QImage &image) { return isFree(image) && image.size() == size; });
    if (found == m_images.end())
        found = std::find_if(m_images.begin(), m_images.end(), isFree);
    if (found == m_images.end())
        found = m_images.begin();
    if (found->size() != size || !isFree(*found))
        *found = QImage(size, QImage::Format_RGB32);
    return *found;
}
