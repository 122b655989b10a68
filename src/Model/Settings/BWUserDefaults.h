#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// The stored preferences: texts (and a few binary values) by key, kept from one run to the next. GUI thread only.
///
/// Nothing here fails towards the caller: what cannot be read is absent, what cannot be written is logged.
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

    /// Brings everything that was set to disk, and takes in what others have stored there since. Call it once after a
    /// group of changes. False when that failed.
    virtual bool synchronize() = 0;

    /// What to store of values that belong together: `mine` where this program has changed them, which is where they
    /// differ from `known`, those that it read or stored last; elsewhere what is `stored` now, perhaps by another one.
    static QJsonObject merged(QJsonObject mine, const QJsonObject &known, const QJsonObject &stored)
    {
        for (auto value = mine.begin(); value != mine.end(); ++value) {
            if (value.value() == known.value(value.key()) && stored.contains(value.key()))
                value.value() = stored.value(value.key());
        }
        return mine;
    }
};
