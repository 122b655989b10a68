// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWFullScreenRules.h"

#include <optional>
#include <QPoint>
#include <QVariantAnimation>
#include <QWidget>

class QMenuBar;
class QVBoxLayout;

/// Holds the control bar over the top edge of the picture. In full screen a menu bar stands above it; both are out of sight
/// and slide in over the picture when they are wanted. Even then they are visible as far as Qt is concerned, so that Tab and
/// all keys of the menus reach them. GUI thread.
class BWSlidingBars : public QWidget {
    Q_OBJECT

public:
    /// `menuBar` is the window's, which is hidden in full screen; its menus must outlive this object.
    BWSlidingBars(const QMenuBar &menuBar, QWidget *content);
    ~BWSlidingBars() override;

    void addControlBar(QWidget *bar);

    /// In full screen they slide, else they stay.
    void setSliding(bool slides);
    bool slides() const { return m_slides; }
    void placeIn(int width);
    /// How much of the content's top they cover now.
    int coveredHeight() const { return y() + height(); }

    /// In the coordinates of the content; nothing when it is not in the window.
    void pointerAt(const std::optional<QPoint> &position);
    /// Returns whether the keyboard was used in sliding bars, which then ends.
    bool endKeyboard();
    /// Opens the first menu, in full screen.
    void openMenu();

Q_SIGNALS:
    /// At each step while they slide.
    void coveredHeightChanged();
    /// The keyboard focus must not stay in them while they are out of sight.
    void keyboardReturned();
    /// Whether the pointer shows over the picture.
    void pointerShown(bool shown);

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void focusChanged(const QWidget *now);
    void slide(bool in);
    void endSlide();
    void returnKeyboard();

    QVBoxLayout *m_column;
    QMenuBar *m_menuBar; ///< in full screen
    QVariantAnimation m_slide;
    BWFullScreenRules m_rules;
    bool m_slides = false;
    bool m_shown = true;
};
