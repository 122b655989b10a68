// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Technician/BWSimulatedCamerasWindowController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

/// The problems that a start may have, in the order of the menu.
const QList<BWStartProblem> &starts()
{
    using Kind = BWStartProblem::Kind;
    static const QList<BWStartProblem> list{{Kind::None},        {Kind::InUse},        {Kind::InUse, u"guvcview"_s},
                                            {Kind::NoBandwidth}, {Kind::NoPermission}, {Kind::Failed}};
    return list;
}

} // namespace

BWSimulatedCameraRow::BWSimulatedCameraRow(std::shared_ptr<BWSimulatedCamera> camera, QGridLayout *grid,
                                           QObject *parent)
    : QObject(parent),
      m_camera(std::move(camera)),
      m_title(new QLabel(m_camera->title())),
      m_plugButton(new QPushButton),
      m_pressButton(new QPushButton),
      m_faultButton(new QPushButton),
      m_startLabel(new QLabel),
      m_startBox(new QComboBox)
{
    const int row = grid->rowCount();
    grid->addWidget(m_title, row, 0);
    grid->addWidget(m_plugButton, row, 1);
    grid->addWidget(m_pressButton, row, 2);
    grid->addWidget(m_faultButton, row, 3);
    grid->addWidget(m_startLabel, row, 4);
    grid->addWidget(m_startBox, row, 5);
    m_startLabel->setBuddy(m_startBox);
    auto *faults = new QMenu(m_faultButton);
    constexpr int frames = 5;
    m_stall = faults->addAction(QString(), this, [this] { m_camera->stall(); });
    m_damageFrames = faults->addAction(QString(), this, [this] { m_camera->tearNextFrames(frames); });
    m_loseFrames = faults->addAction(QString(), this, [this] { m_camera->loseNextFrames(frames); });
    m_faultButton->setMenu(faults);
    connect(m_plugButton, &QPushButton::clicked, this, &BWSimulatedCameraRow::onPlug);
    connect(m_pressButton, &QPushButton::clicked, this, [this] { m_camera->pressButton(); });
    connect(m_startBox, &QComboBox::activated, this, [this](int index) { m_camera->setStartProblem(starts()[index]); });
}

void BWSimulatedCameraRow::localize(BWLocalizationManager &manager)
{
    m_plugInText =
        manager.localize(BWLocalizableString(u"simulated_cameras_window"_s, u"plug_in_button"_s, u"Plug In"_s));
    m_unplugText =
        manager.localize(BWLocalizableString(u"simulated_cameras_window"_s, u"unplug_button"_s, u"Unplug"_s));
    m_pressButton->setText(manager.localize(
        BWLocalizableString(u"simulated_cameras_window"_s, u"press_button_button"_s, u"Press Button"_s)));
    m_pressButton->setAccessibleName(u"%1: %2"_s.arg(m_camera->title(), m_pressButton->text()));
    m_faultButton->setText(manager.text(u"simulated_cameras_window"_s, u"fault_button"_s, u"Fault"_s));
    m_faultButton->setAccessibleName(u"%1: %2"_s.arg(m_camera->title(), m_faultButton->text()));
    m_stall->setText(manager.text(u"simulated_cameras_window"_s, u"stall_item"_s, u"Stall the stream"_s));
    m_damageFrames->setText(
        manager.text(u"simulated_cameras_window"_s, u"damage_frames_item"_s, u"Damage the next frames"_s));
    m_loseFrames->setText(
        manager.text(u"simulated_cameras_window"_s, u"lose_frames_item"_s, u"Lose the next frames"_s));
    m_startLabel->setText(manager.text(u"simulated_cameras_window"_s, u"start_label"_s, u"Start"_s));
    for (QWidget *widget : std::initializer_list<QWidget *>{m_startLabel, m_startBox})
        widget->setAccessibleName(u"%1: %2"_s.arg(m_camera->title(), m_startLabel->text()));
    m_startBox->clear();
    m_startBox->addItems(
        {manager.text(u"simulated_cameras_window"_s, u"start_works_item"_s, u"Can be started"_s),
         manager.text(u"simulated_cameras_window"_s, u"start_in_use_item"_s, u"In use by another program"_s),
         manager.text(u"simulated_cameras_window"_s, u"start_in_use_by_item"_s, u"In use by %1"_s)
             .arg(starts()[2].holder),
         manager.text(u"simulated_cameras_window"_s, u"start_no_bandwidth_item"_s, u"Not enough USB bandwidth"_s),
         manager.text(u"simulated_cameras_window"_s, u"start_no_permission_item"_s, u"No permission"_s),
         manager.text(u"simulated_cameras_window"_s, u"start_failed_item"_s, u"Fault of the camera"_s)});

    // wide enough for either text, so that nothing moves when it changes
    int width = 0;
    for (const QString &text : {m_plugInText, m_unplugText}) {
        m_plugButton->setText(text);
        width = qMax(width, m_plugButton->sizeHint().width());
    }
    m_plugButton->setMinimumWidth(width);
    update();
}

void BWSimulatedCameraRow::update()
{
    const bool pluggedIn = m_camera->isPluggedIn();
    m_plugButton->setText(pluggedIn ? m_unplugText : m_plugInText);
    m_plugButton->setAccessibleName(u"%1: %2"_s.arg(m_camera->title(), m_plugButton->text()));
    m_pressButton->setEnabled(pluggedIn);
    m_faultButton->setEnabled(pluggedIn);
    m_startBox->setCurrentIndex(static_cast<int>(starts().indexOf(m_camera->startProblem())));
}

void BWSimulatedCameraRow::onPlug()
{
    if (m_camera->isPluggedIn())
        m_camera->unplug();
    else
        m_camera->plugIn();
    update();
}

namespace {
constexpr int simulatedCamerasMargin = 16;
constexpr int simulatedCamerasColumnSpacing = 12;
} // namespace

BWSimulatedCamerasWindowController::BWSimulatedCamerasWindowController(
    const QList<std::shared_ptr<BWSimulatedCamera>> &cameras)
    : QWidget(nullptr, Qt::Tool), m_noCamerasLabel(new QLabel)
{
    // Nothing could open it again.
    setWindowFlags(Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowMinimizeButtonHint);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(simulatedCamerasMargin, simulatedCamerasMargin, simulatedCamerasMargin,
                             simulatedCamerasMargin);
    grid->setHorizontalSpacing(simulatedCamerasColumnSpacing);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->addWidget(m_noCamerasLabel, 0, 0, 1, 6);
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
    // The other window has no frame yet either. These margins are smaller than usual, so that both fit on a screen of
    // 800 points.
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
