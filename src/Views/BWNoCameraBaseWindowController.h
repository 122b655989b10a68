#pragma once

#include "BWACUDriver/BWClock.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QDialog>

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
