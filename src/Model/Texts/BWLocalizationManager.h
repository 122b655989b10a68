// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QHash>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>

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

/// Translates the program's texts from one JSON file, and keeps a catalogue of all texts that were requested, which
/// can be written back in the file's own format with empty slots for the missing translations. GUI thread only.
class BWLocalizationManager {
public:
    using Translations = QJsonObject; ///< language code -> text; an empty text is not translated yet
    using Localizations = QHash<BWLocalizableString, Translations>;

    /// The codes of the languages that the program speaks, English first.
    static QStringList languages();

    /// Two more for tests of layouts, made out of English and offered nowhere: texts that are two fifths longer and have
    /// accents, and windows for texts that are read from right to left.
    static constexpr QLatin1String longerLanguage{"longer"};
    static constexpr QLatin1String mirroredLanguage{"mirrored"};

    /// Reads the file, at once unless all texts are English anyway. A missing or unreadable file is logged and leaves
    /// every text English.
    /// `preferredLanguages` are the user's languages, best first ("de-AT", "en").
    BWLocalizationManager(QString path, QStringList preferredLanguages);

    /// The first preferred language up to its first "-"; null if there are no preferred languages. Fixed once it is known.
    QString preferredLanguage();

    /// Whether the preferred language is read from right to left.
    bool isRightToLeft() const { return m_language == mirroredLanguage; }

    /// The text in the preferred language, or else the string's own English one. A null parent, identifier or value
    /// is fatal.
    QString localize(const BWLocalizableString &string);

    /// The same for a plain text.
    QString text(const QString &parent, const QString &identifier, const QString &value)
    {
        return localize(BWLocalizableString(parent, identifier, value));
    }

    /// Writes the catalogue, sorted by parent and identifier, over what is at `path`. Without a translation
    /// table there is nothing to write. Failures are logged.
    void saveAtPath(const QString &path);

    /// The texts of the file and those requested, each with its latest wording.
    QList<BWLocalizableString> strings();

    /// The translation table; nothing if there was no file.
    const std::optional<Localizations> &localizations();

private:
    bool isEnglish() const;
    void load();
    void readFile();

    QString m_path;
    QStringList m_preferredLanguages;
    bool m_isLoaded = false;
    QString m_language;
    QHash<BWLocalizableString, BWLocalizableString> m_strings;
    std::optional<Localizations> m_localizations;
};

/// Something that shows texts. Its creator calls localizeWithManager() once, right afterwards.
class BWLocalizationManagerDelegate {
public:
    virtual ~BWLocalizationManagerDelegate() = default;

    virtual void localizeWithManager(BWLocalizationManager &manager) = 0;
};
