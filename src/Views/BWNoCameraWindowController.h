// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Views/BWNoCameraBaseWindowController.h"
#include "Views/Utils/Windows/BWSheet.h"

/// The welcome window: stands alone until the first camera of the run is there, above the empty camera window, which a
/// click would bring before it otherwise. Closing it ends the program.
class BWNoCameraWindowController final : public BWNoCameraBaseWindowController {
    Q_OBJECT

public:
    explicit BWNoCameraWindowController(Callbacks callbacks, BWClock &clock = BWClock::system(),
                                        QWidget *cameraWindow = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;
    /// The window stays until the program ends.
    void onTerminate() override;

Q_SIGNALS:
    /// The user wants to quit. Not emitted again while a receiver is still at work.
    void terminateRequested();

private:
    bool m_terminating = false;
};

/// The sheet on the main window when the camera in use has gone away. Its result code is 1 when the user wants the
/// program to end; there is no other way out but a camera that comes, upon which the sheet is ended from outside.
class BWNoCameraSheetWindowController final : public BWNoCameraBaseWindowController {
    Q_OBJECT

public:
    explicit BWNoCameraSheetWindowController(Callbacks callbacks, BWClock &clock = BWClock::system(),
                                             QWidget *parent = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;
    void onTerminate() override { m_sheet.endWithCode(1); }

    void beginSheet(QWidget *window, BWSheet::Completion completion) { m_sheet.begin(window, std::move(completion)); }
    /// Closes the sheet without a result.
    void end() { m_sheet.end(); }
    bool isSheetOpen() const { return m_sheet.isOpen(); }

private:
    BWSheet m_sheet{this};
};
