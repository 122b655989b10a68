// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWComparisonPicture.h"

#include "Model/LiveView/BWFrameRenderer.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

using Mode = BWScene::Mode;

namespace {

constexpr int longestSide = 32'000; // that every program can read

/// One of the two as it lies on the picture that is made.
struct Part {
    BWFrame frame;
    BWLiveViewGeometry geometry;
    BWPicturePlace place;

    QRectF rect() const
    {
        BWLiveViewState state = geometry.state();
        state.setScale(place.width / std::max(1, geometry.imageSize().width()));
        QRectF rect({}, BWLiveViewGeometry(geometry.imageSize(), state).footprint());
        rect.moveCenter(place.middle);
        return rect;
    }

    /// False if there is nothing to draw.
    bool draw(QPainter &painter, const QRect &area, const QRect &clip) const
    {
        const BWRenderRequest request = BWRenderRequest::placed(geometry, area.size(), place, 1);
        BWFrameRenderer renderer;
        if (frame.isNull() || request.visible.isEmpty() || !renderer.setFrame(frame, request))
            return false;
        const BWRenderedImage image = renderer.render(request);
        painter.setClipRect(clip);
        painter.drawImage(area.topLeft() + image.position, image.image);
        return !image.image.isNull();
    }
};

Part part(const BWFrame &frame, const BWLiveViewGeometry &shown, const BWPicturePlace &place)
{
    return {frame, BWLiveViewGeometry(frame.isNull() ? QSize() : frame.size(), shown.state()), place};
}

/// Where the line is in the main picture, from 0 to 1.
double lineIn(const BWComparisonPicture::Shown &shown)
{
    const BWPicturePlace place = shown.scene.mainPlace(shown.viewport, shown.scroll);
    const double width = shown.scene.mainPicture.footprint().width();
    const double left = place.middle.x() - width / 2;
    return width > 0 ? std::clamp((shown.scene.dividerPosition(shown.viewport) - left) / width, 0.0, 1.0) : 0.5;
}

} // namespace

QImage BWComparisonPicture::of(const Shown &shown)
{
    if (shown.main.isNull())
        return {};
    const BWScene &scene = shown.scene;
    const bool apart = scene.mode == Mode::SideBySide;
    const BWPicturePlace unscaled{{}, double(shown.main.width())};
    Part main = part(shown.main, scene.mainPicture, unscaled);
    Part reference = part(shown.reference, scene.referencePicture, scene.alignment.follow(unscaled));
    QRectF field = main.rect();
    double scale = 1;
    if (apart && !shown.reference.isNull()) {
        field |= reference.rect();
        scale = std::max(1.0, shown.reference.width() / reference.place.width);
    }
    const int panes = apart ? 2 : 1;
    scale = std::min({scale, std::sqrt(mostPixels / (panes * field.width() * field.height())),
                      longestSide / std::max(panes * field.width(), field.height())});
    const QSize pane = (field.size() * scale).toSize().expandedTo({1, 1});
    for (Part *each : {&main, &reference}) {
        each->place = each->place.scaledBy(scale, {});
        each->place.middle -= field.topLeft() * scale;
    }
    const int gap = apart ? std::max(BWScene::gap, pane.width() / 100) : 0;
    QImage picture(panes * pane.width() + gap, pane.height(), QImage::Format_RGB32);
    if (picture.isNull())
        return {};
    picture.fill(Qt::white);
    QPainter painter(&picture);
    const QRect left({0, 0}, pane);
    if (!main.draw(painter, left, left))
        return {};
    const QRect area = apart ? left.translated(pane.width() + gap, 0) : left;
    QRect clip = area;
    if (scene.mode == Mode::Divider)
        clip.setLeft(qRound(lineIn(shown) * pane.width()));
    painter.setOpacity(scene.referenceOpacity());
    if (scene.mode == Mode::Divider) {
        painter.setClipRect(clip);
        painter.fillRect(clip, Qt::white);
    }
    reference.draw(painter, area, clip);
    return picture;
}
