// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWGridController.h"

#include "App/LiveView/BWLiveViewController.h"
#include "Model/Products/BWProductInUse.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Technician/BWGridDebuggerWindowController.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QAction>
#include <utility>

BWGridController::BWGridController(BWMainWindow &window, BWLiveViewController &liveView,
                                   const BWProductInUse &productInUse, BWLocalizationManager &texts)
    : m_window(window), m_liveView(liveView), m_productInUse(productInUse)
{
    m_gridDebuggerWindowController = std::make_unique<BWGridDebuggerWindowController>(
        productInUse,
        BWGridDebuggerWindowController::Callbacks{[this] { return gridDistance(); },
                                                  [this](double distance) { updateGridForCurrentProduct(distance); }},
        &window);
    m_gridDebuggerWindowController->localizeWithManager(texts);
    connect(&window.controlBar(), &BWControlBar::gridTriggered, this, &BWGridController::onGrid);
    connect(window.menu().grid, &QAction::triggered, this, &BWGridController::onGrid);
    connect(window.menu().gridDebugger, &QAction::triggered, this, &BWGridController::showGridDebugger);
    connect(&liveView, &BWLiveViewController::imageDisplayUpdated, this, [this] {
        cleanGrid();
        if (m_useGrid)
            overlayGrid();
    });
}

BWGridController::~BWGridController() = default;

QString BWGridController::currentProduct() const
{
    const BWCameraProductPtr product = m_productInUse.currentProduct();
    return product ? product->identifier() : QString();
}

QString BWGridController::currentResolution() const
{
    const QSize size = m_liveView.mainSize(); // a still may have another one than the camera now
    return size.isEmpty() ? QString() : BWResolution(size.width(), size.height()).resolutionString();
}

double BWGridController::gridDistance() const
{
    return m_gridValues.distance(currentProduct(), currentResolution());
}

void BWGridController::overlayGrid()
{
    m_window.centeringClipView().setGridDistance(gridDistance());
}

void BWGridController::cleanGrid()
{
    m_window.centeringClipView().setGridDistance(0);
}

void BWGridController::followProduct()
{
    enableGrid(m_gridValues.contains(currentProduct()));
}

void BWGridController::enableGrid(bool available)
{
    m_window.controlBar().setGridAvailable(available);
    m_window.menu().setGridAvailable(available);
    if (!available) {
        setUseGrid(false);
        m_gridDebuggerWindowController->hide();
    }
    Q_EMIT gridChanged();
}

void BWGridController::setUseGrid(bool use)
{
    m_useGrid = use;
    m_window.controlBar().showGrid(use);
    m_window.menu().showGrid(use);
}

void BWGridController::onGrid()
{
    setUseGrid(!m_useGrid);
    Q_EMIT gridChanged();
    m_liveView.updateImageDisplay();
    if (m_useGrid)
        reloadGridDebugger();
    else
        m_gridDebuggerWindowController->hide();
}

void BWGridController::updateGridForCurrentProduct(double distance)
{
    cleanGrid();
    const QString resolution = currentResolution();
    if (!resolution.isNull())
        m_gridValues.setDistance(distance, currentProduct(), resolution);
    overlayGrid();
}

void BWGridController::reloadGridDebugger()
{
    m_gridDebuggerWindowController->reload();
}

void BWGridController::showGridDebugger()
{
    reloadGridDebugger();
    if (!std::exchange(m_gridDebuggerPlaced, true))
        placeBWToolWindow(*m_gridDebuggerWindowController, m_window);
    m_gridDebuggerWindowController->show();
    m_gridDebuggerWindowController->raise();
    m_gridDebuggerWindowController->activateWindow();
}
