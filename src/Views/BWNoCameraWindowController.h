#pragma once

#include "BWACUDriver/BWClock.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/Windows/BWSheet.h"

#include <functional>
#include <QDialog>

class BWNoticeView;
class BWPreparingView;
class QPushButton;

/// The common base of the windows that stand in for a missing camera. From their creation on, also while hidden, they
/// poll whether an attached camera is still being prepared. No button has the keyboard when they open. GUI thread.
class BWNoCameraBaseWindowController : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// What is polled; either may be missing.
    struct Callbacks {
        std::function<bool()> pendingDevices{};
        std::function<QString()> obstacle{}; ///< what keeps an attached camera from appearing; null if nothing does
    };

    /// `callbacks` are polled from the constructor of the concrete window on; `clock` must outlive the window.
    BWNoCameraBaseWindowController(Callbacks callbacks, BWClock &clock, QWidget *parent);

    /// Shows whether a camera is being prepared. Does nothing in the base.
    virtual void setPreparingCamera(bool preparing);
    /// Shows what keeps a camera from appearing in place of the usual text; null if nothing does.
    virtual void setObstacle(const QString &obstacle) = 0;

    /// Escape leads nowhere: there is nothing behind these windows to go back to.
    void reject() override { }

protected:
    /// Called by the concrete window when it is complete.
    virtual void windowDidLoad();
    void showEvent(QShowEvent *event) override;

private:
    void watchPendingDevices();

    Callbacks m_callbacks;
    BWClock &m_clock;
};

/// The welcome window: stands alone until the first camera of the run is there, above the empty camera window, which a
/// click would bring before it otherwise. Closing it ends the program.
class BWNoCameraWindowController final : public BWNoCameraBaseWindowController {
    Q_OBJECT

public:
    explicit BWNoCameraWindowController(Callbacks callbacks, BWClock &clock = BWClock::system(),
                                        QWidget *cameraWindow = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;
    void setPreparingCamera(bool preparing) override;
    void setObstacle(const QString &obstacle) override;

    void onClose();

Q_SIGNALS:
    /// The user wants to quit. Not emitted again while a receiver is still at work.
    void terminateRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    BWNoticeView *m_view;
    BWPreparingView *m_preparing;
    QPushButton *m_closeButton;
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
    void setPreparingCamera(bool preparing) override;
    void setObstacle(const QString &obstacle) override;

    void beginSheet(QWidget *window, BWSheet::Completion completion) { m_sheet.begin(window, std::move(completion)); }
    /// Closes the sheet without a result.
    void end() { m_sheet.end(); }
    bool isSheetOpen() const { return m_sheet.isOpen(); }

    void onTerminate();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    BWSheet m_sheet;
    BWNoticeView *m_view;
    BWPreparingView *m_preparing;
    QPushButton *m_terminateButton;
};
