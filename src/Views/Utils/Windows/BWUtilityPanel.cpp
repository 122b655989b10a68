// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Views/Utils/BWViewKeys.h"
#include "Views/Utils/Windows/BWFrameAutosave.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <algorithm>
#include <QDialog>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLayout>
#include <QWidget>

BWUtilityPanel::BWUtilityPanel(QWidget *cameraWindow) : QWidget(cameraWindow, Qt::Tool)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    new BWClosingKeys(*this);
}

void BWUtilityPanel::rememberFrame(const QString &name, BWUserDefaults &defaults)
{
    m_frame = new BWFrameAutosave(*this, name, defaults);
}

void BWUtilityPanel::resetLayout()
{
    m_frame->forget();
    if (isVisible())
        placeByCameraWindow();
}

void BWUtilityPanel::setVisible(bool visible)
{
    if (visible && !isVisible()) {
        fit();
        if (!m_frame->isRemembered())
            placeByCameraWindow();
    }
    QWidget::setVisible(visible);
}

/// Called before the panel is placed: if showing resized it, the position would become that of the content.
void BWUtilityPanel::fit()
{
    const bool isFixed = layout() && layout()->sizeConstraint() == QLayout::SetFixedSize;
    if (isFixed || !testAttribute(Qt::WA_Resized))
        adjustSize();
}

void BWUtilityPanel::placeByCameraWindow()
{
    if (!parentWidget())
        return;
    place(*parentWidget());
    update();
}

void BWUtilityPanel::place(QWidget &cameraWindow)
{
    QList<QRect> others;
    const auto panels = cameraWindow.findChildren<BWUtilityPanel *>(QString(), Qt::FindDirectChildrenOnly);
    for (const BWUtilityPanel *panel : panels) {
        if (panel != this && panel->isVisible())
            others.append(panel->frameGeometry());
    }
    const QSize frame = size().grownBy(BWFrameAutosave::margins(*this, &cameraWindow));
    move(BWWindowPlacement::onScreens().below(cameraWindow.frameGeometry(), frame, others).topLeft());
}

void BWUtilityPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    Q_EMIT visibilityChanged();
}

void BWUtilityPanel::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    Q_EMIT visibilityChanged();
}

BWClosingKeys::BWClosingKeys(QWidget &window) : QObject(&window), m_window(window)
{
    window.installEventFilter(this);
}

// Not as shortcuts, which would take the keys from the controls.
bool BWClosingKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto &key = static_cast<const QKeyEvent &>(*event);
    const bool closes = key.matches(BWViewKeys::leave) || key.matches(BWViewKeys::close);
    if (closes)
        m_window.close();
    return closes;
}

void returnBWKeyboardAfter(const QDialog &dialog)
{
    if (QWidget *const window = dialog.parentWidget())
        QObject::connect(&dialog, &QDialog::finished, window, &QWidget::activateWindow);
}

void placeBWToolWindow(QWidget &tool, const QWidget &mainWindow)
{
    constexpr int distance = 24;
    constexpr int menuBar = 24; // approximate height
    QFont titleFont = tool.font();
    titleFont.setBold(true);
    constexpr int titleButtons = 120; // what a window manager takes from a title, at most
    tool.setMinimumWidth(std::max(tool.minimumSizeHint().width(),
                                  QFontMetrics(titleFont).horizontalAdvance(tool.windowTitle()) + titleButtons));
    tool.adjustSize();
    const QRect window = mainWindow.geometry();
    QRect place(QPoint(), tool.size().grownBy(BWFrameAutosave::margins(tool, &mainWindow)));
    place.moveTop(window.top() + menuBar + BWLiveViewGeometry::barHeight + distance);
    place.moveRight(window.right() - distance);
    tool.move(BWWindowPlacement::onScreens().fitted(place, mainWindow.frameGeometry()).topLeft());
}
