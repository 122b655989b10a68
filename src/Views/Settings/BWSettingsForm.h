// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"

#include <QWidget>

class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

/// The controls of the settings window in their places, in the order in which the Tab key goes through them. What they
/// do is up to whoever connects them. GUI thread.
class BWSettingsForm : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWSettingsForm(QWidget *parent = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Makes the menus wide enough for these titles, so that the window keeps its width when cameras come and go.
    void setUsualTitles(const QStringList &titles);

    /// Fill the menus; -1 selects nothing. An empty menu cannot be used; an open one is closed if its items change.
    void showCameras(const QStringList &titles, int index);
    void showProducts(const QStringList &titles, int index);
    void selectProduct(int index);

    QComboBox *cameraTypes;
    QComboBox *cameraProducts;
    QPushButton *advancedSettings;
    QComboBox *videoHardware; ///< item 0: photo, item 1: video
    QComboBox *snapshotOnClick; ///< item 0: yes, item 1: no
    QComboBox *recentFiles; ///< item 0: yes, item 1: no
    QComboBox *rememberLayout; ///< item 0: yes, item 1: no
    QPushButton *restoreLayout;

protected:
    void changeEvent(QEvent *event) override;

private:
    void addSection(QGridLayout &grid, const QList<std::pair<QLabel *, QWidget *>> &rows);
    void updatePlaceholders();
    void updateWidths();

    QLabel *m_selectCameraLabel;
    QLabel *m_selectProductLabel;
    QLabel *m_cameraButtonSavesLabel;
    QLabel *m_snapshotOnClickLabel;
    QLabel *m_recentFilesLabel;
    QLabel *m_rememberLayoutLabel;
    QString m_noCamera;
    QString m_pleaseChoose;
    QStringList m_usualTitles;
};
