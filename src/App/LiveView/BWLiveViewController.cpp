#include "App/LiveView/BWLiveViewController.h"

#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Products/BWProductInUse.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWDoubleButton.h"

#include <algorithm>
#include <QAction>

BWLiveViewController::BWLiveViewController(BWMainWindow &window, BWLiveRenderer &live,
                                           const BWProductInUse &productInUse)
    : m_window(window), m_live(live), m_productInUse(productInUse)
{
    const BWControlBar &bar = window.controlBar();
    connect(&bar, &BWControlBar::zoomTriggered, this, &BWLiveViewController::onZoom);
    connect(&bar, &BWControlBar::rotationPicked, this, &BWLiveViewController::onRotate);
    connect(&bar, &BWControlBar::flipPicked, this, &BWLiveViewController::onFlip);
    const BWMainMenu &menu = window.menu();
    connect(menu.zoomIn, &QAction::triggered, this, &BWLiveViewController::zoomIn);
    connect(menu.zoomOut, &QAction::triggered, this, &BWLiveViewController::zoomOut);
    connect(menu.actualSize, &QAction::triggered, this, &BWLiveViewController::zoomToActualSize);
    connect(menu.fitToWindow, &QAction::triggered, this, &BWLiveViewController::fitToWindow);
    connect(menu.rotate, &QAction::triggered, this, &BWLiveViewController::rotateByQuarter);
    connect(menu.flipHorizontally, &QAction::triggered, this, &BWLiveViewController::flipHorizontally);
    connect(menu.flipVertically, &QAction::triggered, this, &BWLiveViewController::flipVertically);
    const BWCenteringClipView &view = window.centeringClipView();
    connect(&view, &BWCenteringClipView::zoomRequested, this, [this](bool in, QPointF at) {
        zoom([in](BWLiveViewState &state) { in ? state.zoomIn() : state.zoomOut(); }, at);
    });
    connect(&view, &BWCenteringClipView::pinched, this, [this](double factor, QPointF at) {
        zoom([factor](BWLiveViewState &state) { state.scaleBy(factor); }, at);
    });
    connect(&view, &BWCenteringClipView::referenceDragged, this, [this](QPointF distance) {
        moveReference([distance](const BWPicturePlace &place) { return place.movedBy(distance); });
    });
    connect(&window, &BWMainWindow::resized, this, &BWLiveViewController::updateImageDisplay);
    showState();
}

void BWLiveViewController::updateImageDisplay()
{
    layOut();
}

QSize BWLiveViewController::mainSize() const
{
    if (m_still)
        return *m_still;
    const BWCameraPtr &camera = m_productInUse.camera();
    return camera ? camera->defaultResolution().dimensions() : QSize(0, 0);
}

void BWLiveViewController::layOut(std::optional<QPointF> anchor)
{
    BWCenteringClipView &view = m_window.centeringClipView();
    m_state.adaptTo(mainSize(), m_scene.mainArea(view.largestViewport()).size());
    m_scene.mainPicture = BWLiveViewGeometry(mainSize(), m_state);
    m_scene.referencePicture = BWLiveViewGeometry(m_referenceSize, m_referenceState);
    view.setScene(m_scene, anchor);
    view.setMovesReference(m_scene.hasReference() && !m_linked);
    showState();
    Q_EMIT imageDisplayUpdated();
}

void BWLiveViewController::clear()
{
    m_window.centeringClipView().clear(m_live);
    if (m_still)
        return;
    m_scene.mainPicture = BWLiveViewGeometry({}, m_state); // nothing to scroll in
    m_window.centeringClipView().setScene(m_scene);
}

void BWLiveViewController::setStill(std::optional<QSize> size)
{
    m_still = size;
    layOut();
}

void BWLiveViewController::setReference(QSize size, BWScene::Mode mode)
{
    if (!m_scene.hasReference()) {
        m_referenceState = m_state;
        m_scene.alignment = {};
        m_linked = true;
    }
    m_referenceSize = size;
    m_scene.mode = mode;
    layOut();
}

void BWLiveViewController::endReference()
{
    m_scene.mode = BWScene::Mode::Single;
    layOut();
}

void BWLiveViewController::setShare(double share)
{
    m_scene.share = std::clamp(share, 0.0, 1.0);
    layOut();
}

void BWLiveViewController::setLinked(bool linked)
{
    m_linked = linked;
    layOut();
}

/// `at` is where the pointer is in the viewport; what lies there stays.
void BWLiveViewController::zoom(const std::function<void(BWLiveViewState &)> &change, std::optional<QPointF> at)
{
    const QSize viewport = m_window.centeringClipView().viewport()->size();
    const auto inside = [&](const QRect &area) {
        return at ? *at - QPointF(area.contains(at->toPoint()) ? area.topLeft() : m_scene.mainArea(viewport).topLeft())
                  : QRectF({}, area.size()).center();
    };
    if (m_scene.hasReference() && !m_linked) {
        // Steps of its own, which count from how large it appears.
        const double now = m_scene.referencePlace(viewport, {}).width / m_referenceSize.width();
        m_referenceState.setScale(now);
        change(m_referenceState);
        const double factor = m_referenceState.scale() / now;
        const QPointF about = inside(m_scene.referenceArea(viewport));
        moveReference([&](const BWPicturePlace &place) { return place.scaledBy(factor, about); });
        return;
    }
    change(m_state);
    layOut(inside(m_scene.mode == BWScene::Mode::SideBySide && at && !m_scene.mainArea(viewport).contains(at->toPoint())
                      ? m_scene.referenceArea(viewport)
                      : m_scene.mainArea(viewport)));
}

void BWLiveViewController::moveReference(const std::function<BWPicturePlace(const BWPicturePlace &)> &change)
{
    const BWCenteringClipView &view = m_window.centeringClipView();
    const BWPicturePlace main = m_scene.mainPlace(view.viewport()->size(), view.scrollPosition());
    m_scene.alignment.align(main, change(m_scene.alignment.follow(main)));
    layOut();
}

void BWLiveViewController::onZoom(BWDoubleButton *sender)
{
    sender->lastRight() ? zoomIn() : zoomOut();
}

void BWLiveViewController::zoomIn()
{
    zoom(&BWLiveViewState::zoomIn);
}

void BWLiveViewController::zoomOut()
{
    zoom(&BWLiveViewState::zoomOut);
}

void BWLiveViewController::zoomToActualSize()
{
    zoom([](BWLiveViewState &state) { state.setCurrentZoom(100); });
}

void BWLiveViewController::fitToWindow()
{
    if (m_state.fitsWindow()) {
        m_state.setCurrentZoom(100);
    } else {
        m_state.setFitsWindow(true);
        if (m_scene.hasReference())
            m_scene.alignment = {};
    }
    layOut();
}

/// What the bar and the menu say.
void BWLiveViewController::showState()
{
    m_window.controlBar().showZoom(m_state.zoomText());
    m_window.menu().fitToWindow->setChecked(m_state.fitsWindow());
    m_window.controlBar().showRotation(turnedState().currentRotation());
    m_window.controlBar().showFlip(static_cast<int>(turnedState().currentFlip()));
}

/// That turning and mirroring apply to.
BWLiveViewState &BWLiveViewController::turnedState()
{
    return m_scene.hasReference() && !m_linked ? m_referenceState : m_state;
}

void BWLiveViewController::onRotate(const QString &title)
{
    turnedState().setCurrentRotation(BWLiveViewState::rotationFromTitle(title));
    layOut();
}

void BWLiveViewController::rotateByQuarter()
{
    turnedState().setCurrentRotation((turnedState().currentRotation() + 90) % 360);
    layOut();
}

void BWLiveViewController::onFlip(int index)
{
    turnedState().setCurrentFlip(index);
    layOut();
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
    const int flip = static_cast<int>(turnedState().currentFlip()) ^ static_cast<int>(axis);
    onFlip(flip);
}
