// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraSetting.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Import/BWOldSettings.h"
#include "Model/Import/BWOldSettingsImporter.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "TestFolder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

using Problem = BWOldSettingsFile::Problem;

namespace {

/// "hue=101 ..." of all values, and the resolution.
QString stored(const BWUserDefaults &defaults, const QString &product)
{
    const QString text = defaults.string(u"bwp2x_product_"_s + product);
    const QJsonObject members = QJsonDocument::fromJson(text.toUtf8()).object();
    QStringList values;
    for (const QString &key : members.keys())
        values.append(key + u'=' + members[key].toVariant().toString());
    return values.join(u' ');
}

QStringList storedAlbums(const BWUserDefaults &defaults)
{
    return QJsonDocument::fromJson(defaults.string(u"bwp2x_albums"_s).toUtf8()).toVariant().toStringList();
}

const QString dx14Values = u"0=101 1=102 2=103 3=104 4=105 5=106 7=107 8=108 resolution=1280x1024"_s;
const QString dx17Values = u"0=12.5 1=32 13=0 2=56 3=100 4=11 resolution=640x480"_s;
const QString mx62Values =
    u"0=101 1=102 10=110 11=111 12=112 2=103 3=104 4=105 5=106 7=107 8=108 9=109 resolution=800x600"_s;

} // namespace

class TestOldSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_folder.folder(u"home/Pictures"_s);
        const QString folder = QStringLiteral(BW_FOLDER);
        QCOMPARE(QProcess::execute(u"python3"_s, {folder + u"/make_archives.py"_s, m_folder.path(), home()}), 0);
        // The same settings as GNUstep's keyed archiver writes them, for a home of its own.
        for (const QString &name : {u"/cameras.archiver"_s, u"/albums.archiver"_s})
            QVERIFY(QFile::copy(folder + name, m_folder.path() + name));
    }

    void firstStart()
    {
        for (const QString &writer : {u"binary"_s, u"xml"_s, u"archiver"_s}) {
            const QString albums = writer == u"archiver"_s ? u"albums.binary"_s : u"albums."_s + writer;
            const TestFolder settings;
            const BWRepository::Options options{settings.path(u"settings.conf"_s), home(), {u"en"_s}, QString()};
            {
                BWSettingsFile defaults(options.settingsFile);
                defaults.setData(BWOldSettings::camerasKey(), read(u"cameras."_s + writer));
                defaults.setData(BWOldSettings::albumsKey(), read(albums));
            }
            {
                const BWRepository repository(options);
                repository.albumManager().waitUntilPrepared();
                QCOMPARE(repository.albumManager().albums().size(), 2); // the third folder is gone
                QCOMPARE(repository.albumManager().albums()[1]->path(), homeUrl(u"BrimwellPro/Standardalbum"_s));
                QVERIFY(repository.albumManager().albums()[1]->isDefaultAlbum());
                const auto wired = repository.configManager().productByIdentifier(u"dx14"_s);
                QVERIFY(!wired->valueForSetting(BWSettingVideoNorm) && !wired->valueForSetting(BWSettingGain));
                repository.configManager().productByIdentifier(u"dx12"_s)->setCurrentResolution({720, 480});
                repository.configManager().productByIdentifier(u"dx12"_s)->save(); // the user's own choice
            }
            BWSettingsFile defaults(options.settingsFile);
            QCOMPARE(defaults.string(u"bwp2x_old_settings_imported"_s), u"yes"_s);
            QCOMPARE(stored(defaults, u"dx14"_s), dx14Values);
            QCOMPARE(stored(defaults, u"dx17_18"_s), dx17Values);
            QCOMPARE(stored(defaults, u"mx62"_s), mx62Values);
            QCOMPARE(defaults.string(u"bwp2x_product_mx24"_s), QString()); // chosen for no camera of ours
            QCOMPARE(defaults.string(u"bwp2x_default_album_name"_s), u"Standardalbum"_s);
            QCOMPARE(storedAlbums(defaults),
                     QStringList({home() + u"/Pictures"_s, home() + u"/BrimwellPro/Standardalbum"_s,
                                  home() + u"/gone/Straße é"_s}));
            QCOMPARE(defaults.data(BWOldSettings::camerasKey()), read(u"cameras."_s + writer));

            const BWRepository again(options);
            QCOMPARE(again.configManager().productByIdentifier(u"dx12"_s)->currentResolution(), BWResolution(720, 480));
        }
    }

    /// One damaged archive does not keep the other from being imported, nor is it tried again.
    void firstStartWithDamage()
    {
        const TestFolder settings;
        BWSettingsFile defaults(settings.path(u"settings.conf"_s));
        defaults.setData(BWOldSettings::albumsKey(), read(u"albums.binary"_s).chopped(1));
        defaults.setData(BWOldSettings::camerasKey(), read(u"cameras.binary"_s));
        BWConfigManager config(defaults);
        BWAlbumManager albums(defaults, settings.path());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^The old list of albums is not taken over: "_s));
        BWOldSettingsImporter(defaults).importSettingsIfNecessary(config, albums);
        albums.prepare();
        QVERIFY(config.oldSettingsImported() && config.defaultAlbumName().isNull());
        QCOMPARE(config.currentProductIdentifierForCameraIdentifier(u"wired_regular"_s), u"dx14"_s);
        QCOMPARE(albums.currentAlbum()->path(), settings.url(u"BrimwellPro/Default Album"_s));
    }

    /// A truncated archive is refused as a whole.
    void truncated()
    {
        for (const QString &name :
             {u"cameras.binary"_s, u"cameras.archiver"_s, u"albums.xml"_s, u"albums.archiver"_s}) {
            const QByteArray whole = read(name);
            QString problem;
            QVERIFY(name.startsWith(u'c') ? BWOldCameraSettings::decode(whole, problem).has_value()
                                          : BWOldAlbum::decode(whole, problem).has_value());
            for (qsizetype size = 0; size < whole.trimmed().size(); ++size) {
                problem.clear();
                QVERIFY2(!BWOldCameraSettings::decode(whole.first(size), problem)
                             && !BWOldAlbum::decode(whole.first(size), problem) && !problem.isEmpty(),
                         qPrintable(u"%1 cut to %2"_s.arg(name).arg(size)));
            }
        }
    }

    void hostile_data()
    {
        const Rows<Problem, QString> row;
        const QJsonObject reasons = QJsonDocument::fromJson(read(u"reasons.json"_s)).object();
        const QStringList files = QDir(m_folder.path(u"hostile"_s)).entryList(QDir::Files);
        QVERIFY(!files.isEmpty());
        for (const QString &file : files) {
            const QString kind = file.section(u'-', 0, 0);
            row(qPrintable(file),
                kind == "foreign"_L1       ? Problem::Foreign
                    : kind == "nothing"_L1 ? Problem::NothingOld
                                           : Problem::Damaged,
                reasons[file].toString());
        }
    }

    void hostile()
    {
        const auto [problem, reason] = Rows<Problem, QString>::current();
        const QString path = m_folder.path(u"hostile/"_s + QString::fromUtf8(QTest::currentDataTag()));
        const auto file = BWOldSettingsFile::read(path);
        QCOMPARE(file.problem, problem);
        QVERIFY2(!file.detail.isEmpty() && file.detail.contains(reason), qPrintable(file.detail));
        QVERIFY(!file.settings.cameras && !file.settings.albums);
    }

    void unreadable()
    {
        QVERIFY(QFile::link(u"itself"_s, m_folder.path(u"itself"_s)));
        QCOMPARE(BWOldSettingsFile::read(m_folder.path(u"itself"_s)).problem, Problem::Unreadable);
        QCOMPARE(BWOldSettingsFile::read(u"/dev/zero"_s).problem, Problem::Foreign);
    }

private:
    QString home() const { return m_folder.path(u"home"_s); }
    QUrl homeUrl(const QString &name) const { return m_folder.url(u"home/"_s + name); }
    QByteArray read(const QString &name) const { return TestFolder::read(m_folder.url(name)); }

    const TestFolder m_folder;
};

QTEST_GUILESS_MAIN(TestOldSettings)
#include "tst_BWOldSettings.moc"
