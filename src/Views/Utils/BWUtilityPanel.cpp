#include "Views/Utils/BWUtilityPanel.h"

#include "Views/Utils/BWClosingKeys.h"
#include "Views/Utils/BWFrameAutosave.h"
#include "Views/Utils/BWWindowPlacement.h"

#include <QLayout>

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

/// If its size changed only when it is shown, its place would be taken for that of the content.
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
