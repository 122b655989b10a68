// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"

#include <QStringList>
#include <QWidget>

class BWAnnouncement;
class BWBarButton;
class BWMeasuringMenu;
class BWPopUpButton;
class QAction;
class QHBoxLayout;
class QLabel;

/// The bar of measuring tools below the picture: a button for each action of the menu, the scale that is used, and what was
/// measured last. GUI thread.
class BWMeasuringStrip : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// The menu must outlive the strip.
    BWMeasuringStrip(const BWMeasuringMenu &menu, QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// The scales to choose from; a `chosen` of -1 stands for no scale, which is always offered, as are making a new one and
    /// managing them.
    void showScales(const QStringList &titles, int chosen);
    /// Shows it, and screen readers say it.
    void announce(const QString &text);
    QString announcement() const;
    /// The keyboard to the tool in use.
    void focusTool();

Q_SIGNALS:
    /// Of those that are shown; -1 for none.
    void scalePicked(int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    BWBarButton *addButton(QAction *action);
    void addGap();
    void setTexts();
    void setIcons();
    void fillScales();
    void fitAnnouncement();
    void pickScale(int index);

    const BWMeasuringMenu &m_menu;
    QHBoxLayout *m_row;
    BWPopUpButton *m_scales;
    QLabel *m_scaleLabel; // which is only said: a combo box takes its name for screen readers from one
    BWAnnouncement *m_announcement;
    BWBarButton *m_close;
    QStringList m_scaleTitles;
    int m_chosenScale = -1;
    QString m_noScale;
    QString m_closeText;
};
