// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Settings/BWSettingsLock.h"

#include <chrono>
#include <functional>
#include <memory>
#include <QByteArray>

class QSocketNotifier;

/// Lets only one program with windows run on the same settings: a later one asks it to come to the front, and ends. Works
/// before there is an application object. GUI thread.
class BWSingleInstance {
public:
    enum class Start {
        First, ///< no other instance, or none any more
        HandedOver, ///< the other one has come to the front
        NoAnswer, ///< another one exists, but neither answers nor ends
    };

    /// Asks whoever uses the settings in that file to come to the front, with the token that the desktop gave to this
    /// start (empty if none), and waits for the answer, or for the end of one that is about to quit.
    explicit BWSingleInstance(const QString &settingsFile, const QByteArray &activationToken = {},
                              std::chrono::milliseconds patience = std::chrono::seconds(10));
    ~BWSingleInstance();
    BWSingleInstance(const BWSingleInstance &) = delete;
    BWSingleInstance &operator=(const BWSingleInstance &) = delete;

    Start start() const { return m_start; }

    /// Comes to the front; false if the program is about to end. Requests since the start are answered now.
    using BringForward = std::function<bool(const QByteArray &activationToken)>;
    void setBringForward(BringForward bringForward);

private:
    Start askOther(const QByteArray &activationToken, std::chrono::milliseconds patience);
    void listen();
    void answer();

    BWSettingsLock m_use;
    Start m_start;
    int m_socket = -1;
    QByteArray m_note; ///< the address of this program, and the secret that requests must quote
    BringForward m_bringForward;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
