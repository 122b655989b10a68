#include "Views/Technician/BWSimulatedCamerasWindowController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Technician/BWSimulatedCameraRow.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <QGridLayout>
#include <QLabel>

using namespace Qt::StringLiterals;

namespace {
constexpr int outerMargin = 16;
constexpr int columnSpacing = 12;
} // namespace

BWSimulatedCamerasWindowController::BWSimulatedCamerasWindowController(
    const QList<std::shared_ptr<BWSimulatedCamera>> &cameras)
    : QWidget(nullptr, Qt::Tool), m_noCamerasLabel(new QLabel)
{
    // closed it could not be had back
    setWindowFlags(Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowMinimizeButtonHint);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(outerMargin, outerMargin, outerMargin, outerMargin);
    grid->setHorizontalSpacing(columnSpacing);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->addWidget(m_noCamerasLabel, 0, 0, 1, 5);
    m_noCamerasLabel->setVisible(cameras.isEmpty());
    for (const std::shared_ptr<BWSimulatedCamera> &camera : cameras)
        m_rows << new BWSimulatedCameraRow(camera, grid, this);
}

void BWSimulatedCamerasWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.localize(
        BWLocalizableString(u"simulated_cameras_window"_s, u"window_title"_s, u"Simulated cameras"_s)));
    m_noCamerasLabel->setText(manager.localize(BWLocalizableString(u"simulated_cameras_window"_s, u"no_cameras_label"_s,
                                                                   u"No camera is simulated in this run."_s)));
    for (BWSimulatedCameraRow *row : std::as_const(m_rows))
        row->localize(manager);
}

void BWSimulatedCamerasWindowController::showBelow(const QWidget &window)
{
    adjustSize();
    // The other window, too, is only just being shown. Less than what is usual elsewhere: on a screen of 800 points both
    // have just room.
    constexpr QMargins margins{0, 30, 0, 0};
    const QRect other(window.pos(), window.size().grownBy(margins));
    const QRect place(other.bottomLeft(), size().grownBy(margins));
    move(BWWindowPlacement::onScreens().fitted(place, other).topLeft());
    show();
}

void BWSimulatedCamerasWindowController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    for (BWSimulatedCameraRow *row : std::as_const(m_rows))
        row->update();
}
