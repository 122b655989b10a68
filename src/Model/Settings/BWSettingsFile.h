// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <QByteArray>
#include <QJsonObject>
#include <QSettings>
#include <QString>

/// The stored preferences: texts (and a few binary values) by key, kept from one run to the next. GUI thread only.
///
/// Errors do not reach the caller: what cannot be read is absent, what cannot be written is logged.
class BWUserDefaults {
public:
    virtual ~BWUserDefaults() = default;

    /// The stored text; null when the key is absent or holds something that is not a text.
    virtual QString string(const QString &key) const = 0;
    /// A null text removes the key.
    virtual void setString(const QString &key, const QString &value) = 0;

    /// The stored binary value; null when the key is absent or holds something else.
    virtual QByteArray data(const QString &key) const = 0;
    /// A null value removes the key.
    virtual void setData(const QString &key, const QByteArray &value) = 0;

    /// Writes all changes to disk and reads what others have stored there since. Call it once after a group of changes.
    /// False if that failed.
    virtual bool synchronize() = 0;
    /// False if the last synchronize() failed: changes then last only for this run.
    virtual bool isStored() const = 0;

    /// What to store of a group of values: `mine` where this program changed them, that is, where they differ from `known`,
    /// the values that it read or stored last; elsewhere what is `stored` now, perhaps by another program.
    static QJsonObject merged(QJsonObject mine, const QJsonObject &known, const QJsonObject &stored)
    {
        for (auto value = mine.begin(); value != mine.end(); ++value) {
            if (value.value() == known.value(value.key()) && stored.contains(value.key()))
                value.value() = stored.value(value.key());
        }
        return mine;
    }
};

/// User defaults in one INI file, which each synchronize() replaces atomically.
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
    bool isStored() const override { return m_isUsable && !m_failed; }

private:
    bool storeWhole();
    bool isWhole() const;

    std::unique_ptr<QSettings> m_settings;
    bool m_isUsable = true; ///< if not, values last only for this run
    bool m_failed = false; ///< at the last attempt to store
};
