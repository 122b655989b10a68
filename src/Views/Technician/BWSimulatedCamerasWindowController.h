#pragma once

#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/Texts/BWLocalizationManagerDelegate.h"

#include <memory>
#include <QList>
#include <QWidget>

class BWSimulatedCameraRow;
class QLabel;

/// The hand that holds the simulated cameras, on the screen: plugs each one in and out, presses its button, and holds it
/// as another program would. It belongs to no other window, for a sheet on that window would block it too, and with it
/// the only way to plug a camera in again. GUI thread.
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
