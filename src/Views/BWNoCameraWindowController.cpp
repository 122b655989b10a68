// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/BWNoCameraWindowController.h"

#include "Model/Texts/BWLocalizationManager.h"

#include <QScopedValueRollback>
#include <utility>

using namespace Qt::StringLiterals;

BWNoCameraWindowController::BWNoCameraWindowController(Callbacks callbacks, BWClock &clock, QWidget *cameraWindow)
    : BWNoCameraBaseWindowController(std::move(callbacks), clock, cameraWindow,
                                     Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                                         | Qt::WindowCloseButtonHint)
{
}

void BWNoCameraWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setTexts(
        {manager.text(u"no_camera_window"_s, u"window_title"_s, u"Welcome to BrimwellPro"_s),
         manager.text(u"no_camera_window"_s, u"heading_label"_s, u"Plug in your camera"_s),
         manager.text(u"no_camera_window"_s, u"welcome_no_camera_label"_s,
                      u"Connect it to a USB port of this computer. For a wireless camera, plug in the receiver and "
                      "switch the camera on. The live image then appears by itself. If nothing happens, try "
                      "another port or cable."_s),
         manager.text(u"no_camera_window"_s, u"preparing_camera_label"_s, u"Camera found, getting it ready..."_s),
         manager.text(u"no_camera_window"_s, u"no_thanks_close_button"_s, u"Quit"_s)},
        manager);
}

void BWNoCameraWindowController::onTerminate()
{
    if (m_terminating)
        return; // ending the program closes this window again
    const QScopedValueRollback guard(m_terminating, true);
    Q_EMIT terminateRequested();
}

BWNoCameraSheetWindowController::BWNoCameraSheetWindowController(Callbacks callbacks, BWClock &clock, QWidget *parent)
    : BWNoCameraBaseWindowController(std::move(callbacks), clock, parent, Qt::Sheet)
{
}

void BWNoCameraSheetWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    const QString heading = manager.text(u"no_camera_sheet"_s, u"heading_label"_s, u"The camera was unplugged"_s);
    setTexts({heading, heading,
              manager.text(u"no_camera_sheet"_s, u"no_camera_label"_s,
                           u"Plug it in again, or plug in another one, to carry on. The snapshots and videos in your "
                           "albums are safe."_s),
              manager.text(u"no_camera_sheet"_s, u"preparing_camera_label"_s, u"Camera found, getting it ready..."_s),
              manager.text(u"no_camera_sheet"_s, u"no_thanks_close_button"_s, u"Quit"_s)},
             manager);
}
