#pragma once

#include <QIcon>
#include <QRectF>

class QPainter;

/// How one tab draws its label: a dot 4 by 4 points before the text, green for the selected tab, grey for the others.
class BWLightTabItem {
public:
    BWLightTabItem();

    /// Where the dot of a label goes: 7 points left of it, at the middle of its height.
    static QRectF dotRect(const QRectF &labelRect);

    void drawDot(QPainter &painter, const QRectF &labelRect, bool selected) const;

private:
    QIcon m_greenImage;
    QIcon m_grayImage;
};
