// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWFrameRenderer.h"

#include "Model/LiveView/BWScaling.h"

#include <algorithm>
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
        upright = source.constScanLine(from.y()) + std::ptrdiff_t{4} * from.x();
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

void BWFrameRenderer::scale(const QRect &part, QSize whole, Pixels target)
{
    const QSize size = m_reader.size();
    const libyuv::FilterMode filter = BWScaling::filterFor(size, whole);
    // By offsets into the whole pictures, of which only these parts exist: so scaling is exact and does not crawl when the
    // view is scrolled.
    const auto offset = [](const QRect &rect, int stride) {
        return rect.top() * static_cast<std::ptrdiff_t>(stride) + std::ptrdiff_t{4} * rect.left();
    };
    const auto scaleRows = [&](const uint8_t *pixels, const QRect &area, int stride, const QRect &rows) {
        libyuv::ARGBScaleClip(pixels - offset(area, stride), stride, size.width(), size.height(),
                              target.data - offset(part, target.stride), target.stride, whole.width(), whole.height(),
                              rows.left(), rows.top(), rows.width(), rows.height(), filter);
    };
    const QImage &source = m_reader.pixels();
    const QRect &area = m_reader.area();
    const int stride = static_cast<int>(source.bytesPerLine());
    QRect above = part;
    if (part.bottom() == whole.height() - 1) {
        // libyuv reads on to the right of a picture, and so behind the last one of its rows. That comes from a copy.
        constexpr std::size_t spare = 64;
        above.setBottom(part.bottom() - 1);
        QRect last = area;
        last.setTop(std::max(area.top(), area.bottom() - size.height() / whole.height() - 2));
        const uint8_t *const begin = source.constScanLine(last.top() - area.top());
        const std::size_t bytes = static_cast<std::size_t>(stride) * static_cast<std::size_t>(last.height() - 1)
            + static_cast<std::size_t>(last.width()) * 4;
        m_lastRows.resize(bytes + spare);
        std::copy_n(begin, bytes, m_lastRows.begin());
        scaleRows(m_lastRows.data(), last, stride, {part.left(), part.bottom(), part.width(), 1});
    }
    if (above.height() > 0)
        scaleRows(source.constBits(), area, stride, above);
}
