#pragma once

#include "Views/Utils/BWLightTabItem.h"

#include <QTabBar>

/// A tab bar whose tabs show with a dot which of them is selected.
class BWLightTabBar : public QTabBar {
    Q_OBJECT

public:
    using QTabBar::QTabBar;

    /// The rectangle of a tab's text, in the bar's coordinates.
    QRectF labelRect(int index) const;

protected:
    QSize tabSizeHint(int index) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    void drawTab(QPainter &painter, int index) const;

    BWLightTabItem m_item;
};
