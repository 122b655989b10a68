// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <memory>
#include <QList>
#include <QObject>
#include <QWidget>

class BWLocalizationManager;
class QAction;
class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

/// The controls of one simulated camera, in one row of a grid: its name, plug in or unplug, press the button, and
/// what keeps it from being started. GUI thread.
class BWSimulatedCameraRow : public QObject {
    Q_OBJECT

public:
    BWSimulatedCameraRow(std::shared_ptr<BWSimulatedCamera> camera, QGridLayout *grid, QObject *parent);

    void localize(BWLocalizationManager &manager);
    /// Shows the camera's state.
    void update();

private:
    void onPlug();

    std::shared_ptr<BWSimulatedCamera> m_camera;
    QLabel *m_title;
    QPushButton *m_plugButton;
    QPushButton *m_pressButton;
    QPushButton *m_faultButton;
    QAction *m_stall;
    QAction *m_damageFrames;
    QAction *m_loseFrames;
    QLabel *m_startLabel;
    QComboBox *m_startBox;
    QString m_plugInText;
    QString m_unplugText;
};

/// Handles the simulated cameras: plugs each one in and out, presses its button, and occupies it as another program would.
/// It has no parent window, because a sheet on that window would block it too, and with it the only way to plug a camera
/// in again. GUI thread.
class BWSimulatedCamerasWindowController final : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWSimulatedCamerasWindowController(const QList<std::shared_ptr<BWSimulatedCamera>> &cameras);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Shows it at the lower left of that window, below it where the screen has room.
    void showBelow(const QWidget &window);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QList<BWSimulatedCameraRow *> m_rows;
    QLabel *m_noCamerasLabel;
};
