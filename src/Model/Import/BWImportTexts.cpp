// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Import/BWImportTexts.h"

#include "Model/Import/BWPropertyList.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <QDir>
#include <QFileInfo>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The counts that are not zero, each in its text.
QString listed(const QList<std::pair<QString, int>> &counts, BWLocalizationManager &texts)
{
    QStringList parts;
    for (const auto &[text, count] : counts) {
        if (count > 0)
            parts.append(text.arg(count));
    }
    return parts.join(texts.text(u"import"_s, u"list_separator"_s, u", "_s));
}

} // namespace

QString BWImportTexts::nameOf(const QString &path)
{
    QString name = QFileInfo(QDir::cleanPath(path)).fileName();
    for (QChar &character : name) {
        if (character.category() == QChar::Other_Control)
            character = QChar::ReplacementCharacter;
    }
    return name.isEmpty() ? path : name;
}

QString BWImportTexts::takenOver(const BWOldSettingsImporter::Result &result, const QString &name,
                                 BWLocalizationManager &texts)
{
    QString taken = listed({{texts.text(u"import"_s, u"cameras"_s, u"cameras (%1)"_s), result.cameras},
                            {texts.text(u"import"_s, u"products"_s, u"products (%1)"_s), result.products},
                            {texts.text(u"import"_s, u"albums"_s, u"albums (%1)"_s), result.albums}},
                           texts);
    if (taken.isEmpty())
        taken = texts.text(u"import"_s, u"nothing"_s, u"nothing"_s);
    const QString skipped =
        listed({{texts.text(u"import"_s, u"unknown_cameras"_s, u"unknown cameras (%1)"_s), result.unknownCameras},
                {texts.text(u"import"_s, u"unknown_products"_s, u"unknown products (%1)"_s), result.unknownProducts},
                {texts.text(u"import"_s, u"missing_albums"_s, u"albums whose folders are not on this computer (%1)"_s),
                 result.missingFolders},
                {texts.text(u"import"_s, u"known_albums"_s, u"albums that are in the list already (%1)"_s),
                 result.knownAlbums}},
               texts);
    if (skipped.isEmpty())
        return texts.text(u"import"_s, u"taken_over"_s, u"Taken over from “%1”: %2."_s).arg(name, taken);
    return texts.text(u"import"_s, u"taken_over_and_skipped"_s, u"Taken over from “%1”: %2; left out: %3."_s)
        .arg(name, taken, skipped);
}

QString BWImportTexts::refused(const BWOldSettingsFile &file, const QString &name, BWLocalizationManager &texts)
{
    using Problem = BWOldSettingsFile::Problem;
    switch (file.problem) {
    case Problem::NotThere:
        return texts.text(u"import"_s, u"not_there"_s, u"There is no file “%1”."_s).arg(name);
    case Problem::Unreadable:
        return texts.text(u"import"_s, u"unreadable"_s, u"“%1” cannot be read: %2."_s).arg(name, file.detail);
    case Problem::TooLarge:
        return texts
            .text(u"import"_s, u"too_large"_s, u"“%1” is larger than %2 MB, too large to be a file of settings."_s)
            .arg(name, QString::number(BWPropertyList::maximumBytes >> 20));
    case Problem::NothingOld:
        return texts
            .text(u"import"_s, u"nothing_old"_s, u"“%1” holds no settings of the previous generation of BrimwellPro."_s)
            .arg(name);
    case Problem::Damaged:
        return texts.text(u"import"_s, u"damaged"_s, u"The old settings in “%1” are damaged; nothing was taken over."_s)
            .arg(name);
    case Problem::Foreign:
    case Problem::None:
        break;
    }
    return texts.text(u"import"_s, u"foreign"_s, u"“%1” is no file of settings, or it is damaged."_s).arg(name);
}

QString BWImportTexts::notStored(BWLocalizationManager &texts)
{
    return texts.text(u"import"_s, u"not_stored"_s,
                      u"The old settings cannot be stored: the file of BrimwellPro’s settings cannot be written."_s);
}

QString BWImportTexts::programRuns(BWLocalizationManager &texts)
{
    return texts.text(u"import"_s, u"program_runs"_s,
                      u"BrimwellPro is open: quit it first, or choose “Import old settings” in its File menu."_s);
}
