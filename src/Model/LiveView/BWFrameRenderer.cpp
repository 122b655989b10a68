// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWFrameRenderer.h"

#include <libyuv.h>

namespace {

/// What a request means for a frame, before the picture is turned.
struct Layout {
    Layout(const BWFrame &frame, const BWRenderRequest &requested)
        // Around a change of the camera's resolution, frames briefly have another size than the requested layout.
        : request(requested.forPicture(frame.size())),
          orientation(request.rotation, request.flip),
          whole(orientation.turned(request.imageSize)),
          part(request.visible.isEmpty() ? QRect() : orientation.toUpright(request.visible, whole))
    {
    }

    BWRenderRequest request;
    BWOrientation orientation;
    QSize whole; // of the picture as zoomed
    QRect part; // what is visible of it
};

} // namespace

bool BWFrameRenderer::setFrame(const BWFrame &frame, const BWRenderRequest &requested)
{
    const Layout layout(frame, requested);
    if (!m_reader.setFrame(frame, layout.whole, layout.part))
        return false;
    ++m_frameNumber;
    return true;
}

void BWFrameRenderer::clear()
{
    m_reader.clear();
}

BWRenderedImage BWFrameRenderer::render(const BWRenderRequest &requested)
{
    if (m_reader.frame().isNull())
        return {};
    const auto [request, orientation, whole, part] = Layout(m_reader.frame(), requested);
    if (part.isEmpty())
        return {};
    m_reader.require(whole, part);
    const QImage &source = m_reader.pixels();
    if (source.isNull())
        return {};

    const bool mirrored = orientation.mirrored();
    const bool turned = orientation.clockwise() != 0;
    const bool scaled = whole != m_reader.size();
    if (!scaled && !mirrored && !turned)
        return {source, request.target + m_reader.area().topLeft(), m_frameNumber, request};

    QImage &image = m_images.take(orientation.turned(part.size()));
    const Pixels target{image.bits(), static_cast<int>(image.bytesPerLine())};
    const auto step = [&, size = part.size()](std::size_t index) {
        m_steps[index].resize(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()) * 4);
        return Pixels{m_steps[index].data(), size.width() * 4};
    };
    const uint8_t *upright = nullptr;
    int stride = 0;
    if (scaled) {
        const Pixels pixels = mirrored || turned ? step(0) : target;
        scale(part, whole, pixels);
        upright = pixels.data;
        stride = pixels.stride;
    } else {
        const QPoint from = part.topLeft() - m_reader.area().topLeft();
        upright = source.constScanLine(from.y()) + from.x() * 4;
        stride = static_cast<int>(source.bytesPerLine());
    }
    if (mirrored) {
        const Pixels pixels = turned ? step(1) : target;
        libyuv::ARGBMirror(upright, stride, pixels.data, pixels.stride, part.width(), part.height());
        upright = pixels.data;
        stride = pixels.stride;
    }
    if (turned)
        libyuv::ARGBRotate(upright, stride, target.data, target.stride, part.width(), part.height(),
                           static_cast<libyuv::RotationMode>(orientation.clockwise()));
    return {image, request.target + orientation.toTurned(part, whole).topLeft(), m_frameNumber, request};
}

void BWFrameRenderer::scale(const QRect &part, QSize whole, Pixels target) const
{
    // By offsets into the whole pictures, of which only these parts exist: so scaling is exact and does not crawl when the
    // view is scrolled.
    const auto offset = [](const QRect &rect, int stride) {
        return rect.top() * static_cast<std::ptrdiff_t>(stride) + rect.left() * 4;
    };
    const QImage &source = m_reader.pixels();
    const int stride = static_cast<int>(source.bytesPerLine());
    const QSize size = m_reader.size();
    libyuv::ARGBScaleClip(source.constBits() - offset(m_reader.area(), stride), stride, size.width(), size.height(),
                          target.data - offset(part, target.stride), target.stride, whole.width(), whole.height(),
                          part.left(), part.top(), part.width(), part.height(), libyuv::kFilterBox);
}
