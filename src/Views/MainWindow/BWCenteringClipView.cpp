#include "Views/MainWindow/BWCenteringClipView.h"

#include "Model/LiveView/BWMeasuringGrid.h"
#include "Views/Utils/BWIcons.h"

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

/// A calm surround a little darker than the window, whatever the palette.
QColor surroundColor(const QPalette &palette)
{
    const QColor window = palette.color(QPalette::Window);
    return window.lightness() < 128 ? window.darker(125) : window.darker(108);
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
    : QAbstractScrollArea(parent), m_renderer(renderer)
{
    QAccessible::installFactory(&accessibleView); // installs it once, however often it is called
    setFrameShape(QFrame::NoFrame);
    setViewportMargins(0, BWLiveViewGeometry::barHeight, 0, 0);
    // Keeps the vertical scroll bar from beginning under the control bar.
    auto *spacer = new QWidget(this);
    spacer->setFixedSize(1, BWLiveViewGeometry::barHeight);
    addScrollBarWidget(spacer, Qt::AlignTop);

    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    horizontalScrollBar()->setSingleStep(20);
    verticalScrollBar()->setSingleStep(20);
    // At once: an update would go round the event loop again.
    connect(&m_renderer, &BWLiveRenderer::imageReady, this, [this] { viewport()->repaint(changingRect()); });
    const auto stateChanged = [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive)
            m_programActive.invalidate();
        else if (!m_programActive.isValid())
            m_programActive.start();
    };
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, stateChanged);
    stateChanged(QGuiApplication::applicationState());
}

void BWCenteringClipView::setLiveGeometry(const BWLiveViewGeometry &geometry)
{
    const QPointF middle = m_geometry.middle(viewport()->size(), scrollPosition());
    m_geometry = geometry;
    updateScrollBars();
    const QPoint scroll = m_geometry.scrollForMiddle(middle, viewport()->size());
    horizontalScrollBar()->setValue(scroll.x());
    verticalScrollBar()->setValue(scroll.y());
    updateRequest();
    viewport()->update();
}

void BWCenteringClipView::setGridDistance(double distance)
{
    if (distance == m_gridDistance)
        return;
    m_gridDistance = distance;
    viewport()->update(changingRect());
}

void BWCenteringClipView::showCameraCursor()
{
    constexpr int size = 32;
    const QPixmap picture =
        BWIcons::image(u"camera_cursor.png"_s).pixmap(QSize(size, size), window()->devicePixelRatioF());
    viewport()->setCursor(QCursor(picture, 0, 0));
}

void BWCenteringClipView::clear()
{
    m_renderer.clear();
    m_image = {};
    m_isNew = false;
    m_pictureRect = {};
    viewport()->update();
}

void BWCenteringClipView::setSeen(bool seen)
{
    constexpr double moment = 0.5; // seconds
    if (std::exchange(m_isSeen, seen) == seen)
        return;
    m_renderer.setSeen(seen);
    if (const auto forgetting = std::exchange(m_forgetting, {}))
        forgetting->cancel();
    if (!seen)
        m_forgetting = DispatchAfterStrict::dispatchForQueue(
            this, [this] { clear(); }, moment);
}

QPoint BWCenteringClipView::scrollPosition() const
{
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

void BWCenteringClipView::updateScrollBars()
{
    const QSize size = viewport()->size();
    const QSize range = m_geometry.scrollRange(size);
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
    m_renderer.setRequest(BWRenderRequest(m_geometry, viewport()->size(), scrollPosition(), devicePixelRatioF()));
}

/// The surround does not change from one picture to the next.
QRect BWCenteringClipView::changingRect() const
{
    return m_pictureRect.isEmpty() ? viewport()->rect() : m_pictureRect;
}

void BWCenteringClipView::paintEvent(QPaintEvent *event)
{
    m_isNew = m_renderer.takeImage(m_image) || m_isNew;
    QPainter painter(viewport());
    const double ratio = devicePixelRatioF();
    const QRect whole = viewport()->rect();
    if (m_image.image.isNull()) {
        painter.fillRect(whole, surroundColor(palette()));
        return;
    }
    const QRect device(m_image.position, m_image.image.size());
    const QRect picture =
        QRectF(QPointF(device.topLeft()) / ratio, QSizeF(device.size()) / ratio).toAlignedRect() & whole;
    if (picture != m_pictureRect) {
        m_pictureRect = picture;
        if (!QRegion(whole).subtracted(event->region()).isEmpty())
            viewport()->update();
    }
    const QPoint first(qCeil(device.left() / ratio), qCeil(device.top() / ratio));
    const QPoint behind(qFloor((device.right() + 1) / ratio), qFloor((device.bottom() + 1) / ratio));
    const QRect covered(first, behind - QPoint(1, 1));
    if (!covered.contains(event->rect())) {
        for (const QRect &rect : event->region().subtracted(covered))
            painter.fillRect(rect, surroundColor(palette()));
    }
    // In device pixels, so that the image is copied unscaled on any screen.
    painter.scale(1 / ratio, 1 / ratio);
    painter.drawImage(device.topLeft(), m_image.image);
    drawGrid(painter);
    if (!m_painted) {
        m_painted = true;
        Q_EMIT firstPicturePainted();
    }
}

void BWCenteringClipView::windowFlushed()
{
    if (std::exchange(m_isNew, false))
        m_renderer.imageShown(m_image);
}

/// Drawn for the picture that shows, which follows a change of the layout a little later. On a picture of another size
/// the distance would be wrong.
void BWCenteringClipView::drawGrid(QPainter &painter) const
{
    if (m_image.request.picture() != m_geometry.imageSize())
        return;
    const QList<QRect> lines = BWMeasuringGrid(m_image.request.frameSize, m_gridDistance).pixels(m_image.request);
    for (const QRect &line : lines)
        painter.fillRect(line, Qt::red);
}

void BWCenteringClipView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
    updateRequest();
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

void BWCenteringClipView::pressLeftButton(QMouseEvent *event)
{
    // Window managers pass on the click that brings a program to the front, just before or after it is there.
    constexpr int justBroughtToFront = 200; // ms
    if (!m_programActive.isValid() || m_programActive.elapsed() < justBroughtToFront)
        return;
    if (!m_leftButtonClicks || m_leftButtonClicks())
        Q_EMIT mousePressed();
    else
        beginPanning(event);
}

void BWCenteringClipView::beginPanning(QMouseEvent *event)
{
    m_panButton = event->button();
    m_panStart = event->pos();
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
    const QPoint scroll = m_panScroll - (event->pos() - m_panStart);
    horizontalScrollBar()->setValue(scroll.x());
    verticalScrollBar()->setValue(scroll.y());
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
            Q_EMIT zoomRequested(true);
        for (; m_wheel <= -notch; m_wheel += notch)
            Q_EMIT zoomRequested(false);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void BWCenteringClipView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        Q_EMIT spacePressed();
    else
        QAbstractScrollArea::keyPressEvent(event);
}

bool BWCenteringClipView::event(QEvent *event)
{
    // The window may move to a screen of another scale.
    if (event->type() == QEvent::ScreenChangeInternal || event->type() == QEvent::Show)
        updateRequest();
    return QAbstractScrollArea::event(event);
}
