// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWControlStyle.h"

#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QStyleOption>
#include <QTransform>

namespace {

/// Draws over the edge of a control, which is where Fusion has it.
class EdgePainter {
public:
    EdgePainter(QPainter &painter, const QStyleOption &option)
        : m_painter(painter), m_palette(option.palette), m_enabled(option.state & QStyle::State_Enabled)
    {
        m_painter.save();
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setBrush(Qt::NoBrush);
    }
    ~EdgePainter() { m_painter.restore(); }
    Q_DISABLE_COPY_MOVE(EdgePainter)

    void circle(const QRect &rect)
    {
        const double radius = (rect.width() + (rect.width() + 1) % 2) / 2.0 - 1;
        m_painter.setPen(edge());
        m_painter.drawEllipse(rect.center() + QPointF(1, 1), radius, radius);
    }

    /// In full strength where Fusion draws it translucent.
    void dot(const QRect &rect)
    {
        constexpr double share = 0.2;
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(m_palette.text());
        m_painter.drawEllipse(rect.center() + QPointF(1, 1), share * rect.width(), share * rect.width());
        m_painter.setBrush(Qt::NoBrush);
    }

    /// Likewise; `angle` in degrees, from one that points to the right.
    void arrow(const QRect &rect, int angle, QPalette::ColorRole color)
    {
        constexpr double length = 4;
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(m_palette.brush(color));
        const QTransform turned =
            QTransform::fromTranslate(QRectF(rect).center().x(), QRectF(rect).center().y()).rotate(angle);
        m_painter.drawConvexPolygon(
            turned.map(QPolygonF{{-length / 2, -length}, {length / 2, 0}, {-length / 2, length}}));
        m_painter.setBrush(Qt::NoBrush);
    }

    /// Of the button that Enter presses. In its own colour, as that of the focus would promise the focus.
    void defaultFrame(const QRect &rect)
    {
        constexpr double strong = 0.8;
        const bool most = BWColors::isHighContrast(m_palette);
        const BWCrispFrame frame(m_painter, rect, most ? 2 : 1);
        m_painter.setPen(QPen(BWColors::line(m_palette, strong), frame.width));
        constexpr double radius = 2;
        m_painter.drawRoundedRect(frame.rect, radius, radius);
    }

    void box(const QRect &rect, double radius = 2) { box(rect, edge(), radius); }
    void box(const QRect &rect, const QColor &color, double radius)
    {
        const BWCrispFrame frame(m_painter, rect);
        m_painter.setPen(QPen(color, frame.width));
        m_painter.drawRoundedRect(frame.rect, radius, radius);
    }

    /// Of the focus, over the edge.
    void ring(const QRect &rect, bool isOverStrongEdge = false)
    {
        // Over an edge that is as strong, one more line has to tell. Something small is filled, as a line hardly shows.
        constexpr int small = 20;
        const bool most = BWColors::isHighContrast(m_palette);
        const BWCrispFrame frame(m_painter, rect, most || isOverStrongEdge ? 3 : 2);
        constexpr double radius = 2;
        constexpr double shaded = 1.6; // Fusion fills a control with lighter shades of its colour
        const QColor color =
            BWColors::on(m_palette.color(QPalette::Button), BWColors::accent(m_palette), shaded * BWColors::visible);
        m_painter.setPen(QPen(color, frame.width));
        m_painter.setBrush(!most && rect.width() < small ? QBrush(color) : QBrush(Qt::NoBrush));
        m_painter.drawRoundedRect(frame.rect, radius, radius);
        m_painter.setBrush(Qt::NoBrush);
    }

private:
    QColor edge() const { return m_enabled ? BWColors::edge(m_palette) : BWColors::disabled(m_palette); }

    QPainter &m_painter;
    const QPalette &m_palette;
    const bool m_enabled;
};

int angleOf(QStyle::PrimitiveElement arrow)
{
    return arrow == QStyle::PE_IndicatorArrowDown ? 90
        : arrow == QStyle::PE_IndicatorArrowLeft  ? 180
        : arrow == QStyle::PE_IndicatorArrowUp    ? 270
                                                  : 0;
}

/// Fusion shows it by a shade of the edge, which is hardly to be seen, and in high contrast not at all.
bool showsFocus(const QStyleOption &option, const QWidget *widget)
{
    constexpr QStyle::State needed = QStyle::State_Enabled | QStyle::State_HasFocus;
    const bool byKeys = widget ? widget->window()->testAttribute(Qt::WA_KeyboardFocusChange)
                               : bool(option.state & QStyle::State_KeyboardFocusChange);
    return (option.state & needed) == needed && (byKeys || BWColors::isHighContrast(option.palette));
}

} // namespace

bool BWControlStyle::isFusion() const
{
    return baseStyle()->name() == QLatin1String("fusion");
}

void BWControlStyle::polish(QPalette &palette)
{
    QProxyStyle::polish(palette);
    BWColors::mend(palette);
}

void BWControlStyle::polish(QApplication *application)
{
    QProxyStyle::polish(application);
    application->installEventFilter(this);
}

void BWControlStyle::unpolish(QApplication *application)
{
    application->removeEventFilter(this);
    QProxyStyle::unpolish(application);
}

/// Qt shows the focus in a window once Tab was pressed there. Who opens it by a key has to see it before.
bool BWControlStyle::eventFilter(QObject *object, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        m_usesKeys = true;
        break;
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
    case QEvent::TabletPress:
        m_usesKeys = false;
        break;
    case QEvent::FocusIn:
        if (const auto *widget = qobject_cast<QWidget *>(object))
            widget->window()->setAttribute(Qt::WA_KeyboardFocusChange, m_usesKeys);
        break;
    default:
        break;
    }
    return QProxyStyle::eventFilter(object, event);
}

/// Fusion's disabled texts cast a shadow, which on a dark window blurs them. Its buttons in dialogs have icons, unlike those
/// elsewhere.
int BWControlStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                              QStyleHintReturn *data) const
{
    const bool isPlain = hint == SH_EtchDisabledText || (hint == SH_DialogButtonBox_ButtonsHaveIcons && isFusion());
    return isPlain ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
}

/// Room for the ring of the focus, which what is scrolled would cover.
int BWControlStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    constexpr int frame = 2;
    if (metric == PM_DefaultFrameWidth && isFusion() && qobject_cast<const QAbstractScrollArea *>(widget))
        return frame;
    return QProxyStyle::pixelMetric(metric, option, widget);
}

void BWControlStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                                   const QWidget *widget) const
{
    if (!isFusion()) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    const bool isDefault = button && button->features & QStyleOptionButton::DefaultButton;
    if (isDefault) { // without the tint, on which a ring would hardly show
        QStyleOptionButton plain = *button;
        plain.features.setFlag(QStyleOptionButton::DefaultButton, false);
        QProxyStyle::drawPrimitive(element, &plain, painter, widget);
    } else if (element != PE_FrameFocusRect) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
    const bool focused = showsFocus(*option, widget);
    const bool most = BWColors::isHighContrast(option->palette);
    const auto edge = [&] { return EdgePainter(*painter, *option); };
    switch (element) {
    case PE_IndicatorRadioButton:
        if (most && option->state & State_On && option->state & State_Enabled)
            edge().dot(option->rect);
        edge().circle(option->rect);
        break;
    case PE_IndicatorArrowRight:
    case PE_IndicatorArrowDown:
    case PE_IndicatorArrowLeft:
    case PE_IndicatorArrowUp:
        if (most && option->state & State_Enabled)
            edge().arrow(option->rect, angleOf(element), QPalette::WindowText);
        break;
    case PE_IndicatorCheckBox:
        edge().box(option->rect, 0);
        break;
    case PE_FrameFocusRect:
        if (focused && option->state & State_Item) { // in a list, which has the ring
            const bool isSelected = option->state & State_Selected;
            edge().box(option->rect, option->palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text), 0);
        } else if (focused) {
            edge().ring(option->rect);
        }
        break;
    case PE_PanelMenu:
    case PE_FrameMenu: {
        QStyleOption menu = *option;
        menu.state |= State_Enabled; // which Qt does not say here
        if (most)
            EdgePainter(*painter, menu).box(option->rect);
        break;
    }
    case PE_PanelButtonCommand:
    case PE_FrameLineEdit:
    case PE_Frame:
        if (most)
            edge().box(option->rect);
        if (isDefault && option->state & State_Enabled)
            edge().defaultFrame(option->rect);
        if (focused || (element == PE_FrameLineEdit && option->state & State_HasFocus))
            edge().ring(option->rect, isDefault);
        break;
    default:
        break;
    }
}

void BWControlStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                                 const QWidget *widget) const
{
    const QRect &rect = option->rect;
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (isFusion() && element == CE_PushButtonLabel && button && button->direction == Qt::RightToLeft
        && !button->icon.isNull()
        && !button->text.isEmpty()) { // Qt would turn the text round twice, away from the icon
        constexpr int gap = 4;
        const int iconRoom = button->iconSize.width() + gap;
        const QSize needed(iconRoom + button->fontMetrics.size(Qt::TextShowMnemonic, button->text).width(),
                           rect.height());
        const QRect place = alignedRect(Qt::LeftToRight, Qt::AlignCenter, needed, rect);
        QStyleOptionButton part = *button;
        part.icon = {};
        part.rect = place.adjusted(0, 0, -iconRoom, 0);
        QProxyStyle::drawControl(element, &part, painter, widget);
        part.icon = button->icon;
        part.text.clear();
        part.rect = place.adjusted(needed.width() - button->iconSize.width(), 0, 0, 0);
        QProxyStyle::drawControl(element, &part, painter, widget);
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
    if (!isFusion())
        return;
    const double line = bwLineWidth(*painter);
    const bool most = BWColors::isHighContrast(option->palette);
    const bool isHeader = element == CE_HeaderSection || element == CE_HeaderEmptyArea;
    const bool isMenuBar = element == CE_MenuBarEmptyArea || element == CE_MenuBarItem;
    const auto *item = element == CE_MenuItem ? qstyleoption_cast<const QStyleOptionMenuItem *>(option) : nullptr;
    if ((isMenuBar && !(option->state & State_Sunken)) || (isHeader && most)) {
        // Where a point is not whole pixels, Fusion's own line has gaps.
        painter->fillRect(QRectF(rect.left(), rect.top() + rect.height() - line, rect.width(), line),
                          BWColors::line(option->palette));
    } else if (item && item->menuItemType == QStyleOptionMenuItem::Separator && item->text.isEmpty()) {
        constexpr int margin = 5;
        painter->fillRect(QRectF(rect.left() + margin, rect.center().y(), rect.width() - 2 * margin, line),
                          BWColors::line(option->palette));
    } else if (element == CE_TabBarTabLabel && showsFocus(*option, widget)) {
        constexpr int inset = 3;
        EdgePainter(*painter, *option).ring(rect.adjusted(inset, inset, -inset, -inset));
    } else if (element == CE_ProgressBarGroove && most) {
        EdgePainter(*painter, *option).box(rect);
    } else if (element == CE_TabBarTabShape && most) {
        EdgePainter edge(*painter, *option);
        edge.box(rect, 0);
        constexpr int mark = 3;
        if (option->state & State_Selected)
            painter->fillRect(QRect(rect.topLeft(), QSize(rect.width(), mark)), BWColors::accent(option->palette));
    }
}

void BWControlStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                        const QWidget *widget) const
{
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (!isFusion())
        return;
    const bool focused = showsFocus(*option, widget);
    if (control == CC_Slider) {
        EdgePainter edge(*painter, *option);
        const QRect handle = subControlRect(CC_Slider, option, SC_SliderHandle, widget).adjusted(1, 1, -1, -1);
        edge.box(handle);
        if (focused)
            edge.ring(handle);
        painter->setClipRegion(QRegion(option->rect) - handle, Qt::IntersectClip);
        edge.box(subControlRect(CC_Slider, option, SC_SliderGroove, widget).adjusted(1, 1, -1, -1), 1);
    } else if (control == CC_ScrollBar) {
        EdgePainter edge(*painter, *option);
        edge.box(subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, widget));
        if (BWColors::isHighContrast(option->palette) && option->state & State_Enabled) {
            const bool isUpright = !(option->state & State_Horizontal);
            const bool isMirrored = !isUpright && option->direction == Qt::RightToLeft;
            const int back = angleOf(isUpright ? PE_IndicatorArrowUp : PE_IndicatorArrowLeft) + (isMirrored ? 180 : 0);
            edge.arrow(subControlRect(CC_ScrollBar, option, SC_ScrollBarSubLine, widget), back, QPalette::ButtonText);
            edge.arrow(subControlRect(CC_ScrollBar, option, SC_ScrollBarAddLine, widget), back + 180,
                       QPalette::ButtonText);
        }
    } else if (control == CC_ComboBox || control == CC_SpinBox) {
        EdgePainter edge(*painter, *option);
        if (BWColors::isHighContrast(option->palette)) {
            edge.box(option->rect);
            const auto arrow = [&](SubControl part, int angle) {
                edge.arrow(subControlRect(control, option, part, widget), angle, QPalette::ButtonText);
            };
            const auto *box = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
            const bool isEnabled = option->state & State_Enabled;
            if (isEnabled && control == CC_ComboBox)
                arrow(SC_ComboBoxArrow, angleOf(PE_IndicatorArrowDown));
            if (isEnabled && box && box->stepEnabled & QAbstractSpinBox::StepUpEnabled)
                arrow(SC_SpinBoxUp, angleOf(PE_IndicatorArrowUp));
            if (isEnabled && box && box->stepEnabled & QAbstractSpinBox::StepDownEnabled)
                arrow(SC_SpinBoxDown, angleOf(PE_IndicatorArrowDown));
        }
        if (focused || (control == CC_SpinBox && option->state & State_HasFocus))
            edge.ring(option->rect);
    }
}
