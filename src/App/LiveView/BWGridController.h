#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/LiveView/BWMeasuringGridTable.h"

#include <functional>
#include <memory>
#include <QObject>

class BWConfigManager;
class BWGridDebuggerWindowController;
class BWLiveViewController;
class BWLocalizationManager;
class BWMainWindow;

/// The measuring grid on the live image: for which products there is one, whether it is on, how wide it is, and the
/// window in which a technician tunes it. Every layout of the live image draws it anew. GUI thread.
class BWGridController : public QObject {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<BWCameraPtr()> currentCamera;
        std::function<void()> updateStateLabel;
    };

    /// All must outlive this object.
    BWGridController(BWMainWindow &window, BWLiveViewController &liveView, BWConfigManager &config,
                     BWLocalizationManager &texts, Callbacks callbacks);
    ~BWGridController() override;

    bool useGrid() const { return m_useGrid; }
    /// Points from line to line, for the current product and resolution; 0 if they have no grid.
    double gridDistance() const;

    void overlayGrid();
    void cleanGrid();
    /// Without one the grid is turned off. With one it stays as it is.
    void enableGrid(bool available);
    /// Turns the grid on or off.
    void onGrid();
    /// Changes the distance of the lines until the program ends, and shows them even if the grid is off.
    void updateGridForCurrentProduct(double distance);
    void reloadGridDebugger();
    void showGridDebugger();

private:
    QString currentResolution() const;
    void setUseGrid(bool use);

    BWMainWindow &m_window;
    BWLiveViewController &m_liveView;
    BWConfigManager &m_config;
    Callbacks m_callbacks;
    BWMeasuringGridTable m_gridValues;
    std::unique_ptr<BWGridDebuggerWindowController> m_gridDebuggerWindowController;
    bool m_gridDebuggerPlaced = false;
    bool m_useGrid = false;
};
