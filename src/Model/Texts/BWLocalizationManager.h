#pragma once

#include "Model/Texts/BWLocalizableString.h"

#include <optional>
#include <QHash>
#include <QMap>
#include <QStringList>

/// Translates the program's texts from one JSON file, and keeps a catalogue of all texts that were asked for, which
/// can be written back in the file's own format with empty slots for the missing translations. GUI thread only.
class BWLocalizationManager {
public:
    using Translations = QMap<QString, QString>; ///< language code -> text; an empty text is not translated yet
    using Localizations = QHash<BWLocalizableString, Translations>;

    /// Reads the file. A missing or unreadable file is logged and leaves every text English.
    /// `preferredLanguages` are the user's languages, best first ("de-AT", "en").
    BWLocalizationManager(QString path, QStringList preferredLanguages);

    /// The first preferred language up to its first "-"; null when there is none. Fixed once it is known.
    QString preferredLanguage();

    /// The text in the preferred language, or else the string's own English one. A null parent, identifier or value
    /// is a mistake in the program and ends it.
    QString localize(const BWLocalizableString &string);

    /// The same for a plain text.
    QString text(const QString &parent, const QString &identifier, const QString &value)
    {
        return localize(BWLocalizableString(parent, identifier, value));
    }

    /// Writes the catalogue, sorted by parent and identifier, in place of what is at `path`. Without a translation
    /// table there is nothing to write. Failures are logged.
    void saveAtPath(const QString &path) const;

    /// The texts of the file and those asked for, each with the wording it was last asked for with.
    QList<BWLocalizableString> strings() const { return m_strings.values(); }

    /// The translation table; nothing when there was no file.
    const std::optional<Localizations> &localizations() const { return m_localizations; }

private:
    void load();

    QString m_path;
    QStringList m_preferredLanguages;
    QString m_language;
    QHash<BWLocalizableString, BWLocalizableString> m_strings;
    std::optional<Localizations> m_localizations;
};
