#pragma once

#include "Model/Settings/BWUserDefaults.h"

#include <memory>
#include <QSettings>

/// User defaults in one INI file, written as a whole and atomically at each synchronize().
class BWSettingsFile : public BWUserDefaults {
public:
    /// The file and its folder need not exist; nothing is created before something is stored.
    explicit BWSettingsFile(const QString &path = defaultPath());

    /// BrimwellPro/BrimwellPro.conf in the user's folder for configuration files.
    static QString defaultPath();

    QString string(const QString &key) const override;
    void setString(const QString &key, const QString &value) override;
    QByteArray data(const QString &key) const override;
    void setData(const QString &key, const QByteArray &value) override;
    bool synchronize() override;

private:
    std::unique_ptr<QSettings> m_settings;
    bool m_isUsable = true; ///< else what is set is kept for this run only
    bool m_failed = false; ///< the last time that it was to be stored
};
