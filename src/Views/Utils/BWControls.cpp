// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWControls.h"

#include "Utils/BWUIUtils.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWTouchInput.h"

#include <QEvent>
#include <QFontInfo>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QPointingDevice>
#include <QScopedValueRollback>
#include <QShortcutEvent>
#include <QStyleOptionButton>
#include <QStyleOptionSlider>
#include <QWidget>

namespace {

int flags(Qt::Alignment alignment)
{
    return static_cast<int>(alignment & Qt::AlignHorizontal_Mask) | Qt::AlignTop | Qt::TextWordWrap;
}

} // namespace

BWFittingFont::BWFittingFont(QWidget *widget) : m_widget(widget), m_fullFont(widget->font()) { }

QFont BWFittingFont::smallestFont() const
{
    QFont font = m_fullFont;
    if (font.pointSizeF() > minimumSize)
        font.setPointSizeF(minimumSize);
    return font;
}

void BWFittingFont::fit(const QString &text, const QSizeF &bounds)
{
    QFont font = m_fullFont;
    const double fullSize = QFontInfo(m_fullFont).pointSizeF(); // in whole pixels, so not quite the requested size
    if (fullSize > minimumSize) {
        const double fitting = BWUIUtils::fontToFit(m_fullFont, bounds, text, minimumSize).pointSizeF();
        if (fitting < fullSize)
            font.setPointSizeF(fitting);
    }
    const QScopedValueRollback guard(m_setting, true);
    m_widget->setFont(font);
}

bool BWFittingFont::takeChangedFont()
{
    if (m_setting)
        return false;
    m_fullFont = m_widget->font();
    return true;
}

BWResizingTextField::BWResizingTextField(QWidget *parent) : QLabel(parent), m_font(this) { }

void BWResizingTextField::setStringValue(const QString &text)
{
    setText(text);
    fit();
}

void BWResizingTextField::fit()
{
    // One smaller line is better than two half-clipped ones.
    const bool wraps = contentsRect().height() >= 2 * QFontMetrics(m_font.fullFont()).lineSpacing();
    m_font.fit(text(), QSizeF(contentsRect().width(), wraps ? contentsRect().height() : 1));
    setWordWrap(wraps);
}

QSize BWResizingTextField::textSize(const QFont &font) const
{
    const QMargins margins = contentsMargins();
    return QFontMetrics(font).size(0, text()).grownBy(margins) + QSize(2 * margin(), 2 * margin());
}

QSize BWResizingTextField::sizeHint() const
{
    return textSize(m_font.fullFont());
}

QSize BWResizingTextField::minimumSizeHint() const
{
    return textSize(m_font.smallestFont());
}

void BWResizingTextField::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    fit();
}

void BWResizingTextField::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_font.takeChangedFont())
        fit();
}

BWResizingButton::BWResizingButton(QWidget *parent) : QPushButton(parent), m_font(this) { }

void BWResizingButton::setTitle(const QString &title)
{
    setText(title);
    fit();
}

void BWResizingButton::fit()
{
    QStyleOptionButton option;
    initStyleOption(&option);
    QSizeF bounds = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this).size();
    bounds.setHeight(1); // a title does not wrap, however high the button is
    m_font.fit(text(), bounds);
}

QSize BWResizingButton::buttonSize(const QFont &font) const
{
    // The style's own size, with the text measured in that font instead.
    const QSize now = fontMetrics().size(Qt::TextShowMnemonic, text());
    return QPushButton::sizeHint() - now + QFontMetrics(font).size(Qt::TextShowMnemonic, text());
}

QSize BWResizingButton::sizeHint() const
{
    return buttonSize(m_font.fullFont());
}

QSize BWResizingButton::minimumSizeHint() const
{
    return buttonSize(m_font.smallestFont());
}

void BWResizingButton::resizeEvent(QResizeEvent *event)
{
    QPushButton::resizeEvent(event);
    fit();
}

void BWResizingButton::changeEvent(QEvent *event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_font.takeChangedFont())
        fit();
}

QRectF BWVerticallyCenteringTextFieldCell::titleRectForBounds(const QRectF &bounds, double textHeight)
{
    return {bounds.x(), bounds.y() + (bounds.height() - textHeight) * 0.5, bounds.width(), bounds.height()};
}

QRectF BWVerticallyCenteringTextFieldCell::titleRectForBounds(const QRectF &bounds) const
{
    const QRect room(0, 0, qRound(bounds.width()), QWIDGETSIZE_MAX);
    return titleRectForBounds(bounds, fontMetrics().boundingRect(room, flags(alignment()), text()).height());
}

void BWVerticallyCenteringTextFieldCell::drawInterior(QPainter &painter, const QRectF &frame) const
{
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(titleRectForBounds(frame), flags(alignment()) | Qt::TextDontClip, text());
}

void BWVerticallyCenteringTextFieldCell::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event); // NOLINT(bugprone-parent-virtual-call): QLabel would draw the text as well
    QPainter painter(this);
    drawInterior(painter, contentsRect());
}

bool BWRadioButton::event(QEvent *event)
{
    // One that another control shares only moves the focus.
    if (event->type() != QEvent::Shortcut || static_cast<QShortcutEvent *>(event)->isAmbiguous())
        return QRadioButton::event(event);
    setFocus(Qt::ShortcutFocusReason);
    click();
    return true;
}

BWLine::BWLine(Qt::Orientation orientation, QWidget *parent) : QWidget(parent), m_orientation(orientation)
{
    if (orientation == Qt::Vertical)
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    else
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize BWLine::sizeHint() const
{
    constexpr int room = 3;
    return {room, room};
}

void BWLine::paintEvent(QPaintEvent *)
{
    constexpr double share = 0.25; // of the text colour
    QPainter painter(this);
    const QPoint middle(width() / 2, height() / 2);
    QRectF line = rect();
    if (m_orientation == Qt::Vertical)
        line = QRectF(middle.x(), 0, bwLineWidth(painter), height());
    else
        line = QRectF(0, middle.y(), width(), bwLineWidth(painter));
    painter.fillRect(line, BWColors::line(palette(), share));
}

void BWPopUpButton::initStyleOption(QStyleOptionComboBox *option) const
{
    QComboBox::initStyleOption(option);
    constexpr int kept = 2; // which styles keep free beside the text
    const int room = style()->subControlRect(QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField, this).width();
    option->currentText = option->fontMetrics.elidedText(option->currentText, Qt::ElideMiddle, room - kept);
}

BWSlider::BWSlider(QWidget *parent) : QSlider(Qt::Horizontal, parent)
{
    setMinimumHeight(BWTouchInput::fingerWidth);
}

/// A mouse that presses beside the handle goes on by a page.
void BWSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->device()->type() != QInputDevice::DeviceType::TouchScreen) {
        QSlider::mousePressEvent(event);
        return;
    }
    QStyleOptionSlider option;
    initStyleOption(&option);
    const auto handle = [&] {
        return style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    };
    const int length = handle().width();
    setSliderPosition(QStyle::sliderValueFromPosition(minimum(), maximum(), event->pos().x() - length / 2,
                                                      width() - length, option.upsideDown));
    option.sliderPosition = sliderPosition();
    const QPointF grip = QRectF(handle()).center();
    QMouseEvent onHandle(event->type(), grip, mapToGlobal(grip), event->button(), event->buttons(), event->modifiers());
    QSlider::mousePressEvent(&onHandle);
    event->setAccepted(onHandle.isAccepted());
}
