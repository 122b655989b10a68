#pragma once

#include <QHash>
#include <QString>

/// A text to be shown: where it belongs (`parent`), its name there (`identifier`) and its English wording (`value`).
/// Two are equal when parent and identifier are, whatever the wording.
class BWLocalizableString {
public:
    BWLocalizableString() = default;
    BWLocalizableString(QString parent, QString identifier, QString value, bool isHTML = false);

    const QString &parent() const { return m_parent; }
    const QString &identifier() const { return m_identifier; }
    const QString &value() const { return m_value; }
    /// The text is an HTML fragment; whoever shows it renders it.
    bool isHTML() const { return m_isHTML; }

    friend bool operator==(const BWLocalizableString &a, const BWLocalizableString &b)
    {
        return a.m_parent == b.m_parent && a.m_identifier == b.m_identifier;
    }

private:
    QString m_parent;
    QString m_identifier;
    QString m_value;
    bool m_isHTML = false;
};

size_t qHash(const BWLocalizableString &string, size_t seed = 0) noexcept;
