#include "App/LiveView/BWLiveViewController.h"

#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Products/BWProductInUse.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWDoubleButton.h"

#include <QAction>
#include <utility>

BWLiveViewController::BWLiveViewController(BWMainWindow &window, const BWProductInUse &productInUse)
    : m_window(window), m_productInUse(productInUse)
{
    const BWControlBar &bar = window.controlBar();
    connect(&bar, &BWControlBar::zoomTriggered, this, &BWLiveViewController::onZoom);
    connect(&bar, &BWControlBar::rotationPicked, this, &BWLiveViewController::onRotate);
    connect(&bar, &BWControlBar::flipPicked, this, &BWLiveViewController::onFlip);
    const BWMainMenu &menu = window.menu();
    connect(menu.zoomIn, &QAction::triggered, this, &BWLiveViewController::zoomIn);
    connect(menu.zoomOut, &QAction::triggered, this, &BWLiveViewController::zoomOut);
    connect(menu.actualSize, &QAction::triggered, this, &BWLiveViewController::zoomToActualSize);
    connect(menu.rotate, &QAction::triggered, this, &BWLiveViewController::rotateByQuarter);
    connect(menu.flipHorizontally, &QAction::triggered, this, &BWLiveViewController::flipHorizontally);
    connect(menu.flipVertically, &QAction::triggered, this, &BWLiveViewController::flipVertically);
    connect(&window.centeringClipView(), &BWCenteringClipView::zoomRequested, this,
            [this](bool in) { in ? zoomIn() : zoomOut(); });
    connect(&window, &BWMainWindow::resized, this, &BWLiveViewController::updateImageDisplay);
    showZoom();
}

void BWLiveViewController::updateImageDisplay()
{
    const BWCameraPtr &camera = m_productInUse.camera();
    const QSize size = camera ? camera->defaultResolution().dimensions() : QSize(0, 0);
    m_window.centeringClipView().setLiveGeometry(BWLiveViewGeometry(size, m_state));
    Q_EMIT imageDisplayUpdated();
}

void BWLiveViewController::clear()
{
    m_window.centeringClipView().clear();
    m_window.centeringClipView().setLiveGeometry(BWLiveViewGeometry({}, m_state)); // nothing to scroll in
}

void BWLiveViewController::onZoom(BWDoubleButton *sender)
{
    sender->lastRight() ? zoomIn() : zoomOut();
}

void BWLiveViewController::zoomIn()
{
    m_state.zoomIn();
    showZoom();
    updateImageDisplay();
}

void BWLiveViewController::zoomOut()
{
    m_state.zoomOut();
    showZoom();
    updateImageDisplay();
}

void BWLiveViewController::zoomToActualSize()
{
    m_state.setCurrentZoom(100);
    showZoom();
    updateImageDisplay();
}

void BWLiveViewController::showZoom()
{
    m_window.controlBar().showZoom(m_state.zoomText());
}

void BWLiveViewController::onRotate(const QString &title)
{
    m_state.setCurrentRotation(BWLiveViewState::rotationFromTitle(title));
    updateImageDisplay();
}

void BWLiveViewController::rotateByQuarter()
{
    m_state.setCurrentRotation((m_state.currentRotation() + 90) % 360);
    m_window.controlBar().showRotation(m_state.currentRotation());
    updateImageDisplay();
}

void BWLiveViewController::onFlip(int index)
{
    m_state.setCurrentFlip(index);
    updateImageDisplay();
}

void BWLiveViewController::flipHorizontally()
{
    toggleFlip(BWFlip::Horizontal);
}

void BWLiveViewController::flipVertically()
{
    toggleFlip(BWFlip::Vertical);
}

void BWLiveViewController::toggleFlip(BWFlip axis)
{
    // The modes are numbered by two bits, one for each axis.
    const int flip = static_cast<int>(m_state.currentFlip()) ^ static_cast<int>(axis);
    m_window.controlBar().showFlip(flip);
    onFlip(flip);
}
