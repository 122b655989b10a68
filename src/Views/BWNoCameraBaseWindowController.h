#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/BWLocalizationManagerDelegate.h"

#include <functional>
#include <QDialog>

/// What the windows that stand in for a missing camera share: they keep asking whether an attached camera is still
/// being prepared, also while they are hidden, from the moment they are made. GUI thread.
class BWNoCameraBaseWindowController : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    using PendingDevices = std::function<bool()>;

    /// `pendingDevices` is asked from the constructor of the concrete window on; `clock` must outlive the window.
    BWNoCameraBaseWindowController(PendingDevices pendingDevices, BWClock &clock, QWidget *parent);

    /// Tells whether a camera is being prepared. Nothing to show here.
    virtual void setPreparingCamera(bool preparing);

    /// Escape leads nowhere: there is nothing behind these windows to go back to.
    void reject() override { }

protected:
    /// Called by the concrete window when it is complete.
    virtual void windowDidLoad();

private:
    void watchPendingDevices();

    PendingDevices m_pendingDevices;
    BWClock &m_clock;
};
