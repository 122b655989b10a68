// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWPictureFocus.h"

#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"

#include <QFocusEvent>
#include <QPainter>

namespace {
constexpr int ringWidth = 2;
constexpr int bothWidths = 2 * ringWidth;
} // namespace

BWPictureFocus::BWPictureFocus(BWCenteringClipView &view, QWidget &focused) : QWidget(view.viewport()), m_view(view)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    connect(&view, &BWCenteringClipView::uncoveredChanged, this, &BWPictureFocus::place);
    focused.installEventFilter(this);
    view.viewport()->installEventFilter(this);
}

bool BWPictureFocus::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::FocusIn: {
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        const bool comesBack =
            reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason;
        m_byTab = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || (m_byTab && comesBack);
        place();
        setVisible(m_byTab);
        break;
    }
    case QEvent::MouseButtonPress:
        m_byTab = false;
        [[fallthrough]];
    case QEvent::FocusOut:
        hide();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

/// Only its lines are painted with every picture.
void BWPictureFocus::place()
{
    setGeometry(m_view.uncovered());
    setMask(QRegion(rect()) - rect().adjusted(bothWidths, bothWidths, -bothWidths, -bothWidths));
}

void BWPictureFocus::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const BWCrispFrame outer(painter, rect(), ringWidth);
    const BWCrispFrame inner(painter, rect().adjusted(ringWidth, ringWidth, -ringWidth, -ringWidth), ringWidth);
    painter.setPen(QPen(BWColors::accent(palette()), outer.width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(outer.rect);
    painter.setPen(QPen(palette().color(QPalette::Window), inner.width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(inner.rect);
}
