// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWLiveViewController.h"

#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Products/BWProductInUse.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWDoubleButton.h"
#include "Views/Utils/BWTouchInput.h"

#include <algorithm>
#include <QAction>

namespace {

/// A picture may have many more or fewer pixels than the one that it is laid over.
void scaleFreely(BWLiveViewState &state, double scale)
{
    state.setScale(std::clamp(scale, 0.01, 10.0));
}

} // namespace

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
    connect(&view, &BWCenteringClipView::zoomRequested, this, &BWLiveViewController::zoomByStep);
    connect(&view.touchInput(), &BWTouchInput::pinched, this, [this](double factor, QPointF at) {
        zoom(
            [factor, freely = movesReference()](BWLiveViewState &state) {
                freely ? scaleFreely(state, state.scale() * factor) : state.scaleBy(factor);
            },
            at);
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

/// Without a live picture a reference stays where it was.
QSize BWLiveViewController::laidOutSize() const
{
    const QSize size = mainSize();
    if (!size.isEmpty() || !m_scene.hasReference())
        return size;
    const QSize last = m_scene.mainPicture.imageSize();
    return last.isEmpty() ? m_referenceSize : last;
}

void BWLiveViewController::layOut(std::optional<QPointF> anchor)
{
    BWCenteringClipView &view = m_window.centeringClipView();
    const QSize size = laidOutSize();
    m_state.adaptTo(size, m_scene.mainArea(view.largestViewport()).size());
    m_scene.mainPicture = BWLiveViewGeometry(size, m_state);
    m_scene.referencePicture = BWLiveViewGeometry(m_referenceSize, m_referenceState);
    view.setScene(m_scene, anchor);
    view.setMovesReference(movesReference());
    showState();
    Q_EMIT imageDisplayUpdated();
}

void BWLiveViewController::clear()
{
    m_window.centeringClipView().clear(m_live);
    if (m_still || m_scene.hasReference())
        return;
    m_scene.mainPicture = BWLiveViewGeometry({}, m_state); // nothing to scroll in
    m_window.centeringClipView().setScene(m_scene);
}

void BWLiveViewController::setStill(std::optional<QSize> size)
{
    m_still = size;
    layOut();
}

void BWLiveViewController::setReference(QSize size)
{
    if (!m_scene.hasReference()) {
        m_referenceState = m_state;
        m_scene.alignment = {};
        m_scene.mode = BWScene::Mode::SideBySide;
        m_linked = true;
    }
    m_referenceSize = size;
    layOut();
}

void BWLiveViewController::endReference()
{
    m_scene.mode = BWScene::Mode::Single;
    layOut();
}

void BWLiveViewController::setComparison(BWScene::Mode mode, double share)
{
    if (!m_scene.hasReference() || mode == BWScene::Mode::Single)
        return;
    m_scene.mode = mode;
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
    if (movesReference()) {
        const double now = referenceScale();
        m_referenceState.setScale(now);
        change(m_referenceState);
        const double factor = now > 0 ? m_referenceState.scale() / now : 1;
        const QPointF about = inside(m_scene.referenceArea(viewport));
        moveReference([&](const BWPicturePlace &place) { return place.scaledBy(factor, about); });
        return;
    }
    change(m_state);
    layOut(inside(m_scene.mode == BWScene::Mode::SideBySide && at && !m_scene.mainArea(viewport).contains(at->toPoint())
                      ? m_scene.referenceArea(viewport)
                      : m_scene.mainArea(viewport)));
}

/// How large it appears: one point for so many of its pixels.
double BWLiveViewController::referenceScale() const
{
    const BWPicturePlace place = m_scene.referencePlace(m_window.centeringClipView().viewport()->size(), {});
    return m_referenceSize.isEmpty() ? 0 : place.width / m_referenceSize.width();
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
    zoomByStep(true);
}

void BWLiveViewController::zoomOut()
{
    zoomByStep(false);
}

/// Two pictures are brought to the same size in steps of one percent.
void BWLiveViewController::zoomByStep(bool in, std::optional<QPointF> at)
{
    zoom(
        [in, fine = movesReference()](BWLiveViewState &state) {
            if (fine)
                scaleFreely(state, (state.currentZoom() + (in ? 1.0 : -1.0)) / 100);
            else
                in ? state.zoomIn() : state.zoomOut();
        },
        at);
}

void BWLiveViewController::zoomToActualSize()
{
    zoom([](BWLiveViewState &state) { state.setCurrentZoom(100); });
}

void BWLiveViewController::fitToWindow()
{
    if (movesReference()) {
        const QSizeF area = m_scene.referenceArea(m_window.centeringClipView().viewport()->size()).size();
        m_referenceState.setFitsWindow(true);
        m_referenceState.adaptTo(m_referenceSize, area.toSize());
        const BWPicturePlace whole{QRectF({}, area).center(), m_referenceSize.width() * m_referenceState.scale()};
        moveReference([whole](const BWPicturePlace &) { return whole; });
        return;
    }
    if (m_state.fitsWindow())
        m_state.setCurrentZoom(100);
    else
        m_state.setFitsWindow(true);
    layOut();
}

/// What the bar and the menu say.
void BWLiveViewController::showState()
{
    BWLiveViewState shown = turnedState();
    if (movesReference())
        shown.setScale(referenceScale());
    m_window.controlBar().showZoom(shown.zoomText());
    m_window.menu().fitToWindow->setChecked(shown.fitsWindow());
    m_window.controlBar().showRotation(shown.currentRotation());
    m_window.controlBar().showFlip(static_cast<int>(shown.currentFlip()));
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
