// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWScene.h"

#include <algorithm>

BWPicturePlace BWAlignment::follow(const BWPicturePlace &main) const
{
    return {main.middle + m_offset * main.width, main.width * m_ratio};
}

void BWAlignment::align(const BWPicturePlace &main, const BWPicturePlace &reference)
{
    if (main.width <= 0 || reference.width <= 0)
        return;
    m_ratio = reference.width / main.width;
    m_offset = (reference.middle - main.middle) / main.width;
}

QRect BWScene::mainArea(QSize viewport) const
{
    if (mode != Mode::SideBySide)
        return {{0, 0}, viewport};
    return {0, 0, std::max(0, (viewport.width() - gap) / 2), viewport.height()};
}

QRect BWScene::referenceArea(QSize viewport) const
{
    const QRect left = mainArea(viewport);
    return mode == Mode::SideBySide ? left.translated(viewport.width() - left.width(), 0) : left;
}

QRect BWScene::mainClip(QSize viewport) const
{
    QRect clip = mainArea(viewport);
    if (mode == Mode::Divider)
        clip.setWidth(dividerPosition(viewport));
    return clip;
}

QRect BWScene::referenceClip(QSize viewport) const
{
    QRect clip = referenceArea(viewport);
    if (mode == Mode::Divider)
        clip.setLeft(dividerPosition(viewport));
    return clip;
}

int BWScene::dividerPosition(QSize viewport) const
{
    return qRound(share * viewport.width());
}

BWPicturePlace BWScene::mainPlace(QSize viewport, QPoint scroll) const
{
    const QSizeF size = mainPicture.footprint();
    return {mainPicture.imageOrigin(mainArea(viewport).size(), scroll) + QPointF(size.width(), size.height()) / 2,
            mainPicture.frameSize().width()};
}

BWPicturePlace BWScene::referencePlace(QSize viewport, QPoint scroll) const
{
    return alignment.follow(mainPlace(viewport, scroll));
}

BWRenderRequest BWScene::mainRequest(QSize viewport, QPoint scroll, double ratio) const
{
    return {mainPicture, mainArea(viewport).size(), scroll, ratio};
}

BWRenderRequest BWScene::referenceRequest(QSize viewport, QPoint scroll, double ratio) const
{
    return BWRenderRequest::placed(referencePicture, referenceArea(viewport).size(), referencePlace(viewport, scroll),
                                   ratio);
}
