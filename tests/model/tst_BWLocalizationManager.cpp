// SPDX-License-Identifier: GPL-3.0-or-later
#include "AbortCheck.h"
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "TestFolder.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// JSON text with ' for ".
QByteArray json(QByteArray text)
{
    return text.replace('\'', '"');
}

} // namespace

class TestLocalization : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder.emplace();
    }

    void languages_data()
    {
        const Rows<QStringList, QString, QString> row;
        row("de-AT", QStringList{u"de-AT"_s, u"fr"_s}, u"de"_s, u"Abbrechen"_s);
        row("fr", QStringList{u"fr"_s}, u"fr"_s, u"Cancel"_s); // its translation is empty
        row("zh-Hans-CN", QStringList{u"zh-Hans-CN"_s}, u"zh"_s, u"Cancel"_s);
        row("en-GB", QStringList{u"en-GB"_s, u"de"_s}, u"en"_s, u"Cancel"_s);
        row("none", QStringList{}, QString(), u"Cancel"_s);
        row("longer", QStringList{u"longer"_s}, u"longer"_s, u"Caânceêl"_s);
        row("mirrored", QStringList{u"mirrored"_s}, u"mirrored"_s, u"Cancel"_s);
    }
    void languages()
    {
        const auto [languages, code, shown] = Rows<QStringList, QString, QString>::current();
        BWLocalizationManager manager(
            write(json("[5, null, {'parent':1,'localizations':[]}, {'parent':'a','identifier':'y','format':'html'}, "
                       "{'parent':'a','identifier':'x','source_value':'first','localizations':{'de':'erster'}}, "
                       "{'parent':'a','identifier':'x','source_value':'Old wording','format':'text',"
                       "'localizations':{'de':'Abbrechen','fr':'','en':'Not shown','zh':7}}]")),
            languages);
        QCOMPARE(manager.preferredLanguage(), code);
        QCOMPARE(manager.isRightToLeft(), code == u"mirrored"_s);
        QCOMPARE(manager.text(u"a"_s, u"x"_s, u"Cancel"_s), shown);
        QCOMPARE(manager.text(u"a"_s, u"y"_s, u"<b>y</b>"_s), u"<b>y</b>"_s);
    }

    /// English texts do not wait for the file; what it has is added when somebody asks.
    void textsRequestedBeforeTheFile()
    {
        BWLocalizationManager manager(write(json("[{'parent':'a','identifier':'x','source_value':'Old','format':'html',"
                                                 "'localizations':{'de':'Abbrechen'}}]")),
                                      {u"en"_s});
        QCOMPARE(manager.text(u"a"_s, u"x"_s, u"Cancel"_s), u"Cancel"_s);
        manager.text(u"a"_s, u"new"_s, u"New"_s);
        QCOMPARE(wordings(manager.strings()), QStringList({u"a/new: New"_s, u"a/x: Cancel"_s}));
        const auto table = manager.localizations();
        QCOMPARE(table->value({u"a"_s, u"x"_s, {}})["de"_L1].toString(), u"Abbrechen"_s);
        QVERIFY(table->value({u"a"_s, u"new"_s, {}}).contains("ja"_L1));
    }

    void unusableFiles()
    {
        for (const QByteArray &content : {QByteArray(), QByteArray("[{\"parent\":\"a\""), QByteArray("{}")}) {
            const QString path = content.isNull() ? m_folder->path(u"none"_s) : write(content);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No translations"_s));
            BWLocalizationManager manager(path, {u"de"_s});
            QCOMPARE(manager.text(u"a"_s, u"b"_s, u"English"_s), u"English"_s);
            QCOMPARE(manager.localizations().has_value(), !content.isNull());
        }
    }

    /// Texts that the sources look up by variables, so that tools/check_texts cannot see them.
    void deliveredFileHasTheTextsOfTables()
    {
        BWLocalizationManager manager(u":/localization.json"_s, {u"de-DE"_s});
        const auto known = manager.strings();
        QVERIFY(known.size() > 150);
        BWSettingsFile defaults(m_folder->path(u"settings.conf"_s));
        BWConfigManager(defaults).localizeWithManager(manager);
        for (int code = BWSettingHue; code <= BWSettingVideoNorm; ++code) {
            const QString identifier = BWCameraSetting::stringForSettingIdentifier(code);
            if (!identifier.isNull())
                manager.text(u"camera_setting"_s, identifier, BWCameraSetting::nameForSettingIdentifier(code));
        }
        for (const BWCameraDescriptionPtr &type : BWCameraDetector::supportedDescriptions())
            manager.text(u"camera_type"_s, type->identifierForCameraType, type->name);
        QCOMPARE(wordings(manager.strings()), wordings(known));
        QCOMPARE(manager.text(u"camera_product"_s, u"mx62"_s, u"Polarizing Microscope MX62"_s),
                 u"Polarisationsmikroskop MX62"_s);
    }

    void deliveredFileIsWrittenAsSaved()
    {
        const QString delivered = u"" BW_LOCALIZATION_FILE ""_s;
        BWLocalizationManager(delivered, {}).saveAtPath(m_folder->path(u"saved.json"_s));
        QCOMPARE(TestFolder::read(m_folder->url(u"saved.json"_s)), TestFolder::read(QUrl::fromLocalFile(delivered)));
    }

    void missingKeysEndTheProgram()
    {
        BWLocalizationManager manager(write("[]"), {u"de"_s});
        QVERIFY(aborts([&] { manager.text(QString(), u"identifier"_s, u"value"_s); }));
        QVERIFY(aborts([&] { manager.text(u"parent"_s, QString(), u"value"_s); }));
        QVERIFY(aborts([&] { manager.text(u"parent"_s, u"identifier"_s, QString()); }));
    }

private:
    QString write(const QByteArray &content) const { return m_folder->file(u"texts.json"_s, content).toLocalFile(); }

    static QStringList wordings(const QList<BWLocalizableString> &strings)
    {
        QStringList result;
        for (const BWLocalizableString &string : strings)
            result.append(u"%1/%2: %3"_s.arg(string.parent(), string.identifier(), string.value()));
        result.sort();
        return result;
    }

    std::optional<TestFolder> m_folder;
};

QTEST_GUILESS_MAIN(TestLocalization)
#include "tst_BWLocalizationManager.moc"
