// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <chrono>
#include <functional>
#include <QObject>

/// Whether something shows that gets out of the way by itself: it shows while it is held, and a while longer. Hidden at
/// first. GUI thread.
class BWAutoHide : public QObject {
    Q_OBJECT

public:
    using Changed = std::function<void(bool shown)>;

    /// `changed` may call back. No timer runs while it is hidden or held.
    BWAutoHide(std::chrono::milliseconds wait, Changed changed, BWClock &clock = BWClock::system());
    ~BWAutoHide() override;

    /// Shows it as long as there is a reason to, and for the wait after that.
    void setHeld(bool held);
    /// Shows it for the wait from now on.
    void show();
    /// Ends holding as well.
    void hide();

    bool isShown() const { return m_shown; }

private:
    void wait(std::chrono::nanoseconds time);
    void setShown(bool shown);

    const std::chrono::nanoseconds m_wait;
    Changed m_changed;
    BWClock &m_clock;
    std::chrono::nanoseconds m_quietSince{0};
    DispatchAfterStrict::Handle m_timer; ///< one, however often it is shown
    bool m_held = false;
    bool m_shown = false;
};
