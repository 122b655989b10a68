// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWMeasuringGrid.h"

#include <memory>
#include <QObject>

class BWGridDebuggerWindowController;
class BWLiveViewController;
class BWLocalizationManager;
class BWMainWindow;
class BWProductInUse;

/// The measuring grid on the live image: for which products there is one, whether it is on, how wide it is, and the
/// window in which a technician tunes it. Redrawn with every layout of the live image. GUI thread.
class BWGridController : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object.
    BWGridController(BWMainWindow &window, BWLiveViewController &liveView, const BWProductInUse &productInUse,
                     BWLocalizationManager &texts);
    ~BWGridController() override;

    bool useGrid() const { return m_useGrid; }
    /// Points from line to line, for the current product and resolution; 0 if they have no grid.
    double gridDistance() const;

    void overlayGrid();
    void cleanGrid();
    /// The current product or the settings changed: the product decides whether there is a grid.
    void followProduct();
    /// Turns the grid off if it is not available; otherwise leaves it as it is.
    void enableGrid(bool available);
    /// Turns the grid on or off.
    void onGrid();
    /// Changes the distance of the lines until the program ends, and shows them even if the grid is off.
    void updateGridForCurrentProduct(double distance);
    void reloadGridDebugger();
    void showGridDebugger();

Q_SIGNALS:
    /// useGrid() may have changed.
    void gridChanged();

private:
    QString currentProduct() const;
    QString currentResolution() const;
    void setUseGrid(bool use);

    BWMainWindow &m_window;
    BWLiveViewController &m_liveView;
    const BWProductInUse &m_productInUse;
    BWMeasuringGridTable m_gridValues;
    std::unique_ptr<BWGridDebuggerWindowController> m_gridDebuggerWindowController;
    bool m_gridDebuggerPlaced = false;
    bool m_useGrid = false;
};
