#pragma once

#include "BWACUDriver/BWClock.h"
#include "Model/Texts/BWLocalizationManagerDelegate.h"

#include <functional>
#include <QDialog>

/// What the windows that stand in for a missing camera share: they keep asking whether an attached camera is still
/// being prepared, also while they are hidden, from the moment they are made. They open with the keyboard on none of
/// their buttons. GUI thread.
class BWNoCameraBaseWindowController : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// What is asked again and again; either may be missing.
    struct Callbacks {
        std::function<bool()> pendingDevices{};
        std::function<QString()> obstacle{}; ///< what keeps an attached camera from appearing; null if nothing does
    };

    /// `callbacks` are asked from the constructor of the concrete window on; `clock` must outlive the window.
    BWNoCameraBaseWindowController(Callbacks callbacks, BWClock &clock, QWidget *parent);

    /// Tells whether a camera is being prepared. Nothing to show here.
    virtual void setPreparingCamera(bool preparing);
    /// Tells what keeps a camera from appearing, in place of what the window says otherwise; null: nothing does.
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
