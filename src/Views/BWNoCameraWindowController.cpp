#include "Views/BWNoCameraWindowController.h"

#include "Model/Session/BWStartProblemText.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWNoticeView.h"
#include "Views/Utils/BWPreparingView.h"

#include <QCloseEvent>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

BWNoCameraWindowController::BWNoCameraWindowController(Callbacks callbacks, BWClock &clock, QWidget *cameraWindow)
    : BWNoCameraBaseWindowController(std::move(callbacks), clock, cameraWindow),
      m_view(new BWNoticeView(u"brimwellpro-plug-in"_s)),
      m_preparing(new BWPreparingView),
      m_closeButton(m_view->addButton())
{
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    m_view->addContent(m_preparing);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_view);
    connect(m_closeButton, &QPushButton::clicked, this, &BWNoCameraWindowController::onClose);
    windowDidLoad();
}

void BWNoCameraWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(
        manager.localize(BWLocalizableString(u"no_camera_window"_s, u"window_title"_s, u"Welcome to BrimwellPro"_s)));
    m_view->setHeading(
        manager.localize(BWLocalizableString(u"no_camera_window"_s, u"heading_label"_s, u"Plug in your camera"_s)));
    m_view->setExplanation(manager.localize(BWLocalizableString(
        u"no_camera_window"_s, u"welcome_no_camera_label"_s,
        u"Connect it to a USB port of this computer. For a wireless camera, plug in the receiver and switch the camera "
        "on. The live image then appears by itself. If nothing happens, try another port or cable."_s)));
    m_view->setObstacleHeading(BWStartProblemText::title(manager));
    m_preparing->setText(manager.localize(BWLocalizableString(u"no_camera_window"_s, u"preparing_camera_label"_s,
                                                              u"Camera found, getting it ready..."_s)));
    m_closeButton->setText(
        manager.localize(BWLocalizableString(u"no_camera_window"_s, u"no_thanks_close_button"_s, u"Quit"_s)));
    m_closeButton->setShortcut(u"Ctrl+Q"_s); // the menu's shortcut reaches the main window only
}

void BWNoCameraWindowController::setPreparingCamera(bool preparing)
{
    m_preparing->setPreparing(preparing);
}

void BWNoCameraWindowController::setObstacle(const QString &obstacle)
{
    m_view->setObstacle(obstacle);
}

void BWNoCameraWindowController::onClose()
{
    if (m_terminating)
        return; // ending the program closes this window again
    const QScopedValueRollback guard(m_terminating, true);
    Q_EMIT terminateRequested();
}

void BWNoCameraWindowController::closeEvent(QCloseEvent *event)
{
    event->ignore(); // it stays until the program ends, which the user may call off
    onClose();
}

BWNoCameraSheetWindowController::BWNoCameraSheetWindowController(Callbacks callbacks, BWClock &clock, QWidget *parent)
    : BWNoCameraBaseWindowController(std::move(callbacks), clock, parent),
      m_sheet(this),
      m_view(new BWNoticeView(u"brimwellpro-plug-in"_s)),
      m_preparing(new BWPreparingView),
      m_terminateButton(m_view->addButton())
{
    setWindowFlags(Qt::Sheet);
    m_view->addContent(m_preparing);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_view);
    connect(m_terminateButton, &QPushButton::clicked, this, &BWNoCameraSheetWindowController::onTerminate);
    windowDidLoad();
}

void BWNoCameraSheetWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    const QString heading =
        manager.localize(BWLocalizableString(u"no_camera_sheet"_s, u"heading_label"_s, u"The camera was unplugged"_s));
    setWindowTitle(heading);
    m_view->setHeading(heading);
    m_view->setExplanation(manager.localize(
        BWLocalizableString(u"no_camera_sheet"_s, u"no_camera_label"_s,
                            u"Plug it in again, or plug in another one, to carry on. The snapshots and videos in your "
                            "albums are safe."_s)));
    m_view->setObstacleHeading(BWStartProblemText::title(manager));
    m_preparing->setText(manager.localize(BWLocalizableString(u"no_camera_sheet"_s, u"preparing_camera_label"_s,
                                                              u"Camera found, getting it ready..."_s)));
    m_terminateButton->setText(
        manager.localize(BWLocalizableString(u"no_camera_sheet"_s, u"no_thanks_close_button"_s, u"Quit"_s)));
    m_terminateButton->setShortcut(u"Ctrl+Q"_s); // the sheet blocks the menu's shortcut
}

void BWNoCameraSheetWindowController::setPreparingCamera(bool preparing)
{
    m_preparing->setPreparing(preparing);
}

void BWNoCameraSheetWindowController::setObstacle(const QString &obstacle)
{
    m_view->setObstacle(obstacle);
}

void BWNoCameraSheetWindowController::onTerminate()
{
    m_sheet.endWithCode(1);
}

void BWNoCameraSheetWindowController::closeEvent(QCloseEvent *event)
{
    event->ignore(); // onTerminate() ends it, and it may be open again by now
    onTerminate();
}
