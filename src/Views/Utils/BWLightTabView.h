// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QRectF>
#include <QTabBar>
#include <QTabWidget>

class QPainter;

/// The dot before a tab's label: 4 by 4 points, green for the selected tab, a grey ring for
/// the others, as strong as it takes to be seen.
class BWLightTabItem {
public:
    BWLightTabItem();

    /// 7 points left of the label, vertically centred.
    static QRectF dotRect(const QRectF &labelRect);

    void drawDot(QPainter &painter, const QRectF &labelRect, bool selected, const QColor &ground) const;

private:
    QIcon m_greenImage;
    QIcon m_grayImage;
};

/// A tab bar that marks the selected tab with a dot.
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

/// A tab view with a BWLightTabBar.
class BWLightTabView : public QTabWidget {
    Q_OBJECT

public:
    explicit BWLightTabView(QWidget *parent = nullptr) : QTabWidget(parent) { setTabBar(new BWLightTabBar); }
};
