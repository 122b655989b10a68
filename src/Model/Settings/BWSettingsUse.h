#pragma once

#include <QByteArray>
#include <QString>

/// Tells the programs that use the same settings of each other, so that none changes them under another's hands:
/// whoever wants to change them, be it the program with windows or an import from outside, has them alone. Ends with the
/// object, or with the process however that ends.
class BWSettingsUse {
public:
    /// For the settings in that file; makes a small file beside it, and asks once.
    explicit BWSettingsUse(const QString &settingsFile);
    ~BWSettingsUse();
    BWSettingsUse(const BWSettingsUse &) = delete;
    BWSettingsUse &operator=(const BWSettingsUse &) = delete;

    /// False only while another program has the settings. Where the small file cannot be used nobody is known to.
    bool isGranted() const { return m_isGranted; }
    /// Asks again, without waiting.
    bool tryAgain();

    /// Who has the settings can leave a line for those who have to wait, such as where it can be reached. It may be left
    /// over from one that has ended; empty if there is none.
    void setNote(const QByteArray &note);
    QByteArray note() const;

private:
    const QString m_settingsFile;
    int m_descriptor = -1;
    bool m_isGranted = true;
};
