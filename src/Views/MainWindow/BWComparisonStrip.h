// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWScene.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <QList>
#include <QWidget>

class BWMainMenu;
class QAbstractButton;
class QAction;
class QSlider;

/// The controls of a comparison, in a small panel over the lower edge of the picture: how both pictures are shown, how much
/// of the reference shows, whether both move together. Its buttons are the menu's actions once more. Hidden at first. GUI
/// thread.
class BWComparisonStrip : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// The menu must outlive the strip.
    explicit BWComparisonStrip(const BWMainMenu &menu, QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Moves to the middle of the lower edge of that area.
    void placeIn(const QRect &area);
    /// How wide the picture has to be for it; 0 while it is hidden.
    int neededWidth() const;
    /// How much of the lower edge it takes up, with the gap above it; 0 while it is hidden.
    int takenHeight() const;

    /// Puts the slider where `share` is, from 0 to 1, without a signal.
    void showShare(BWScene::Mode mode, double share);

Q_SIGNALS:
    void shareChanged(double share);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Button {
        QAbstractButton *button;
        const QAction *action;
        BWLocalizableString text;
    };

    QAbstractButton *add(QAction *action, const BWLocalizableString &text);

    const BWMainMenu &m_menu;
    QList<Button> m_buttons;
    QSlider *m_slider;
    QString m_shareName;
    QString m_lineName;
};
