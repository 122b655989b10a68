// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWControlStyle.h"

#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"

#include <QPainter>
#include <QStyleOption>

namespace {

/// Draws over the edge of a control, which is where Fusion has it.
class EdgePainter {
public:
    EdgePainter(QPainter &painter, const QStyleOption &option) : m_painter(painter)
    {
        const bool enabled = option.state & QStyle::State_Enabled;
        m_painter.save();
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setBrush(Qt::NoBrush);
        m_pen = QPen(enabled ? BWColors::edge(option.palette) : BWColors::disabled(option.palette));
    }
    ~EdgePainter() { m_painter.restore(); }
    Q_DISABLE_COPY_MOVE(EdgePainter)

    void circle(const QRect &rect)
    {
        const double radius = (rect.width() + (rect.width() + 1) % 2) / 2.0 - 1;
        m_painter.setPen(m_pen);
        m_painter.drawEllipse(rect.center() + QPointF(1, 1), radius, radius);
    }

    void box(const QRect &rect, double radius = 2)
    {
        const BWCrispFrame frame(m_painter, rect);
        m_pen.setWidthF(frame.width);
        m_painter.setPen(m_pen);
        m_painter.drawRoundedRect(frame.rect, radius, radius);
    }

private:
    QPainter &m_painter;
    QPen m_pen;
};

/// Whether Fusion draws a ring in place of the edge.
bool showsFocus(QStyle::PrimitiveElement element, QStyle::State state)
{
    return state & QStyle::State_HasFocus
        && (element == QStyle::PE_FrameLineEdit
            || (element == QStyle::PE_PanelButtonCommand && state & QStyle::State_KeyboardFocusChange));
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

void BWControlStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                                   const QWidget *widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (!isFusion())
        return;
    switch (element) {
    case PE_IndicatorRadioButton:
        EdgePainter(*painter, *option).circle(option->rect);
        break;
    case PE_IndicatorCheckBox:
        EdgePainter(*painter, *option).box(option->rect, 0);
        break;
    case PE_PanelButtonCommand:
    case PE_FrameLineEdit:
    case PE_Frame:
    case PE_PanelMenu:
        if (BWColors::isHighContrast(option->palette) && !showsFocus(element, option->state))
            EdgePainter(*painter, *option).box(option->rect);
        break;
    default:
        break;
    }
}

void BWControlStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                                 const QWidget *widget) const
{
    QProxyStyle::drawControl(element, option, painter, widget);
    if (!isFusion())
        return;
    const QRect &rect = option->rect;
    if (element == CE_MenuBarEmptyArea || (element == CE_MenuBarItem && !(option->state & State_Sunken))) {
        // Where a point is not whole pixels, Fusion's own line has gaps.
        const double line = bwLineWidth(*painter);
        painter->fillRect(QRectF(rect.left(), rect.top() + rect.height() - line, rect.width(), line),
                          BWColors::line(option->palette));
    } else if (element == CE_TabBarTabShape && BWColors::isHighContrast(option->palette)) {
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
    const bool most = BWColors::isHighContrast(option->palette);
    if (control == CC_Slider) {
        EdgePainter edge(*painter, *option);
        const QRect handle = subControlRect(CC_Slider, option, SC_SliderHandle, widget).adjusted(1, 1, -1, -1);
        edge.box(handle);
        painter->setClipRegion(QRegion(option->rect) - handle, Qt::IntersectClip);
        edge.box(subControlRect(CC_Slider, option, SC_SliderGroove, widget).adjusted(1, 1, -1, -1), 1);
    } else if (control == CC_ScrollBar) {
        EdgePainter(*painter, *option).box(subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, widget));
    } else if (most && (control == CC_ComboBox || control == CC_SpinBox)) {
        EdgePainter(*painter, *option).box(option->rect);
    }
}
