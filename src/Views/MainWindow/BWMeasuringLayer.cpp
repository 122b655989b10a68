// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWMeasuringLayer.h"

#include "Model/Measuring/BWMeasurementPainter.h"
#include "Model/Measuring/BWMeasuringTool.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWPictureFocus.h"
#include "Views/MainWindow/BWRemarkField.h"
#include "Views/Utils/BWTouchInput.h"
#include "Views/Utils/BWViewKeys.h"

#include <algorithm>
#include <cmath>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyleHints>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double grabReach = 10; // points
constexpr double fingerReach = BWTouchInput::fingerWidth / 2.0;

bool isWhole(QPointF point)
{
    return point == QPointF(point.toPoint());
}

} // namespace

BWMeasuringLayer::BWMeasuringLayer(BWCenteringClipView &view)
    : QWidget(view.viewport()), m_view(view), m_magnifier(view)
{
    setObjectName(u"measuring"_s);
    lower(); // other things that lie over the picture come first
    setGeometry(view.viewport()->rect());
    setMouseTracking(true);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    view.viewport()->installEventFilter(this);
    connect(&view, &BWCenteringClipView::uncoveredChanged, this, [this] {
        if (m_scaleBar)
            update();
    });
    BWTouchInput &touch = view.touchInput();
    connect(&touch, &BWTouchInput::touched, this, &BWMeasuringLayer::fingerLaid);
    connect(&touch, &BWTouchInput::pointed, this, &BWMeasuringLayer::fingerPointsTo);
    connect(&touch, &BWTouchInput::tapped, this, &BWMeasuringLayer::fingerTapped);
    connect(&touch, &BWTouchInput::pointingEnded, this, &BWMeasuringLayer::fingerEnds);
    connect(&m_magnifier, &BWMagnifier::imageReady, this, qOverload<>(&QWidget::update));
    new BWPictureFocus(view, *this);
    hide();
}

void BWMeasuringLayer::showMeasurements(const QList<BWMeasurement> &measurements, BWMeasuringTool &tool,
                                        const BWPictureScale &scale)
{
    m_tool = &tool;
    m_resting = measurements;
    m_selected = {};
    if (const auto selection = m_active ? tool.selection() : std::nullopt) {
        m_selected = measurements[selection->measurement];
        // It may be moved at every step of the pointer, with many others around it that are not drawn anew.
        if (!m_drawn.shows(selection->measurement, m_selected))
            m_resting[selection->measurement] = {};
    }
    m_scale = scale;
    if (m_text && !tool.awaitsText())
        answerText(false);
    else if (!m_text && m_active && tool.awaitsText())
        askForText();
    setVisible(m_active || m_scaleBar || !measurements.isEmpty());
    updateCursor();
    update();
}

void BWMeasuringLayer::setActive(bool active)
{
    if (std::exchange(m_active, active) == active)
        return;
    setAttribute(Qt::WA_TransparentForMouseEvents, !active);
    setFocusPolicy(active ? Qt::StrongFocus : Qt::NoFocus);
    m_usesKeys = m_pointerIsOver = m_pointerIsAside = false;
    m_pressed.reset();
    if (!active) {
        m_magnifier.stop();
        if (hasFocus() || isAncestorOf(focusWidget()))
            m_view.setFocus();
    }
}

void BWMeasuringLayer::setScaleBar(bool shown)
{
    m_scaleBar = shown;
}

void BWMeasuringLayer::setTextLabel(const QString &label)
{
    m_textLabel = label;
}

std::optional<QTransform> BWMeasuringLayer::toWidget() const
{
    return m_tool ? m_view.pictureToViewport() : std::nullopt;
}

/// Where the main picture shows, and not the one that it is compared with.
QRect BWMeasuringLayer::mainClip() const
{
    return m_view.scene().mainClip(size());
}

bool BWMeasuringLayer::isOverMain(QPointF position) const
{
    return !m_view.scene().hasReference() || QRectF(mainClip()).contains(position);
}

/// Where a screen has several pixels for a point, only the position in the window tells them apart.
QPointF BWMeasuringLayer::positionOf(const QMouseEvent &event) const
{
    const QPointF exact = mapFrom(window(), event.scenePosition());
    const QPointF off = exact - event.position();
    return std::max(std::abs(off.x()), std::abs(off.y())) <= 1 ? exact : event.position();
}

/// A pointer on whole pixels, as X11 has it, means the middle of one. What is dragged stays in the main picture's part.
QPointF BWMeasuringLayer::placeAt(QPointF position) const
{
    if (m_view.scene().hasReference()) {
        const QRectF clip = mainClip();
        position = {std::clamp(position.x(), clip.left(), std::max(clip.left(), clip.right() - 1)),
                    std::clamp(position.y(), clip.top(), std::max(clip.top(), clip.bottom() - 1))};
    }
    const double ratio = devicePixelRatioF();
    const QPointF half = QPointF(0.5, 0.5) / ratio;
    return toWidget()->inverted().map(isWhole(mapTo(window(), position) * ratio) ? position + half : position);
}

double BWMeasuringLayer::reach(double points) const
{
    const QTransform all = *toWidget();
    const QPointF width = all.map(QPointF(1, 0)) - all.map(QPointF());
    return points / std::max(1.0, std::hypot(width.x(), width.y()));
}

/// Whether the exact place matters now.
bool BWMeasuringLayer::isPlacing() const
{
    const bool begins = !m_tool->kind().isEmpty() && (m_pointerIsOver || (m_usesKeys && hasFocus()));
    const bool moves = m_tool->isMoving() || (m_usesKeys && hasFocus() && m_tool->selection());
    return m_active && !m_text && (begins || moves);
}

void BWMeasuringLayer::paintEvent(QPaintEvent *event)
{
    const auto all = toWidget();
    if (!all)
        return;
    const QPoint corner = mapToGlobal(QPoint());
    const QTransform toScreen = *all * QTransform::fromTranslate(corner.x(), corner.y());
    if (std::exchange(m_paintedAt, toScreen) != toScreen)
        QMetaObject::invokeMethod(this, &BWMeasuringLayer::followPointer, Qt::QueuedConnection);
    const QFont font = BWDrawnMeasurements::labelFont(this->font());
    constexpr int statusLine = 32; // which lies over the lower edge
    const QRect clip = mainClip();
    const QRect scaleBarIn = m_scaleBar ? (clip & m_view.uncovered()).adjusted(0, 0, 0, -statusLine) : QRect();
    const double ratio = devicePixelRatioF();
    const QPointF begin = QPointF(mapTo(window(), QPoint())) * ratio;
    m_drawn.set(m_resting,
                {*all, size(), ratio, (begin - begin.toPoint()) / ratio, m_scale, m_active && m_tool->kind().isEmpty(),
                 scaleBarIn, font, locale()});
    QPainter painter(this);
    painter.setClipRect(clip, Qt::IntersectClip);
    m_drawn.paint(painter, event->region());
    if (!m_active)
        return;
    const BWMeasurementPainter draw(painter, *all, 1, font, locale());
    draw.draw(m_selected, m_scale, true);
    if (const BWMeasurement unfinished = m_tool->unfinished(); !unfinished.points.isEmpty())
        draw.draw(unfinished, m_scale, true);
    if (m_tool->selection() || (m_usesKeys && hasFocus()))
        draw.drawCursor(m_tool->cursor());
    if (isPlacing())
        m_magnifier.draw(painter, m_tool->cursor(), magnifierPlace(all->map(m_tool->cursor())).topLeft());
    else
        m_magnifier.stop();
}

/// The picture has moved below a pointer that rests, as when the window becomes full screen.
void BWMeasuringLayer::followPointer()
{
    if (!m_active || !m_pointerIsOver || m_usesKeys || m_text || !toWidget())
        return;
    const QPointF position = mapFromGlobal(m_pointer);
    m_pointerIsOver = QRectF(rect()).contains(position) && isOverMain(position);
    if (m_pointerIsOver)
        m_tool->move(placeAt(position), QGuiApplication::keyboardModifiers() & Qt::ShiftModifier);
    Q_EMIT editing();
}

/// Beside the pointer, and so never under it.
QRect BWMeasuringLayer::magnifierPlace(QPointF at) const
{
    const int away = m_view.touchInput().isPointing() ? 52 : 28; // a finger hides more
    constexpr int size = BWMagnifier::size;
    const QPoint point = at.toPoint();
    const QRect room = mainClip();
    int left = point.x() + away;
    if (left + size > room.x() + room.width())
        left = point.x() - away - size;
    int top = point.y() - away - size;
    if (top < 0)
        top = point.y() + away;
    return {std::max(left, room.x()), std::clamp(top, 0, std::max(0, height() - size)), size, size};
}

void BWMeasuringLayer::mousePressEvent(QMouseEvent *event)
{
    event->setAccepted(event->button() == Qt::LeftButton);
    if (!event->isAccepted() || !toWidget())
        return;
    m_lastPress = event->position();
    setFocus(Qt::MouseFocusReason); // which answers an open question for a text
    if (!isOverMain(event->position()))
        return;
    m_usesKeys = false;
    m_tool->press(placeAt(positionOf(*event)), reach(m_isFinger ? fingerReach : grabReach),
                  event->modifiers() & Qt::ShiftModifier);
    if (m_tool->unfinished().points.size() == 2) // the first point and the one to come
        m_pressed = event->position();
    Q_EMIT edited();
}

/// A double click completes what may have any number of points; the first of its presses has set the last one.
void BWMeasuringLayer::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->setAccepted(event->button() == Qt::LeftButton);
    if (!event->isAccepted() || !toWidget() || !isOverMain(event->position()))
        return;
    // Newer versions of Qt grant a pen as much room for the second press as a finger, which is 100 points.
    const QPointF off = event->position() - m_lastPress;
    if (event->pointerType() == QPointingDevice::PointerType::Pen
        && std::max(std::abs(off.x()), std::abs(off.y())) > QGuiApplication::styleHints()->mouseDoubleClickDistance()) {
        mousePressEvent(event);
        return;
    }
    m_tool->finish();
    Q_EMIT edited();
}

void BWMeasuringLayer::mouseMoveEvent(QMouseEvent *event)
{
    event->setAccepted(!(event->buttons() & Qt::MiddleButton)); // which moves the picture
    if (!m_active || !toWidget() || m_text)
        return;
    m_pointer = mapToGlobal(positionOf(*event));
    m_usesKeys = false;
    m_pointerIsAside = !isOverMain(event->position()) && !(event->buttons() & Qt::LeftButton);
    if (m_pointerIsAside) {
        leave();
        return;
    }
    m_pointerIsOver = true;
    m_tool->move(placeAt(positionOf(*event)), event->modifiers() & Qt::ShiftModifier);
    updateCursor();
    Q_EMIT editing();
}

/// Two points can also be set by pressing at one and letting go at the other.
void BWMeasuringLayer::mouseReleaseEvent(QMouseEvent *event)
{
    event->setAccepted(event->button() == Qt::LeftButton);
    if (!event->isAccepted() || !m_tool)
        return;
    const auto pressed = std::exchange(m_pressed, std::nullopt);
    const auto *kind = BWMeasurementKind::find(m_tool->kind());
    const bool wasDragged = pressed
        && (event->position() - *pressed).manhattanLength() > QGuiApplication::styleHints()->startDragDistance();
    if (wasDragged && kind && kind->mostPoints == 2 && m_tool->unfinished().points.size() == 2 && toWidget())
        m_tool->press(placeAt(positionOf(*event)), reach(m_isFinger ? fingerReach : grabReach),
                      event->modifiers() & Qt::ShiftModifier);
    m_tool->release();
    Q_EMIT edited();
}

/// A finger alone points: where the next point comes, or at one that it moves. Elsewhere it moves the picture.
void BWMeasuringLayer::fingerLaid(QPoint at)
{
    m_takesFinger = m_active && toWidget() && m_view.viewport()->childAt(at) == this;
    m_fingerFrom.reset();
    if (!m_takesFinger)
        return;
    const bool points =
        isOverMain(at) && (!m_tool->kind().isEmpty() || m_tool->hasPointAt(placeAt(at), reach(fingerReach)));
    m_view.touchInput().setFinger(points ? BWTouchInput::Finger::Points : BWTouchInput::Finger::Moves);
}

/// Nothing is set before the finger is lifted, as another one may come and pinch.
void BWMeasuringLayer::fingerPointsTo(QPointF at)
{
    const bool picks = m_tool->kind().isEmpty();
    if (!m_fingerFrom)
        m_fingerFrom = at;
    if (picks && m_view.touchInput().isTap())
        return;
    if (picks && !m_tool->isMoving())
        sendMouse(QEvent::MouseButtonPress, *m_fingerFrom, Qt::LeftButton);
    sendMouse(QEvent::MouseMove, at, picks ? Qt::LeftButton : Qt::NoButton);
}

void BWMeasuringLayer::fingerTapped(QPointF at, int count)
{
    if (!m_takesFinger || !m_active)
        return;
    if (count == 2)
        sendMouse(QEvent::MouseButtonDblClick, at, Qt::LeftButton);
    else if (!m_tool->isMoving())
        sendMouse(QEvent::MouseButtonPress, at, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
    leave();
}

void BWMeasuringLayer::fingerEnds()
{
    if (m_tool && m_tool->isMoving()) {
        m_tool->cancel();
        m_tool->release();
        Q_EMIT edited();
    }
    leave();
}

void BWMeasuringLayer::sendMouse(QEvent::Type type, QPointF at, Qt::MouseButtons buttons)
{
    const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, mapTo(window(), at), mapToGlobal(at), button, buttons,
                      QGuiApplication::keyboardModifiers());
    const QScopedValueRollback byFinger(m_isFinger,
                                        true); // an event of the screen's own device would disturb its touches
    QCoreApplication::sendEvent(this, &event);
}

void BWMeasuringLayer::keyPressEvent(QKeyEvent *event)
{
    if (!m_active || !toWidget() || !handleKey(*event)) {
        event->ignore();
        return;
    }
    Q_EMIT edited();
}

bool BWMeasuringLayer::handleKey(const QKeyEvent &event)
{
    const auto is = [&event](Qt::Key key) { return int(event.key() == key); };
    const QPoint arrow(is(Qt::Key_Right) - is(Qt::Key_Left), is(Qt::Key_Down) - is(Qt::Key_Up));
    const auto *kind = BWMeasurementKind::find(m_tool->kind());
    constexpr int wideStep = 10; // pixels of the picture
    if (!arrow.isNull()) {
        m_usesKeys = true;
        m_tool->nudge(inPicture(arrow) * (event.modifiers() & Qt::ShiftModifier ? wideStep : 1));
        bringIntoView();
        return true;
    }
    switch (event.key()) {
    case BWViewKeys::complete:
    case Qt::Key_Enter:
        if (kind && kind->mostPoints == BWMeasurementKind::anyNumber && !m_tool->unfinished().points.isEmpty()) {
            m_tool->finish();
            return true;
        }
        [[fallthrough]];
    case BWViewKeys::placePoint:
        m_usesKeys = true;
        if (!event.isAutoRepeat()) {
            m_tool->place(event.modifiers() & Qt::ShiftModifier);
            m_tool->release();
        }
        return true;
    case BWViewKeys::giveUp:
        if (m_tool->cancel())
            return true;
        Q_EMIT escaped();
        return true;
    default:
        return false;
    }
}

/// The direction in the picture, as the camera delivers it, that this one is on the screen.
QPoint BWMeasuringLayer::inPicture(QPoint direction) const
{
    const QTransform back = toWidget()->inverted();
    const QPointF way = back.map(QPointF(direction)) - back.map(QPointF());
    const double length = std::max(std::abs(way.x()), std::abs(way.y()));
    return (way / length).toPoint();
}

void BWMeasuringLayer::bringIntoView()
{
    constexpr int margin = 20; // points
    const QRect area = mainClip().adjusted(margin, margin, -margin, -margin);
    const QPoint at = toWidget()->map(m_tool->cursor()).toPoint();
    const QPoint nearest(std::clamp(at.x(), area.left(), std::max(area.left(), area.right())),
                         std::clamp(at.y(), area.top(), std::max(area.top(), area.bottom())));
    m_view.horizontalScrollBar()->setValue(m_view.horizontalScrollBar()->value() + (at - nearest).x());
    m_view.verticalScrollBar()->setValue(m_view.verticalScrollBar()->value() + (at - nearest).y());
}

/// Tab walks from point to point, and behind the last one leaves.
bool BWMeasuringLayer::focusNextPrevChild(bool next)
{
    if (!m_active || !toWidget() || !hasFocus())
        return QWidget::focusNextPrevChild(next);
    m_tool->selectNext(next);
    m_usesKeys = true;
    if (m_tool->selection())
        bringIntoView();
    Q_EMIT edited();
    return m_tool->selection() || QWidget::focusNextPrevChild(next);
}

void BWMeasuringLayer::updateCursor()
{
    const bool measures = m_tool && m_active && !m_pointerIsAside;
    if (measures && !m_tool->kind().isEmpty())
        setCursor(Qt::CrossCursor);
    else if (measures && toWidget() && m_tool->hasPointAt(m_tool->cursor(), reach(grabReach)))
        setCursor(m_tool->isMoving() ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else
        unsetCursor();
}

void BWMeasuringLayer::askForText()
{
    m_text = new BWRemarkField(m_textLabel, this);
    m_text->placeBeside(textPlace(), mainClip());
    connect(m_text, &BWRemarkField::answered, this, &BWMeasuringLayer::answerText);
    m_text->show();
    m_text->setFocus();
}

QPoint BWMeasuringLayer::textPlace() const
{
    return toWidget() ? toWidget()->map(m_tool->unfinished().points.last()).toPoint() : rect().center();
}

void BWMeasuringLayer::answerText(bool accepted)
{
    BWRemarkField *field = std::exchange(m_text, nullptr);
    if (!field)
        return;
    field->disconnect(this);
    if (m_tool->awaitsText()) {
        if (accepted)
            m_tool->setText(field->text());
        else
            m_tool->cancel();
    }
    if (field->hasFocus())
        setFocus();
    field->hide();
    field->deleteLater();
    Q_EMIT edited();
}

bool BWMeasuringLayer::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view.viewport() && event->type() == QEvent::Resize) {
        setGeometry(m_view.viewport()->rect());
        if (m_text)
            m_text->placeBeside(textPlace(), mainClip());
    }
    return QWidget::eventFilter(watched, event);
}

void BWMeasuringLayer::leave()
{
    m_pointerIsOver = false;
    updateCursor();
    update();
}

void BWMeasuringLayer::leaveEvent(QEvent *)
{
    leave();
}

void BWMeasuringLayer::focusOutEvent(QFocusEvent *)
{
    update();
}

void BWMeasuringLayer::hideEvent(QHideEvent *)
{
    m_magnifier.stop();
    m_drawn.clear();
}
