#include "Views/Utils/BWUtilityPanel.h"

#include "Views/Utils/BWClosingKeys.h"
#include "Views/Utils/BWWindowPlacement.h"

#include <QLayout>
#include <utility>

BWUtilityPanel::BWUtilityPanel(QWidget *cameraWindow) : QWidget(cameraWindow, Qt::Tool)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    new BWClosingKeys(*this);
}

void BWUtilityPanel::resetLayout()
{
    m_mustPlace = true;
    if (isVisible())
        place();
}

void BWUtilityPanel::setVisible(bool visible)
{
    if (visible && !isVisible()) {
        fit();
        place();
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

void BWUtilityPanel::place()
{
    const QWidget *cameraWindow = parentWidget();
    if (!cameraWindow || !std::exchange(m_mustPlace, false))
        return;
    move(BWWindowPlacement::below(*cameraWindow, size()));
    update();
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
