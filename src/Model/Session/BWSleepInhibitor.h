// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWWorkerPool.h"

#include <memory>
#include <QByteArray>
#include <QString>
#include <set>

/// Keeps the computer from going to sleep, and the screen from being locked, by itself while something runs that must not
/// be interrupted. Asks the desktop over the session's D-Bus, else systemd's login manager; nothing waits for the answer.
/// Whoever keeps the computer awake ends that by itself if the program is killed. GUI thread.
class BWSleepInhibitor {
public:
    enum class Reason { Recording, Series, Export };

    BWSleepInhibitor();
    ~BWSleepInhibitor();
    BWSleepInhibitor(const BWSleepInhibitor &) = delete;
    BWSleepInhibitor &operator=(const BWSleepInhibitor &) = delete;

    /// What the desktop may tell the user who asks why the computer stays awake.
    void setExplanation(const QString &explanation) { m_explanation = explanation.toUtf8(); }

    /// That reason holds from now on, or no longer. The computer stays awake as long as there is any.
    void setActive(Reason reason, bool active);

private:
    class Request;

    QByteArray m_explanation = "BrimwellPro";
    std::set<Reason> m_reasons;
    std::shared_ptr<Request> m_request; ///< as long as there is a reason
    BWWorkerPool m_worker;
};
