// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// Makes sure that only one process changes the settings at a time: the program with windows, or an import from the
/// command line. The lock ends with the object or with the process, however that ends.
class BWSettingsLock {
public:
    /// For the settings in that file. Makes a small file beside it and tries once to lock that.
    explicit BWSettingsLock(const QString &settingsFile);
    ~BWSettingsLock();
    BWSettingsLock(const BWSettingsLock &) = delete;
    BWSettingsLock &operator=(const BWSettingsLock &) = delete;

    /// False only while another process holds the lock. Granted where the small file cannot be used.
    bool isGranted() const { return m_isGranted; }
    /// Tries again, without waiting.
    bool tryAgain();

    /// The holder can leave a line for those that have to wait, such as how to reach it. It may be left over from a process
    /// that has ended; empty if there is no line.
    void setNote(const QByteArray &note);
    QByteArray note() const;

private:
    const QString m_settingsFile;
    int m_descriptor = -1;
    bool m_isGranted = true;
};
