#pragma once

#include <QString>

/// Tells the programs that use the same settings of each other, so that none changes them under another's hands: each
/// program with windows holds a share, and whoever wants to change the settings from outside needs them alone. Ends
/// with the object, or with the process however that ends.
class BWSettingsUse {
public:
    enum class Kind { Shared, Alone };

    /// For the settings in that file; makes a small file beside it. A share is waited for as long as another program has
    /// them alone, which takes no longer than a moment.
    BWSettingsUse(const QString &settingsFile, Kind kind);
    ~BWSettingsUse();
    BWSettingsUse(const BWSettingsUse &) = delete;
    BWSettingsUse &operator=(const BWSettingsUse &) = delete;

    /// False only when others use the settings. Where the small file cannot be made nobody is known to.
    bool isGranted() const { return m_isGranted; }

private:
    int m_descriptor = -1;
    bool m_isGranted = true;
};
