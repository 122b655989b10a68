#pragma once

#include "BWACUDriver/BWSimulatedCameras.h"

#include <memory>
#include <QObject>

class BWLocalizationManager;
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
    QLabel *m_startLabel;
    QComboBox *m_startBox;
    QString m_plugInText;
    QString m_unplugText;
};
