#include "AbortCheck.h"
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"
#include "Model/BWConfigManager.h"
#include "Model/BWLocalizationManager.h"
#include "Model/BWSettingsFile.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// JSON text with ' for ", and ` for one inside a string.
QByteArray json(QByteArray text)
{
    return text.replace('\'', '"').replace('`', '"');
}

} // namespace

class TestLocalization : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_dir.emplace();
    }

    void languages_data()
    {
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("shown");
        QTest::newRow("de-AT") << QStringList{u"de-AT"_s, u"fr"_s} << u"de"_s << u"Abbrechen"_s;
        QTest::newRow("fr") << QStringList{u"fr"_s} << u"fr"_s << u"Cancel"_s; // its translation is empty
        QTest::newRow("zh-Hans-CN") << QStringList{u"zh-Hans-CN"_s} << u"zh"_s << u"Cancel"_s;
        QTest::newRow("en-GB") << QStringList{u"en-GB"_s, u"de"_s} << u"en"_s << u"Cancel"_s;
        QTest::newRow("none") << QStringList{} << QString() << u"Cancel"_s;
    }

    void languages()
    {
        QFETCH(QStringList, languages);
        const QString path =
            write(json("[{'parent':'general','identifier':'option_cancel','source_value':'Old wording', "
                       "'format':'text','localizations':{'de':'Abbrechen','fr':'','en':'Not shown'}}]"));
        BWLocalizationManager manager(path, languages);
        QTEST(manager.preferredLanguage(), "code");
        QTEST(manager.text(u"general"_s, u"option_cancel"_s, u"Cancel"_s), "shown");
    }

    void unusableFiles_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("cut off") << QByteArray("[{\"parent\":\"a\"");
        QTest::newRow("object") << QByteArray("{}");
    }

    void unusableFiles()
    {
        QFETCH(QByteArray, content);
        const QString path = content.isNull() ? m_dir->filePath(u"none"_s) : write(content);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No translations"_s));
        BWLocalizationManager manager(path, {u"de"_s});
        QCOMPARE(manager.text(u"a"_s, u"b"_s, u"English"_s), u"English"_s);
        QCOMPARE(manager.strings().size(), 1);
        QCOMPARE(manager.localizations().has_value(), !content.isNull());
    }

    void elementsOfAnyShape()
    {
        BWLocalizationManager manager(
            write(json("[5, null, {'parent':1,'localizations':[]}, "
                       "{'parent':'a','identifier':'x','source_value':'first','localizations':{'de':'erster','ja':7}}, "
                       "{'parent':'a','identifier':'x','source_value':'second','localizations':{'de':'zweiter'}}, "
                       "{'parent':'a','identifier':'y','source_value':'<b>y</b>','format':'html'}]")),
            {u"de"_s});
        QCOMPARE(manager.text(u"a"_s, u"x"_s, u"first"_s), u"zweiter"_s);
        QCOMPARE(manager.text(u"a"_s, u"y"_s, u"<b>y</b>"_s), u"<b>y</b>"_s);
        const BWLocalizableString y(u"a"_s, u"y"_s, QString());
        QVERIFY(manager.localizations()->contains(y) && manager.localizations()->value(y).isEmpty());
    }

    void catalogueKeepsTheLatestWordingAndIsSaved()
    {
        BWLocalizationManager manager(write(json("[{'parent':'b','identifier':'y','source_value':'Wörter\\n\\`%1\\`', "
                                                 "'format':'html','localizations':{'de':'ä'}}]")),
                                      {u"de"_s});
        manager.text(u"b"_s, u"x"_s, u"one"_s);
        manager.text(u"b"_s, u"x"_s, u"two"_s);
        manager.localize(BWLocalizableString(u"a"_s, u"z"_s, u"<i>z</i>"_s, true));
        const QString path = m_dir->filePath(u"saved.json"_s);
        write("something that was there before", u"saved.json"_s);
        manager.saveAtPath(path);
        const QByteArray untranslated("'localizations':{'de':'','es':'','fr':'','ja':''}");
        QCOMPARE(QJsonDocument::fromJson(read(path)).toJson(QJsonDocument::Compact),
                 json("[{'format':'html','identifier':'z'," + untranslated
                      + ",'parent':'a','source_value':'<i>z</i>'},"
                        "{'format':'text','identifier':'x',"
                      + untranslated
                      + ",'parent':'b','source_value':'two'},{'format':'html','identifier':'y',"
                        "'localizations':{'de':'ä'},'parent':'b','source_value':'Wörter\\n\\`%1\\`'}]"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be written"_s));
        manager.saveAtPath(m_dir->filePath(u"no/such/folder"_s));
    }

    void equality()
    {
        const BWLocalizableString a(u"p"_s, u"i"_s, u"one"_s);
        const BWLocalizableString b(u"p"_s, u"i"_s, u"two"_s, true);
        QVERIFY(a == b);
        QCOMPARE(qHash(a), qHash(b));
        QVERIFY(!(a == BWLocalizableString(u"i"_s, u"p"_s, u"one"_s)));
    }

    void missingKeysEndTheProgram_data()
    {
        QTest::addColumn<QByteArray>("mistake");
        for (const char *mistake : {"no parent", "no identifier", "no value"})
            QTest::newRow(mistake) << QByteArray(mistake);
    }

    void missingKeysEndTheProgram()
    {
        QFETCH(QByteArray, mistake);
        QVERIFY(aborts(mistake.constData()));
    }

    /// Texts that the sources look up by variables, so that tools/check_texts cannot see them.
    void deliveredFileHasTheTextsOfTables()
    {
        BWLocalizationManager manager(u":/localization.json"_s, {u"de-DE"_s});
        const qsizetype known = manager.strings().size();
        QVERIFY(known > 150);
        QHash<BWLocalizableString, QString> english;
        for (const BWLocalizableString &string : manager.strings())
            english.insert(string, string.value());

        BWSettingsFile defaults(m_dir->filePath(u"settings.conf"_s));
        BWConfigManager(defaults).localizeWithManager(manager);
        for (int code = BWSettingHue; code <= BWSettingVideoNorm; ++code) {
            const QString identifier = BWCameraSetting::stringForSettingIdentifier(code);
            if (!identifier.isNull())
                manager.text(u"camera_setting"_s, identifier, BWCameraSetting::nameForSettingIdentifier(code));
        }
        for (const BWCameraDescriptionPtr &type :
             {BWCameraDetector::descriptionForDX20(), BWCameraDetector::descriptionForRegularMicroscope(),
              BWCameraDetector::descriptionForHighResolutionMicroscope(),
              BWCameraDetector::descriptionForUltraResolutionMicroscope(),
              BWCameraDetector::descriptionForReceptorWirelessMicroscope()})
            manager.text(u"camera_type"_s, type->identifierForCameraType, type->name);
        QCOMPARE(manager.strings().size(), known);
        for (const BWLocalizableString &string : manager.strings())
            QCOMPARE(string.value(), english.value(string));
        QCOMPARE(manager.text(u"camera_product"_s, u"mx62"_s, u"Polarizing Microscope MX62"_s),
                 u"Polarisationsmikroskop MX62"_s);
    }

    void deliveredFileIsWrittenAsSaved()
    {
        const QString path = m_dir->filePath(u"saved.json"_s);
        BWLocalizationManager(u"" BW_LOCALIZATION_FILE ""_s, {}).saveAtPath(path);
        QCOMPARE(read(path), read(u"" BW_LOCALIZATION_FILE ""_s));
    }

private:
    QString write(const QByteArray &content, const QString &name = u"localization.json"_s)
    {
        QFile file(m_dir->filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s", qPrintable(file.errorString()));
        return file.fileName();
    }

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::optional<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(TestLocalization)
#include "test_localization.moc"
