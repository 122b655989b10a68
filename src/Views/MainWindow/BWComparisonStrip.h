// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWScene.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/MainWindow/BWPictureStrip.h"

#include <QList>

class BWMainMenu;
class QAbstractButton;
class QAction;
class QSlider;

/// The controls of a comparison: how both pictures are shown, how much
/// of the reference shows, whether both move together. Its buttons are the menu's actions once more. GUI thread.
class BWComparisonStrip : public BWPictureStrip, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// The menu must outlive the strip.
    explicit BWComparisonStrip(const BWMainMenu &menu, QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Puts the slider where `share` is, from 0 to 1, without a signal.
    void showShare(BWScene::Mode mode, double share);

Q_SIGNALS:
    void shareChanged(double share);

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
