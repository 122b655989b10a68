// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWMeasuredPicture.h"

#include "Model/LiveView/BWFrameRenderer.h"
#include "Model/Measuring/BWMeasurementPainter.h"
#include "Model/Measuring/BWScaleBar.h"

#include <algorithm>
#include <cmath>
#include <QFontInfo>
#include <QPainter>

namespace {

/// Of a picture that is as large in a window as people like it: the mean of width and height, in points.
constexpr double usualSide = 560;
constexpr double finestLine = 0.7; // that can still be seen

double lineWidthIn(QSize size)
{
    return std::max(finestLine, std::sqrt(double(size.width()) * size.height()) / usualSide);
}

QSize turnedSize(const BWMeasuredPicture::Shown &shown)
{
    return BWOrientation(shown.state.currentRotation(), shown.state.currentFlip()).turned(shown.frame.size());
}

/// Pixels per metre; 0 if nobody knows.
int densityOf(const BWMeasuredPicture::Shown &shown)
{
    constexpr double most = 1e9; // that an image can hold
    const double millimetres = shown.scale.millimetresPerWidth();
    const double density = shown.scale.isCalibrated() ? shown.frame.width() * 1000 / millimetres : 0;
    return density < most ? qRound(density) : 0;
}

} // namespace

QImage BWMeasuredPicture::of(const Shown &shown)
{
    if (shown.frame.isNull())
        return {};
    const QSize size = turnedSize(shown);
    const BWLiveViewGeometry geometry(shown.frame.size(), shown.state);
    const BWPicturePlace place{QPointF(size.width(), size.height()) / 2, double(shown.frame.width())};
    const BWRenderRequest request = BWRenderRequest::placed(geometry, size, place, 1);
    BWFrameRenderer renderer;
    QImage picture(size, QImage::Format_RGB32);
    if (picture.isNull() || !renderer.setFrame(shown.frame, request))
        return {};
    const BWRenderedImage rendered = renderer.render(request);
    if (rendered.image.isNull())
        return {};
    QPainter painter(&picture);
    painter.drawImage(rendered.position, rendered.image);

    const double lineWidth = lineWidthIn(size);
    QFont font = shown.font;
    font.setPixelSize(std::max(1, qRound((QFontInfo(shown.font).pixelSize() + 1) * lineWidth)));
    font.setWeight(QFont::DemiBold);
    BWMeasurementPainter draw(painter, request.pictureToViewport(), lineWidth, font, shown.locale);
    draw.keepTextsIn(picture.rect());
    for (const BWMeasurement &one : shown.measurements)
        draw.draw(one, shown.scale);
    if (shown.hasScaleBar) {
        const bool isCalibrated = shown.scale.isCalibrated();
        const double width = isCalibrated ? shown.scale.millimetresPerWidth() : shown.frame.width();
        constexpr double longest = 200; // points, as on the screen
        const double room = std::min(longest * lineWidth, size.width() / 3.0);
        draw.drawScaleBar({width / shown.frame.width(), room, isCalibrated ? shown.scale.unit : BWLengthUnit::Pixel,
                           shown.scale.isUnitChosen},
                          picture.rect());
    }
    painter.end();
    picture.setDotsPerMeterX(densityOf(shown));
    picture.setDotsPerMeterY(densityOf(shown));
    return picture;
}

BWPictureMetadata BWMeasuredPicture::metadataOf(const Shown &shown)
{
    BWPictureMetadata metadata{shown.scale.calibration, shown.scale.unit, shown.product, {}};
    metadata.calibration.otherFields.clear();
    metadata.calibration.millimetresPerWidth =
        shown.scale.millimetresPerWidth() * turnedSize(shown).width() / std::max(1, shown.frame.width());
    return metadata;
}
