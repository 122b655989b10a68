#include "Model/BWAlbumManager.h"
#include "Model/BWSettingsFile.h"
#include "TestFolder.h"

#include <QTest>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr auto image = BWMediaType::Image;

QStringList albumNames(const BWAlbumManager &manager)
{
    QStringList names;
    for (const BWAlbumPtr &album : manager.albums())
        names.append(album->isDefaultAlbum() ? u'*' + album->name() : album->name());
    return names;
}

} // namespace

class TestAlbumManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder.emplace();
        m_defaults.emplace(m_folder->path(u"settings.conf"_s));
        m_manager = make();
    }

    void cleanup()
    {
        m_manager.reset();
        m_defaults.reset(); // may still write
    }

    void firstStartMakesTheDefaultAlbum()
    {
        m_manager->prepare();
        QVERIFY(!m_manager->faulty());
        QCOMPARE(albumNames(*m_manager), QStringList{u"*Default Album"_s});
        QCOMPARE(m_manager->selectedIndex(), 0);
        QCOMPARE(m_manager->currentAlbum()->path(), m_folder->url(u"BrimwellPro/Default Album"_s));
        QVERIFY(BWFilePath::isFolder(m_manager->defaultAlbumBasePath()));
        QVERIFY(m_defaults->string(u"bwp2x_albums"_s).isNull());
    }

    void scanStoresFoldersUpToTheDefaultOne()
    {
        for (const QString &name : {u"A"_s, u"Default Album"_s, u"Default Album.old"_s, u"Z"_s, u"Ä %1"_s, u"m"_s})
            m_folder->folder(u"BrimwellPro/"_s + name);
        m_folder->file(u"BrimwellPro/file"_s);
        m_defaults->setString(u"bwp2x_albums"_s, u"[]"_s);
        m_manager->prepare();

        // The order is the file system's own.
        QStringList all, stored;
        bool defaultFound = false;
        const QList<QByteArray> names = BWFilePath::entries(m_folder->url(u"BrimwellPro"_s)).value();
        for (const QByteArray &name : names) {
            if (name == "file")
                continue;
            const bool isDefault = !defaultFound && name.startsWith("Default Album");
            all.append(QFile::decodeName(isDefault ? '*' + name : name));
            if (!defaultFound)
                stored.append(QFile::decodeName(name));
            defaultFound = defaultFound || isDefault;
        }
        QCOMPARE(albumNames(*m_manager), all);
        QCOMPARE(TestFolder::names(m_manager->validAlbumPaths()), stored);
    }

    void storedLists_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("albums");
        QTest::addColumn<bool>("logged");
        QTest::newRow("kept in order") << u"[\"%1/B\",\"%1/BrimwellPro/Default Album\",\"%1/A\"]"_s
                                       << u"B *Default Album A"_s << false;
        QTest::newRow("vanished") << u"[\"%1/A\",\"%1/gone\",\"%1/file\"]"_s << u"A"_s << false;
        QTest::newRow("all vanished") << u"[\"%1/gone\"]"_s << u"*Default Album"_s << false;
        QTest::newRow("wrong elements") << u"[5,null,\"\",\"A\",\"%1/A\",{}]"_s << u"A"_s << false;
        QTest::newRow("empty list") << u"[]"_s << u"*Default Album"_s << false;
        QTest::newRow("cut off") << u"[\"%1/A\""_s << u"*Default Album"_s << true;
        QTest::newRow("no list") << u"{\"a\":\"%1/A\"}"_s << u"*Default Album"_s << true;
        QTest::newRow("trailing slash") << u"[\"%1/A/\"]"_s << u"A"_s << false;
    }

    void storedLists()
    {
        QFETCH(QString, text);
        QFETCH(bool, logged);
        m_folder->folder(u"A"_s);
        m_folder->folder(u"B"_s);
        m_folder->file(u"file"_s);
        m_defaults->setString(u"bwp2x_albums"_s, text.contains(u"%1"_s) ? text.arg(m_folder->path()) : text);
        if (logged)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"list of albums is damaged"_s));
        m_manager->prepare();
        QTEST(albumNames(*m_manager).join(u' '), "albums");
        QVERIFY(!m_manager->faulty());
    }

    void importedAlbumsReplaceTheStoredList()
    {
        m_defaults->setString(u"bwp2x_albums"_s, u"[\"%1/A\"]"_s.arg(m_folder->path()));
        for (const QString &name : {u"A"_s, u"Old/Proben \"1\""_s, u"Old/Standardalbum"_s})
            m_folder->folder(name);
        m_manager->setImportOldAlbums({m_folder->url(u"Old/Proben \"1\""_s), m_folder->url(u"Old/gone"_s),
                                       m_folder->url(u"Old/Standardalbum"_s)});
        m_manager->setOldDefaultAlbumName(u"Standardalbum"_s);
        m_manager->prepare();
        QCOMPARE(albumNames(*m_manager), QStringList({u"Proben \"1\""_s, u"*Standardalbum"_s}));
        QVERIFY(BWFilePath::isFolder(m_folder->url(u"BrimwellPro/Standardalbum"_s)));
        const QString path = m_folder->path();
        QCOMPARE(m_defaults->string(u"bwp2x_albums"_s),
                 u"[\"%1/Old/Proben \\\"1\\\"\",\"%1/Old/gone\",\"%1/Old/Standardalbum\"]"_s.arg(path));
    }

    void foldersThatCannotBeMade_data()
    {
        QTest::addColumn<QString>("obstacle");
        QTest::newRow("base folder") << u"BrimwellPro"_s;
        QTest::newRow("default album") << u"BrimwellPro/Default Album"_s;
    }

    void foldersThatCannotBeMade()
    {
        QFETCH(QString, obstacle);
        m_folder->file(obstacle);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Albums cannot be prepared"_s));
        m_manager->prepare();
        QVERIFY(m_manager->faulty());
        QVERIFY(!m_manager->currentAlbum());
        QCOMPARE(m_manager->albumsBasePath(), m_folder->url(u"BrimwellPro"_s));
        QVERIFY(!m_manager->canRemoveCurrentAlbum());

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No album to add"_s));
        std::optional<bool> result;
        m_manager->addFile(m_folder->file(u"capture"_s), image, [&](bool added, const QUrl &) { result = added; });
        m_manager->finishAdding();
        QCOMPARE(result, false);
    }

    void addingAndRemovingAlbums()
    {
        m_manager->prepare();
        int changes = 0;
        m_manager->setOnAlbumsChanged([&] { ++changes; });
        QVERIFY(!m_manager->canRemoveCurrentAlbum());
        m_manager->removeCurrentAlbum();
        QCOMPARE(changes, 0);

        const QUrl folder = m_folder->folder(u"Proben #1 %"_s);
        m_manager->addAlbumFromPath(folder);
        m_manager->addAlbumFromPath(QUrl(folder.toString() + u'/'));
        QCOMPARE(changes, 1);
        QCOMPARE(albumNames(*m_manager), QStringList({u"*Default Album"_s, u"Proben #1 %"_s}));
        QCOMPARE(m_manager->selectedIndex(), 1);

        m_manager = make();
        m_manager->prepare();
        QCOMPARE(albumNames(*m_manager), QStringList({u"*Default Album"_s, u"Proben #1 %"_s}));
        m_manager->setSelectedIndex(7);
        QCOMPARE(m_manager->selectedIndex(), 0);
        m_manager->setSelectedIndex(1);
        QVERIFY(m_manager->canRemoveCurrentAlbum());
        m_manager->removeCurrentAlbum();
        QCOMPARE(albumNames(*m_manager), QStringList{u"*Default Album"_s});
        QCOMPARE(m_manager->selectedIndex(), 0);
        QVERIFY(BWFilePath::isFolder(folder));
        QCOMPARE(m_defaults->string(u"bwp2x_albums"_s), u"[\"%1/BrimwellPro/Default Album\"]"_s.arg(m_folder->path()));
    }

    void thereIsAlwaysAnAlbum()
    {
        m_defaults->setString(u"bwp2x_albums"_s, u"[\"%1\"]"_s.arg(m_folder->folder(u"Only"_s).toLocalFile()));
        m_manager->prepare();
        m_manager->removeCurrentAlbum();
        QCOMPARE(albumNames(*m_manager), QStringList{u"*Default Album"_s});
    }

    void capturesFromOtherThreadsAreAddedInOrder()
    {
        m_manager->prepare();
        QStringList events;
        m_manager->setOnAlbumContentsChanged([&] { events.append(u"contents"_s); });
        const QUrl missing = m_folder->url(u"missing"_s);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot add"_s));
        std::thread capture([&] {
            for (const QUrl &file : {m_folder->file(u"a"_s, "a"), missing, m_folder->file(u"b"_s, "b")}) {
                m_manager->addFile(file, image, [&](bool added, const QUrl &url) {
                    QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
                    events.append(added ? url.fileName() + u'=' + QString::fromUtf8(TestFolder::read(url)) : u"lost"_s);
                });
            }
        });
        capture.join();
        QVERIFY(events.isEmpty());
        QTRY_COMPARE(events.size(), 5);
        QCOMPARE(events.join(u' '), u"contents 20240607_image_001.jpg=a lost contents 20240607_image_002.jpg=b"_s);

        m_manager->removeFile(m_folder->url(u"BrimwellPro/Default Album/20240607_image_001.jpg"_s), image);
        QTRY_COMPARE(events.size(), 6);
        QCOMPARE(TestFolder::names(m_manager->currentAlbum()->contentsForType(image).value()),
                 QStringList{u"20240607_image_002.jpg"_s});
    }

    void capturesSurviveTheEndOfTheProgram()
    {
        m_manager->prepare();
        bool told = false;
        m_manager->addFile(m_folder->file(u"a"_s, "a"), image, [&](bool, const QUrl &) { told = true; });
        m_manager.reset();
        QCoreApplication::processEvents();
        QVERIFY(!told);
        QCOMPARE(TestFolder::read(m_folder->url(u"BrimwellPro/Default Album/20240607_image_001.jpg"_s)), "a");
    }

private:
    std::unique_ptr<BWAlbumManager> make()
    {
        return std::make_unique<BWAlbumManager>(*m_defaults, m_folder->path(), [] { return QDate(2024, 6, 7); });
    }

    std::optional<TestFolder> m_folder;
    std::optional<BWSettingsFile> m_defaults;
    std::unique_ptr<BWAlbumManager> m_manager;
};

QTEST_GUILESS_MAIN(TestAlbumManager)
#include "test_album_manager.moc"
