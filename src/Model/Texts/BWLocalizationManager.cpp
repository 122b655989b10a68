// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Texts/BWLocalizationManager.h"

#include "Utils/BWLogging.h"

#include <algorithm>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Every vowel twice. What is no text stays: placeholders, access keys, markup.
QString longerText(const QString &english)
{
    const QString vowels = u"aeiouAEIOU"_s;
    const QString accented = u"âêîôûÂÊÎÔÛ"_s;
    QString text;
    bool inMarkup = false;
    for (const QChar letter : english) {
        inMarkup = letter == u'<' || (inMarkup && letter != u'>');
        text += letter;
        if (const qsizetype vowel = vowels.indexOf(letter); vowel >= 0 && !inMarkup)
            text += accented[vowel];
    }
    return text;
}

} // namespace

BWLocalizableString::BWLocalizableString(QString parent, QString identifier, QString value, bool isHTML)
    : m_parent(std::move(parent)), m_identifier(std::move(identifier)), m_value(std::move(value)), m_isHTML(isHTML)
{
}

size_t qHash(const BWLocalizableString &string, size_t seed) noexcept
{
    return qHash(string.parent(), seed) ^ qHash(string.identifier(), seed);
}

QStringList BWLocalizationManager::languages()
{
    return {u"en"_s, u"de"_s, u"es"_s, u"fr"_s, u"ja"_s};
}

BWLocalizationManager::BWLocalizationManager(QString path, QStringList preferredLanguages)
    : m_path(std::move(path)), m_preferredLanguages(std::move(preferredLanguages))
{
    preferredLanguage();
    if (!isEnglish())
        load();
}

QString BWLocalizationManager::preferredLanguage()
{
    if (m_language.isNull() && !m_preferredLanguages.isEmpty())
        m_language = m_preferredLanguages.first().section(u'-', 0, 0);
    return m_language;
}

bool BWLocalizationManager::isEnglish() const
{
    return m_language.isNull() || m_language == "en"_L1 || m_language == "C"_L1; // no language was chosen
}

void BWLocalizationManager::load()
{
    if (std::exchange(m_isLoaded, true))
        return;
    const auto requested = std::exchange(m_strings, {});
    readFile();
    for (const BWLocalizableString &string : requested)
        localize(string);
}

void BWLocalizationManager::readFile()
{
    QFile file(m_path);
    if (!file.exists()) {
        qCWarning(bwModel).noquote() << "No translations: there is no" << m_path;
        return;
    }
    m_localizations.emplace();
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(bwModel).noquote() << "No translations:" << m_path << file.errorString();
        return;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isArray()) {
        qCWarning(bwModel).noquote() << "No translations:" << m_path << error.errorString() << "at" << error.offset;
        return;
    }
    const QJsonArray elements = document.array();
    for (const QJsonValue value : elements) {
        const QJsonObject element = value.toObject();
        const BWLocalizableString string(element["parent"_L1].toString(), element["identifier"_L1].toString(),
                                         element["source_value"_L1].toString(),
                                         element["format"_L1].toString() == "html"_L1);
        if (!m_strings.contains(string))
            m_strings.insert(string, string);
        m_localizations->insert(string, element["localizations"_L1].toObject());
    }
}

QString BWLocalizationManager::localize(const BWLocalizableString &string)
{
    if (string.parent().isNull() || string.identifier().isNull() || string.value().isNull())
        qFatal("A text without parent, identifier or value: \"%s\" \"%s\" \"%s\"", qPrintable(string.parent()),
               qPrintable(string.identifier()), qPrintable(string.value()));

    const bool isHTML = m_strings.value(string, string).isHTML();
    m_strings.insert(string, BWLocalizableString(string.parent(), string.identifier(), string.value(), isHTML));
    if (m_localizations && !m_localizations->contains(string)) {
        // What a later saveAtPath() lists as still to be translated.
        Translations &missing = (*m_localizations)[string];
        for (const QString &language : languages().sliced(1))
            missing.insert(language, u""_s);
    }

    if (m_localizations && !isEnglish()) {
        QString translation = m_localizations->value(string).value(m_language).toString();
        if (!translation.isEmpty())
            return translation;
    }
    return m_language == longerLanguage ? longerText(string.value()) : string.value();
}

QList<BWLocalizableString> BWLocalizationManager::strings()
{
    load();
    return m_strings.values();
}

const std::optional<BWLocalizationManager::Localizations> &BWLocalizationManager::localizations()
{
    load();
    return m_localizations;
}

void BWLocalizationManager::saveAtPath(const QString &path)
{
    load();
    if (!m_localizations) {
        qCWarning(bwModel).noquote() << "There are no translations to write to" << path;
        return;
    }
    QList<BWLocalizableString> strings = m_strings.values();
    std::sort(strings.begin(), strings.end(), [](const BWLocalizableString &a, const BWLocalizableString &b) {
        return std::tie(a.parent(), a.identifier()) < std::tie(b.parent(), b.identifier());
    });
    QJsonArray array;
    for (const BWLocalizableString &string : strings) {
        array.append(QJsonObject{{u"parent"_s, string.parent()},
                                 {u"identifier"_s, string.identifier()},
                                 {u"source_value"_s, string.value()},
                                 {u"format"_s, string.isHTML() ? u"html"_s : u"text"_s},
                                 {u"localizations"_s, m_localizations->value(string)}});
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(array).toJson()) < 0 || !file.commit())
        qCWarning(bwModel).noquote() << "Translations cannot be written to" << path << file.errorString();
}
