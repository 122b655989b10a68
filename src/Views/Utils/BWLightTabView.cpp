// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWLightTabView.h"

#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWIcons.h"

#include <QPainter>
#include <QStyleOptionTab>
#include <QStylePainter>

using namespace Qt::StringLiterals;

namespace {

constexpr double dotSize = 4;
constexpr double dotDistance = 7;
constexpr QColor otherColor(0x9a, 0xa0, 0xa6);
constexpr double dotContrast = BWColors::readable; // styles shade tabs, and what is so small is drawn lighter
constexpr int dotRoom = 14; // for the dot on the left, and as much on the right, so that the text stays centred

} // namespace

BWLightTabItem::BWLightTabItem()
    : m_greenImage(BWIcons::image(u"green_tab_002.png"_s)), m_grayImage(BWIcons::image(u"gray_tab_002.png"_s))
{
}

QRectF BWLightTabItem::dotRect(const QRectF &labelRect)
{
    return {labelRect.x() - dotDistance, labelRect.y() + labelRect.height() * 0.5 - 1, dotSize, dotSize};
}

void BWLightTabItem::drawDot(QPainter &painter, const QRectF &labelRect, bool selected, const QColor &ground) const
{
    const QSize size(static_cast<int>(dotSize), static_cast<int>(dotSize));
    const QColor color = BWColors::on(ground, selected ? BWColors::mark : otherColor, dotContrast);
    const QPixmap pixmap =
        BWIcons::tinted(selected ? m_greenImage : m_grayImage, size, painter.device()->devicePixelRatioF(), color);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    drawBWPixmap(painter, dotRect(labelRect).topLeft(), pixmap);
}

QSize BWLightTabBar::tabSizeHint(int index) const
{
    return QTabBar::tabSizeHint(index) + QSize(dotRoom, 0);
}

QRectF BWLightTabBar::labelRect(int index) const
{
    QStyleOptionTab option;
    initStyleOption(&option, index);
    const QRect area = style()->subElementRect(QStyle::SE_TabBarTabText, &option, this);
    const QSize text = option.fontMetrics.size(Qt::TextShowMnemonic, option.text);
    return QStyle::alignedRect(layoutDirection(), Qt::AlignCenter, text, area);
}

void BWLightTabBar::drawTab(QPainter &painter, int index) const
{
    QStyleOptionTab option;
    initStyleOption(&option, index);
    style()->drawControl(QStyle::CE_TabBarTab, &option, &painter, this);
    m_item.drawDot(painter, labelRect(index), index == currentIndex(), palette().color(QPalette::Window));
}

void BWLightTabBar::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    // The selected tab comes last: styles let it overlap its neighbours.
    for (int index = 0; index < count(); ++index) {
        if (index != currentIndex())
            drawTab(painter, index);
    }
    if (currentIndex() >= 0)
        drawTab(painter, currentIndex());
}
