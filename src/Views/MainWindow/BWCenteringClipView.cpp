// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWCenteringClipView.h"

#include "Model/LiveView/BWMeasuringGrid.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWTouchInput.h"
#include "Views/Utils/BWViewKeys.h"

#include <QAccessibleWidget>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QtMath>
#include <QWheelEvent>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double moment = 0.5; // seconds

/// A calm surround a little darker than the window, whatever the palette.
QColor surroundColor(const QPalette &palette)
{
    const QColor window = palette.color(QPalette::Window);
    return window.lightness() < 128 ? window.darker(125) : window.darker(108);
}

/// Where an arrow key points.
QPoint arrowOf(int key)
{
    const auto is = [key](Qt::Key arrow) { return int(key == arrow); };
    return {is(Qt::Key_Right) - is(Qt::Key_Left), is(Qt::Key_Down) - is(Qt::Key_Up)};
}

/// Qt's own accessible interface of scroll areas reads beyond its children when a screen reader asks for a scroll bar that
/// has just disappeared, as happens with every change of size.
QAccessibleInterface *accessibleView(const QString &className, QObject *object)
{
    if (className != QLatin1String(BWCenteringClipView::staticMetaObject.className()))
        return nullptr;
    return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::Graphic);
}

} // namespace

BWCenteringClipView::BWCenteringClipView(BWLiveRenderer &renderer, QWidget *parent)
    : QAbstractScrollArea(parent),
      m_live(renderer),
      m_touch(new BWTouchInput(*viewport())),
      m_scrollBarSpacer(new QWidget(this))
{
    QAccessible::installFactory(&accessibleView); // installs it once, however often it is called
    setFrameShape(QFrame::NoFrame);
    setLayoutDirection(
        Qt::LeftToRight); // a picture is not read, and scroll bars and arrow keys move over it as it lies
    addScrollBarWidget(m_scrollBarSpacer, Qt::AlignTop);
    setTopInset(BWLiveViewGeometry::barHeight);

    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    horizontalScrollBar()->setSingleStep(20);
    verticalScrollBar()->setSingleStep(20);
    connect(m_touch, &BWTouchInput::touched, this, [this] {
        if (!clickCounts())
            m_touch->ignoreTap();
    });
    connect(m_touch, &BWTouchInput::panned, this, &BWCenteringClipView::panBy);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_touch, &BWTouchInput::held, this, &QWidget::customContextMenuRequested);
    connect(m_touch, &BWTouchInput::tapped, this, [this](QPointF at) {
        if (viewport()->childAt(at.toPoint()) || (m_leftButtonClicks && !m_leftButtonClicks()))
            return;
        Q_EMIT mousePressed();
        viewport()->unsetCursor(); // no button will be released
    });
    setSources(m_live);
    const auto stateChanged = [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive)
            m_programActive.invalidate();
        else if (!m_programActive.isValid())
            m_programActive.start();
    };
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, stateChanged);
    stateChanged(QGuiApplication::applicationState());
}

void BWCenteringClipView::setTopInset(int points)
{
    setViewportMargins(0, points, 0, 0);
    m_scrollBarSpacer->setFixedSize(1, points);
}

void BWCenteringClipView::setSources(BWLiveRenderer &main, BWLiveRenderer *reference)
{
    const auto use = [this](Pane &pane, BWLiveRenderer *renderer) {
        if (pane.renderer == renderer)
            return;
        if (pane.renderer)
            pane.renderer->disconnect(this);
        pane.renderer = renderer;
        pane.isNew = false;
        if (!renderer) {
            pane = {};
            return;
        }
        // At once: an update would go round the event loop again.
        connect(renderer, &BWLiveRenderer::imageReady, this,
                [this, &pane] { viewport()->repaint(pane.rect.isEmpty() ? viewport()->rect() : pane.rect); });
        // A still must not pass for the live image of a camera that delivers nothing.
        if (renderer == &m_live && !pane.image.image.isNull())
            DispatchAfterStrict::dispatchForQueue(
                this,
                [this, &pane, last = pane.image.image.cacheKey()] {
                    if (pane.renderer != &m_live || pane.image.image.cacheKey() != last)
                        return;
                    pane.image = {}; // and not the new frame that is just being drawn
                    viewport()->update();
                },
                moment);
    };
    use(m_main, &main);
    use(m_reference, reference);
    tellSeen();
    updateRequest();
}

void BWCenteringClipView::setCovered(const QMargins &covered)
{
    if (std::exchange(m_covered, covered) != covered)
        Q_EMIT uncoveredChanged();
}

/// What lies outside of the scene is not drawn. When the live image comes back, only a new picture is shown.
void BWCenteringClipView::tellSeen()
{
    const bool showsLive = paneOf(m_live) != nullptr;
    m_live.setSeen(m_isSeen && showsLive);
    if (!showsLive)
        m_live.clear();
    for (const Pane *pane : {&m_main, &m_reference}) {
        if (pane->renderer && pane->renderer != &m_live)
            pane->renderer->setSeen(m_isSeen);
    }
}

BWCenteringClipView::Pane *BWCenteringClipView::paneOf(const BWLiveRenderer &renderer)
{
    for (Pane *pane : {&m_main, &m_reference}) {
        if (pane->renderer == &renderer)
            return pane;
    }
    return nullptr;
}

void BWCenteringClipView::setScene(const BWScene &scene, std::optional<QPointF> anchor)
{
    const QSize before = m_scene.mainArea(viewport()->size()).size();
    const QPointF at = anchor.value_or(QRectF({}, before).center());
    const QPointF share = m_scene.mainPicture.shareAt(at, before, scrollPosition());
    m_scene = scene;
    updateScrollBars();
    const QSize now = m_scene.mainArea(viewport()->size()).size();
    scrollTo(m_scene.mainPicture.scrollFor(share, anchor.value_or(QRectF({}, now).center()), now));
    updateRequest();
    viewport()->update();
}

void BWCenteringClipView::setGridDistance(double distance)
{
    if (distance == m_gridDistance)
        return;
    m_gridDistance = distance;
    viewport()->update();
}

void BWCenteringClipView::showCameraCursor()
{
    constexpr int size = 32;
    const QPixmap picture =
        BWIcons::image(u"camera_cursor.png"_s).pixmap(QSize(size, size), window()->devicePixelRatioF());
    viewport()->setCursor(QCursor(picture, 0, 0));
}

void BWCenteringClipView::clear(BWLiveRenderer &renderer)
{
    renderer.clear();
    if (Pane *pane = paneOf(renderer)) {
        *pane = {};
        pane->renderer = &renderer;
    }
    viewport()->update();
}

void BWCenteringClipView::setSeen(bool seen)
{
    if (std::exchange(m_isSeen, seen) == seen)
        return;
    tellSeen();
    if (const auto forgetting = std::exchange(m_forgetting, {}))
        forgetting->cancel();
    if (!seen)
        m_forgetting = DispatchAfterStrict::dispatchForQueue(
            this, [this] { clear(m_live); }, moment);
}

QPoint BWCenteringClipView::scrollPosition() const
{
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

std::optional<QTransform> BWCenteringClipView::pictureToViewport() const
{
    if (m_main.image.image.isNull())
        return std::nullopt;
    // Images are drawn on whole pixels of the screen, where the view itself need not begin.
    const double ratio = devicePixelRatioF();
    const QPointF begin = QPointF(viewport()->mapTo(window(), QPoint())) * ratio;
    const QPointF corner = m_scene.mainArea(viewport()->size()).topLeft() + (begin.toPoint() - begin) / ratio;
    return m_main.image.request.pictureToViewport() * QTransform::fromTranslate(corner.x(), corner.y());
}

void BWCenteringClipView::updateScrollBars()
{
    const QSize size = m_scene.mainArea(viewport()->size()).size();
    const QSize range = m_scene.mainPicture.scrollRange(size);
    // A few lines of the picture need no scroll bar; the wheel reaches them anyway.
    constexpr int barelyLarger = 32;
    const auto policy = [](int surplus) {
        return surplus > barelyLarger ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff;
    };
    setHorizontalScrollBarPolicy(policy(range.width()));
    setVerticalScrollBarPolicy(policy(range.height()));
    horizontalScrollBar()->setPageStep(size.width());
    horizontalScrollBar()->setRange(0, range.width());
    verticalScrollBar()->setPageStep(size.height());
    verticalScrollBar()->setRange(0, range.height());
}

void BWCenteringClipView::updateRequest()
{
    const QSize size = viewport()->size();
    const double ratio = devicePixelRatioF();
    m_main.renderer->setRequest(m_scene.mainRequest(size, scrollPosition(), ratio));
    if (!m_reference.renderer || !m_scene.hasReference())
        return;
    const BWRenderRequest request = m_scene.referenceRequest(size, scrollPosition(), ratio);
    if (request.visible.isEmpty()) // no image will come that says so
        m_reference.image = {};
    m_reference.renderer->setRequest(request);
}

QRect BWCenteringClipView::clipOf(const Pane &pane) const
{
    const QSize size = viewport()->size();
    return &pane == &m_main ? m_scene.mainClip(size) : m_scene.referenceClip(size);
}

/// In device pixels of the viewport.
QRect BWCenteringClipView::deviceRectOf(const Pane &pane) const
{
    const QSize size = viewport()->size();
    const QRect area = &pane == &m_main ? m_scene.mainArea(size) : m_scene.referenceArea(size);
    const QPoint corner = (QPointF(area.topLeft()) * devicePixelRatioF()).toPoint();
    return {pane.image.position + corner, pane.image.image.size()};
}

/// The surround does not change from one picture to the next.
bool BWCenteringClipView::refresh(Pane &pane)
{
    if (!pane.renderer)
        return false;
    pane.isNew = pane.renderer->takeImage(pane.image) || pane.isNew;
    const double ratio = devicePixelRatioF();
    const QRect device = deviceRectOf(pane);
    const QRect rect =
        QRectF(QPointF(device.topLeft()) / ratio, QSizeF(device.size()) / ratio).toAlignedRect() & clipOf(pane);
    return std::exchange(pane.rect, rect) != rect;
}

/// The points of which nothing else can be seen.
QRect BWCenteringClipView::coveredBy(const Pane &pane) const
{
    const double ratio = devicePixelRatioF();
    const QRect device = deviceRectOf(pane);
    const QPoint first(qCeil(device.left() / ratio), qCeil(device.top() / ratio));
    const QPoint behind(qFloor((device.right() + 1) / ratio), qFloor((device.bottom() + 1) / ratio));
    return QRect(first, behind - QPoint(1, 1)) & clipOf(pane);
}

void BWCenteringClipView::paintEvent(QPaintEvent *event)
{
    const bool mainMoved = refresh(m_main);
    const bool moved = refresh(m_reference) || mainMoved;
    const QRect whole = viewport()->rect();
    if (moved && !QRegion(whole).subtracted(event->region()).isEmpty())
        viewport()->update();
    QPainter painter(viewport());
    if (const QRect covered = coveredBy(m_main); !covered.contains(event->rect())) {
        for (const QRect &rect : event->region().subtracted(covered))
            painter.fillRect(rect, surroundColor(palette()));
    }
    drawPane(painter, m_main);
    if (m_scene.hasReference()) {
        painter.setOpacity(m_scene.referenceOpacity());
        drawPane(painter, m_reference);
        painter.setOpacity(1);
    }
    drawGrid(painter);
    if (!m_painted && !m_main.image.image.isNull()) {
        m_painted = true;
        Q_EMIT firstPicturePainted();
    }
}

/// In device pixels, so that the image is copied unscaled on any screen.
void BWCenteringClipView::drawPane(QPainter &painter, const Pane &pane) const
{
    const double ratio = devicePixelRatioF();
    painter.save();
    if (m_scene.hasReference())
        painter.setClipRect(clipOf(pane));
    painter.scale(1 / ratio, 1 / ratio);
    painter.drawImage(deviceRectOf(pane).topLeft(), pane.image.image);
    painter.restore();
}

void BWCenteringClipView::windowFlushed()
{
    for (Pane *pane : {&m_main, &m_reference}) {
        if (std::exchange(pane->isNew, false))
            pane->renderer->imageShown(pane->image);
    }
}

/// Drawn for the picture that shows, which follows a change of the layout a little later. On a picture of another size
/// the distance would be wrong.
void BWCenteringClipView::drawGrid(QPainter &painter) const
{
    const BWRenderRequest &request = m_main.image.request;
    if (!m_mainIsOfCamera || m_main.image.image.isNull() || request.picture() != m_scene.mainPicture.imageSize())
        return;
    const QList<QRect> lines = BWMeasuringGrid(request.frameSize, m_gridDistance).pixels(request);
    if (lines.isEmpty())
        return;
    painter.save();
    if (m_scene.hasReference())
        painter.setClipRect(clipOf(m_main));
    const double ratio = devicePixelRatioF();
    painter.scale(1 / ratio, 1 / ratio);
    for (const QRect &line : lines)
        painter.fillRect(line, Qt::red);
    painter.restore();
}

void BWCenteringClipView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
    updateRequest();
    Q_EMIT uncoveredChanged();
}

void BWCenteringClipView::scrollContentsBy(int, int)
{
    updateRequest();
}

void BWCenteringClipView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        pressLeftButton(event);
    else if (event->button() == Qt::MiddleButton)
        beginPanning(event);
}

/// Window managers pass on the click that brings a program to the front, just before or after it is there.
bool BWCenteringClipView::clickCounts() const
{
    constexpr int justBroughtToFront = 200; // ms
    return m_programActive.isValid() && m_programActive.elapsed() >= justBroughtToFront;
}

void BWCenteringClipView::pressLeftButton(QMouseEvent *event)
{
    if (!clickCounts())
        return;
    if (!m_leftButtonClicks || m_leftButtonClicks())
        Q_EMIT mousePressed();
    else
        beginPanning(event);
}

void BWCenteringClipView::beginPanning(QMouseEvent *event)
{
    m_panButton = event->button();
    m_panStart = m_panAt = event->pos();
    m_panScroll = scrollPosition();
    viewport()->setCursor(Qt::ClosedHandCursor);
}

/// The second press of a double click is a press like any other: two quick presses ask for two pictures.
void BWCenteringClipView::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event);
}

void BWCenteringClipView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_panButton == Qt::NoButton)
        return;
    const QPoint step = event->pos() - std::exchange(m_panAt, event->pos());
    if (m_movesReference)
        Q_EMIT referenceDragged(step);
    else // by the whole way, so that the picture stays under the pointer that comes back from beyond its end
        scrollTo(m_panScroll - (event->pos() - m_panStart));
}

void BWCenteringClipView::scrollTo(QPoint position)
{
    horizontalScrollBar()->setValue(position.x());
    verticalScrollBar()->setValue(position.y());
}

void BWCenteringClipView::panBy(QPoint distance)
{
    if (m_movesReference)
        Q_EMIT referenceDragged(distance);
    else
        scrollTo(scrollPosition() - distance);
}

void BWCenteringClipView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == m_panButton)
        m_panButton = Qt::NoButton;
    if (m_panButton == Qt::NoButton)
        viewport()->unsetCursor();
}

void BWCenteringClipView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        m_wheel += event->angleDelta().y();
        constexpr int notch = 120; // eighths of a degree, as mouse wheels have them
        for (; m_wheel >= notch; m_wheel -= notch)
            Q_EMIT zoomRequested(true, event->position());
        for (; m_wheel <= -notch; m_wheel += notch)
            Q_EMIT zoomRequested(false, event->position());
        event->accept();
        return;
    }
    if (m_movesReference) {
        panBy(event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta());
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void BWCenteringClipView::keyPressEvent(QKeyEvent *event)
{
    const QPoint arrow = arrowOf(event->key());
    constexpr int wide = 10; // points, with Shift
    if (event->key() == BWViewKeys::snapshot && !event->isAutoRepeat())
        Q_EMIT spacePressed();
    else if (m_movesReference && !arrow.isNull())
        panBy(arrow * (event->modifiers() & Qt::ShiftModifier ? wide : 1));
    else if (arrow.x() == 0 || event->modifiers() & Qt::ShiftModifier || !m_step
             || !m_step((arrow.x() > 0) != QGuiApplication::isRightToLeft()))
        QAbstractScrollArea::keyPressEvent(event);
}

bool BWCenteringClipView::event(QEvent *event)
{
    // The window may move to a screen of another scale.
    if (event->type() == QEvent::ScreenChangeInternal || event->type() == QEvent::Show)
        updateRequest();
    return QAbstractScrollArea::event(event);
}
