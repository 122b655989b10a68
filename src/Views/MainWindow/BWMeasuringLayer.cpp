#include "Views/MainWindow/BWMeasuringLayer.h"

#include "Model/Measuring/BWMeasurementPainter.h"
#include "Model/Measuring/BWMeasuringTool.h"
#include "Model/Measuring/BWScaleBar.h"
#include "Views/MainWindow/BWCenteringClipView.h"

#include <algorithm>
#include <cmath>
#include <QFontInfo>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleHints>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double grabReach = 10; // points
constexpr double scaleBarLength = 200; // points, at most

/// Tiles of the picture in which something is drawn.
QRegion drawnRegion(const QImage &image, double ratio)
{
    constexpr int tile = 32;
    QRegion region;
    for (int top = 0; top < image.height(); top += tile) {
        for (int left = 0; left < image.width(); left += tile) {
            const QRect rect = QRect(left, top, tile, tile) & image.rect();
            bool any = false;
            for (int y = rect.top(); y <= rect.bottom() && !any; ++y) {
                const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
                any = std::any_of(line + rect.left(), line + rect.right() + 1, [](QRgb pixel) { return pixel != 0; });
            }
            if (any)
                region += QRectF(QPointF(rect.topLeft()) / ratio, QSizeF(rect.size()) / ratio).toAlignedRect();
        }
    }
    return region;
}

QFont labelFont(const QFont &base)
{
    QFont font = base;
    font.setPixelSize(QFontInfo(base).pixelSize() + 1);
    font.setWeight(QFont::DemiBold);
    return font;
}

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
        if (!m_scaleBar)
            return;
        m_finished = {};
        update();
    });
    connect(&m_magnifier, &BWMagnifier::imageReady, this, qOverload<>(&QWidget::update));
    hide();
}

void BWMeasuringLayer::showMeasurements(const QList<BWMeasurement> &measurements, BWMeasuringTool &tool,
                                        const BWPictureScale &scale)
{
    m_tool = &tool;
    const auto selection = tool.selection();
    const qsizetype selected = m_active && selection ? selection->measurement : -1;
    const bool allHaveHandles = m_active && tool.kind().isEmpty();
    // A pointer that only moves leaves them as they are.
    if (measurements != m_measurements || scale != m_scale || selected != m_selected
        || allHaveHandles != m_allHaveHandles)
        m_finished = {};
    m_measurements = measurements;
    m_scale = scale;
    m_selected = selected;
    m_allHaveHandles = allHaveHandles;
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
    m_usesKeys = m_pointerIsOver = false;
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
    m_finished = {};
}

void BWMeasuringLayer::setTextLabel(const QString &label)
{
    m_textLabel = label;
}

std::optional<QTransform> BWMeasuringLayer::toWidget() const
{
    return m_tool ? m_view.pictureToViewport() : std::nullopt;
}

/// A pointer on whole pixels, as X11 has it, means the middle of one.
QPointF BWMeasuringLayer::placeAt(QPointF position) const
{
    const double ratio = devicePixelRatioF();
    const QPointF device = position * ratio;
    return toWidget()->inverted().map(isWhole(device) ? (device + QPointF(0.5, 0.5)) / ratio : position);
}

double BWMeasuringLayer::reach() const
{
    const QTransform all = *toWidget();
    const QPointF width = all.map(QPointF(1, 0)) - all.map(QPointF());
    return grabReach / std::max(1.0, std::hypot(width.x(), width.y()));
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
    if (m_finished.isNull() || m_finishedFor != *all || m_finished.devicePixelRatio() != devicePixelRatioF()
        || m_finished.deviceIndependentSize() != QSizeF(size()))
        drawFinished(*all);
    QPainter painter(this);
    painter.setClipRect(m_view.scene().mainArea(size()), Qt::IntersectClip);
    const double ratio = devicePixelRatioF();
    for (const QRect &rect : m_covered & event->region())
        painter.drawPixmap(QRectF(rect), m_finished,
                           QRectF(QPointF(rect.topLeft()) * ratio, QSizeF(rect.size()) * ratio));
    if (!m_active)
        return;
    const BWMeasurementPainter draw(painter, *all, 1, labelFont(font()), locale());
    if (const BWMeasurement unfinished = m_tool->unfinished(); !unfinished.points.isEmpty())
        draw.draw(unfinished, m_scale, true);
    if (m_tool->selection() || (m_usesKeys && hasFocus()))
        draw.drawCursor(m_tool->cursor());
    if (isPlacing())
        m_magnifier.draw(painter, m_tool->cursor(), magnifierPlace(all->map(m_tool->cursor())).topLeft());
    else
        m_magnifier.stop();
}

void BWMeasuringLayer::drawFinished(const QTransform &toWidget)
{
    const double ratio = devicePixelRatioF();
    QImage image((QSizeF(size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const BWMeasurementPainter draw(painter, toWidget, 1, labelFont(font()), locale());
    for (qsizetype i = 0; i < m_measurements.size(); ++i)
        draw.draw(m_measurements[i], m_scale, m_allHaveHandles || i == m_selected);
    if (m_scaleBar) {
        const QPointF width = toWidget.map(QPointF(1, 0)) - toWidget.map(QPointF());
        const double points = std::hypot(width.x(), width.y());
        const double shown = m_scale.isCalibrated() ? m_scale.millimetresPerWidth() : m_scale.pixels.width();
        const double height = double(m_scale.pixels.height()) / std::max(1, m_scale.pixels.width());
        constexpr int statusLine = 32; // which lies over the lower edge
        const QRectF area = toWidget.mapRect(QRectF(0, 0, 1, height))
            & (m_view.scene().mainClip(size()) & m_view.uncovered()).adjusted(0, 0, 0, -statusLine);
        const BWScaleBar bar(shown / points, std::min(scaleBarLength, area.width() / 2),
                             m_scale.isCalibrated() ? m_scale.unit : BWLengthUnit::Pixel);
        draw.drawScaleBar(bar, area);
    }
    painter.end();
    m_covered = drawnRegion(image, ratio);
    m_finished = QPixmap::fromImage(image);
    m_finishedFor = toWidget;
}

/// Beside the pointer, and so never under it.
QRect BWMeasuringLayer::magnifierPlace(QPointF at) const
{
    constexpr int away = 28;
    constexpr int size = BWMagnifier::size;
    const QPoint point = at.toPoint();
    int left = point.x() + away;
    if (left + size > width())
        left = point.x() - away - size;
    int top = point.y() - away - size;
    if (top < 0)
        top = point.y() + away;
    return {left, std::clamp(top, 0, std::max(0, height() - size)), size, size};
}

void BWMeasuringLayer::mousePressEvent(QMouseEvent *event)
{
    event->setAccepted(event->button() == Qt::LeftButton);
    if (!event->isAccepted() || !toWidget())
        return;
    setFocus(Qt::MouseFocusReason); // which answers an open question for a text
    m_usesKeys = false;
    const QPointF at = placeAt(event->position());
    m_tool->press(at, reach(), event->modifiers() & Qt::ShiftModifier);
    if (m_tool->unfinished().points.size() == 2) // the first point and the one to come
        m_pressed = event->position();
    Q_EMIT edited();
}

/// A double click completes what may have any number of points; the first of its presses has set the last one.
void BWMeasuringLayer::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->setAccepted(event->button() == Qt::LeftButton);
    if (!event->isAccepted() || !toWidget())
        return;
    m_tool->finish();
    Q_EMIT edited();
}

void BWMeasuringLayer::mouseMoveEvent(QMouseEvent *event)
{
    event->setAccepted(!(event->buttons() & Qt::MiddleButton)); // which moves the picture
    if (!m_active || !toWidget() || m_text)
        return;
    m_pointerIsOver = true;
    m_usesKeys = false;
    m_tool->move(placeAt(event->position()), event->modifiers() & Qt::ShiftModifier);
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
        m_tool->press(placeAt(event->position()), reach(), event->modifiers() & Qt::ShiftModifier);
    m_tool->release();
    Q_EMIT edited();
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
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (kind && kind->mostPoints == BWMeasurementKind::anyNumber && !m_tool->unfinished().points.isEmpty()) {
            m_tool->finish();
            return true;
        }
        [[fallthrough]];
    case Qt::Key_Space:
        m_usesKeys = true;
        if (!event.isAutoRepeat()) {
            m_tool->place();
            m_tool->release();
        }
        return true;
    case Qt::Key_Escape:
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
    const QRect area = m_view.scene().mainArea(size()).adjusted(margin, margin, -margin, -margin);
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
    if (!m_tool || !m_active)
        unsetCursor();
    else if (!m_tool->kind().isEmpty())
        setCursor(Qt::CrossCursor);
    else if (toWidget() && m_tool->hasPointAt(m_tool->cursor(), reach()))
        setCursor(m_tool->isMoving() ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else
        unsetCursor();
}

void BWMeasuringLayer::askForText()
{
    m_text = new QLineEdit(this);
    m_text->setAccessibleName(m_textLabel);
    m_text->setPlaceholderText(m_textLabel);
    placeText();
    m_text->installEventFilter(this);
    connect(m_text, &QLineEdit::returnPressed, this, [this] { answerText(true); });
    m_text->show();
    m_text->setFocus();
}

void BWMeasuringLayer::placeText()
{
    const QPoint at = toWidget() ? toWidget()->map(m_tool->unfinished().points.last()).toPoint() : rect().center();
    const int width = std::max(180, m_text->fontMetrics().horizontalAdvance(m_textLabel) + 24);
    const QSize size(width, m_text->sizeHint().height());
    m_text->setGeometry(QRect({std::clamp(at.x() + 8, 0, std::max(0, this->width() - size.width())),
                               std::clamp(at.y() - size.height() - 4, 0, std::max(0, height() - size.height()))},
                              size));
}

void BWMeasuringLayer::answerText(bool accepted)
{
    QLineEdit *field = std::exchange(m_text, nullptr);
    if (!field)
        return;
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
            placeText();
    }
    if (watched == m_text && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        answerText(false);
        return true;
    }
    if (watched == m_text && event->type() == QEvent::FocusOut
        && static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason
        && static_cast<QFocusEvent *>(event)->reason() != Qt::ActiveWindowFocusReason)
        answerText(true);
    return QWidget::eventFilter(watched, event);
}

void BWMeasuringLayer::leaveEvent(QEvent *)
{
    m_pointerIsOver = false;
    update();
}

void BWMeasuringLayer::focusOutEvent(QFocusEvent *)
{
    update();
}

void BWMeasuringLayer::hideEvent(QHideEvent *)
{
    m_magnifier.stop();
    m_finished = {};
}
