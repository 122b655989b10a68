// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QDialog>

class BWNoticeView;
class BWPreparingView;
class QAction;
class QPushButton;

/// The common base of the windows that stand in for a missing camera: a notice, and a button that quits. They show
/// whether an attached camera is still being prepared. No button has the keyboard when they open. GUI thread.
class BWNoCameraBaseWindowController : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// What is asked; either may be missing.
    struct Callbacks {
        std::function<bool()> pendingDevices{};
        std::function<QString()> obstacle{}; ///< what keeps an attached camera from appearing; null if nothing does
    };

    /// Asks anew, as must be done when the answers may have changed. While a camera is being prepared, it asks again by
    /// itself every 0.3 seconds; at other times it leaves the processor alone.
    void watchPendingDevices();

    /// Shows whether a camera is being prepared.
    void setPreparingCamera(bool preparing);
    /// Shows what keeps a camera from appearing in place of the usual text; null if nothing does.
    void setObstacle(const QString &obstacle);

    /// While this is enabled, its key works here, too, and a button shows it. It must outlive the window.
    void showAction(QAction &action);

    /// The user wants to quit: pressed the button, or closed the window.
    virtual void onTerminate() = 0;
    /// Escape leads nowhere: there is nothing behind these windows to go back to.
    void reject() override { }

protected:
    struct Texts {
        QString title;
        QString heading;
        QString explanation;
        QString preparing;
        QString quit;
    };

    /// `clock` must outlive the window.
    BWNoCameraBaseWindowController(Callbacks callbacks, BWClock &clock, QWidget *parent, Qt::WindowFlags flags);

    void setTexts(const Texts &texts, BWLocalizationManager &manager);

    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    Callbacks m_callbacks;
    BWClock &m_clock;
    DispatchAfterStrict::Handle m_next;
    BWNoticeView *m_view;
    BWPreparingView *m_preparing;
    QPushButton *m_actionButton;
    QPushButton *m_quitButton;
};
