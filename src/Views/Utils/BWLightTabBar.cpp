#include "Views/Utils/BWLightTabBar.h"

#include <QStyleOptionTab>
#include <QStylePainter>

namespace {
constexpr int dotRoom = 14; // as much on the right as the dot needs on the left, so that the text stays in the middle
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
    m_item.drawDot(painter, labelRect(index), index == currentIndex());
}

void BWLightTabBar::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    // the selected tab is drawn last because styles let it overlap its neighbours
    for (int index = 0; index < count(); ++index) {
        if (index != currentIndex())
            drawTab(painter, index);
    }
    if (currentIndex() >= 0)
        drawTab(painter, currentIndex());
}
