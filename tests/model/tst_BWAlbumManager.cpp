// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Albums/BWFileNameOrder.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "TestFolder.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <QTest>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
constexpr auto image = BWMediaType::Image;
constexpr auto video = BWMediaType::Video;

/// How the calls below behave, in place of the real disk.
struct {
    QStringList lacks; // functions that the file system does not support
    QString rivalBefore; // the function before which another program takes the name
    QStringList theirs;
} disk;

/// Whether the file system supports the function.
bool isSupported(const QString &function, const char *name)
{
    if (disk.rivalBefore == function && disk.theirs.size() < 3) {
        QFile file(QFile::decodeName(name));
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && file.write("theirs") > 0)
            disk.theirs << file.fileName();
    }
    return !disk.lacks.contains(function);
}
} // namespace

// In place of the C library's.
int link(const char *from, const char *to) noexcept
{
    return isSupported(u"link"_s, to) ? static_cast<int>(::syscall(SYS_link, from, to)) : (errno = EPERM, -1);
}

int renameat2(int fromFolder, const char *from, int toFolder, const char *to, unsigned flags) noexcept
{
    return isSupported(u"renameat2"_s, to)
        ? static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags))
        : (errno = EINVAL, -1);
}

int rename(const char *from, const char *to) noexcept
{
    return isSupported(u"rename"_s, to) ? static_cast<int>(::syscall(SYS_rename, from, to)) : (errno = EPERM, -1);
}

class TestAlbums : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder.emplace();
        m_today = QDate(2024, 6, 7);
        m_album.emplace(m_folder->folder(u"Album"_s), [this] { return m_today; });
        m_defaults.emplace(m_folder->path(u"settings.conf"_s));
        m_manager = make();
    }

    void cleanup()
    {
        m_manager.reset();
        m_defaults.reset(); // may still write
    }

    void lowestFreeNumberIsTaken()
    {
        const QUrl capture = m_folder->file(u"capture"_s, "pixels");
        const QUrl first = m_folder->url(u"Album/20240607_image_001.jpg"_s);
        QVERIFY(QFile::link(u"nowhere"_s, m_folder->path(u"Album/20240607_video_001.mov"_s))); // takes its name, too
        const auto addCapture = [&](BWMediaType type) {
            QUrl added;
            return m_album->addFile(capture, type, &added) ? TestFolder::names({added}) : QString();
        };
        QCOMPARE(addCapture(image), u"20240607_image_001.jpg"_s);
        QCOMPARE(TestFolder::read(first) + TestFolder::read(capture), "pixelspixels");
        QCOMPARE(addCapture(video), u"20240607_video_002.mov"_s);
        QVERIFY(!QFile::exists(m_folder->path(u"Album/nowhere"_s)));
        QCOMPARE(addCapture(image), u"20240607_image_002.jpg"_s);
        m_album->removeFile(first, image);
        QCOMPARE(addCapture(image), u"20240607_image_001.jpg"_s);

        for (int i = 3; i <= 999; ++i)
            m_folder->file(u"Album/20240607_image_%1.jpg"_s.arg(i, 3, 10, QLatin1Char('0')));
        QCOMPARE(addCapture(image), u"20240607_image_1000.jpg"_s);
        const QString listed = TestFolder::names(m_album->contentsForType(image).value());
        QVERIFY(listed.startsWith(u"20240607_image_1000.jpg|20240607_image_999.jpg|"_s));

        // Numbers that somebody else makes free are seen, however many there are.
        QCOMPARE(addCapture(image), u"20240607_image_1001.jpg"_s);
        const auto changed = [this] { return QFileInfo(m_folder->path(u"Album"_s)).lastModified(); };
        const QDateTime before = changed();
        QVERIFY(QFile::remove(m_folder->path(u"Album/20240607_image_007.jpg"_s)));
        QTRY_VERIFY(
            (m_folder->file(u"Album/tick"_s), QFile::remove(m_folder->path(u"Album/tick"_s)), changed() != before));
        QCOMPARE(addCapture(image), u"20240607_image_007.jpg"_s);
        QCOMPARE(addCapture(image), u"20240607_image_1002.jpg"_s);

        m_today = m_today.addDays(1); // midnight
        QCOMPARE(addCapture(image), u"20240608_image_001.jpg"_s);
    }

    void listing()
    {
        for (const QString &name : {u"20240607_image_002.jpg"_s, u"20231231_image_010.jpg"_s, u"x.jpg"_s, u"X10.jpg"_s,
                                    u"x9.jpg"_s, u"photo.JPG"_s, u"notes.txt"_s, u".jpg"_s, u"jpg"_s, u".hidden.jpg"_s,
                                    u"clip.mov"_s, u".20240607_image_003.jpg.part"_s, u"folder.jpg/inner.jpg"_s})
            m_folder->file(u"Album/"_s + name);
        QCOMPARE(TestFolder::names(m_album->contentsForType(image).value()),
                 u"X10.jpg|x9.jpg|x.jpg|folder.jpg|20240607_image_002.jpg|20231231_image_010.jpg|.hidden.jpg"_s);
        QCOMPARE(TestFolder::names(m_album->contentsForType(video).value()), u"clip.mov"_s);
        QVERIFY(!m_album->contentsForType(static_cast<BWMediaType>(2)));
    }

    void namesOfAnyKind_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("letters of all kinds") << QByteArray(" Häutchen ß a\xcc\x88 \xf0\x9f\x94\xac\xe6\x97\xa5 ");
        QTest::newRow("special signs") << QByteArray("100% %20 %41 \"a\" 'b' \\ `c` two\nlines\ta?b#c;d:e&f@g[h]");
        QTest::newRow("not UTF-8") << QByteArray("caf\xe9 \xff");
    }
    void namesOfAnyKind()
    {
        QFETCH(QByteArray, name);
        const QByteArray path = QFile::encodeName(m_folder->path()) + '/' + name;
        QCOMPARE(::mkdir(path.constData(), 0777), 0);
        const QUrl folder = BWFilePath::entry(m_folder->url(), name);
        const BWAlbum album(folder, {});
        QCOMPARE(album.name(), QFile::decodeName(name));
        QUrl added;
        QVERIFY(album.addFile(m_folder->file(u"capture"_s, "pixels"), image, &added));

        const QUrl renamed = BWFilePath::entry(folder, name + ".jpg");
        QCOMPARE(::rename(BWFilePath::native(added).constData(), (path + '/' + name + ".jpg").constData()), 0);
        QCOMPARE(album.contentsForType(image).value(), QList<QUrl>{renamed});
        QVERIFY(m_album->addFile(renamed, image, &added));
        QCOMPARE(TestFolder::read(added), "pixels");
        album.removeFile(renamed, image);
        QVERIFY(album.contentsForType(image)->isEmpty());
    }

    void failedCopyLeavesNothing_data()
    {
        QTest::addColumn<QString>("source");
        for (const char *reason : {"full disk", "read-only folder"})
            QTest::newRow(reason) << u"capture"_s;
        for (const char *source : {"missing", "Album", "pipe"})
            QTest::newRow(source) << QString::fromLatin1(source);
    }
    void failedCopyLeavesNothing()
    {
        QFETCH(QString, source);
        const QByteArray reason = QTest::currentDataTag();
        // On another disk, so that it has to be copied.
        const QTemporaryDir otherDisk(u"/dev/shm/album-XXXXXX"_s);
        const QUrl capture = QUrl::fromLocalFile(otherDisk.filePath(u"capture"_s));
        TestFolder::write(capture, QByteArray(3'000'000, 'x'));
        ::mkfifo(QFile::encodeName(m_folder->path(u"pipe"_s)).constData(), 0666);
        ::chmod(QFile::encodeName(m_folder->path()).constData(), 0755);
        ::chmod(QFile::encodeName(m_folder->path(u"Album"_s)).constData(), reason == "read-only folder" ? 0555 : 0777);
        {
            const SmallDisk disk(reason == "full disk" ? 1'500'000 : RLIM_INFINITY); // in the middle of a copy
            if (reason == "read-only folder")
                ::setfsuid(65534); // root may write everywhere
            const auto restore = qScopeGuard([] { ::setfsuid(::geteuid()); });
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot add"_s));
            const QUrl from = source == u"capture"_s ? capture : m_folder->url(source);
            QVERIFY(!m_album->addFile(from, image));
        }
        QCOMPARE(TestFolder::count(m_folder->path(u"Album"_s)), 0);
    }

    void otherProgramsKeepTheirNames_data()
    {
        const Rows<QStringList, int> row;
        row("link", QStringList(), 3);
        row("renameat2", QStringList{u"link"_s}, 3);
        row("rename", QStringList{u"link"_s, u"renameat2"_s}, 0); // the name is ours by then
    }
    void otherProgramsKeepTheirNames()
    {
        const auto [lacks, rivals] = Rows<QStringList, int>::current();
        const QUrl capture = m_folder->file(u"capture"_s, "pixels");
        int copies = 0;
        QUrl added;
        disk = {lacks, QString::fromLatin1(QTest::currentDataTag()), {}};
        const bool done = m_album->addFile(capture, image, &added, [&](double) { return ++copies; });
        const QStringList theirs = std::exchange(disk, {}).theirs;
        QVERIFY(done);
        QCOMPARE(copies, lacks.isEmpty() ? 0 : 1);
        QCOMPARE(static_cast<int>(theirs.size()), rivals);
        for (const QString &name : theirs)
            QCOMPARE(TestFolder::read(QUrl::fromLocalFile(name)), "theirs");
        QCOMPARE(TestFolder::read(added), "pixels");
        QCOMPARE(TestFolder::count(m_folder->path(u"Album"_s)), theirs.size() + 1);
    }

    void nameOrder()
    {
        const QStringList names =
            u"1_2 1_10 2_1 10_1 a a0 a1 a9 a10 a99999999999999999999 a100000000000000000000 Alpha b "
            "beta GAMMA Straße x x1 x1a x1b xa z ä"_s.split(u' ');
        for (int i = 0; i < names.size(); ++i) {
            for (int j = 0; j < names.size(); ++j) {
                const int order = BWFileNameOrder::compare(names[i], names[j]);
                QVERIFY2(i < j ? order < 0 : i > j ? order > 0 : order == 0, qPrintable(names[i] + u' ' + names[j]));
            }
        }
        QCOMPARE(BWFileNameOrder::compare(u"IMG_007"_s, u"img_7"_s), 0);
    }

    void scanStopsAtTheDefaultAlbum()
    {
        for (const QString &name : {u"Z"_s, u"b"_s, u"A"_s, u".hidden"_s, u"Default Album.old"_s, u"Default Album"_s,
                                    u"Patient 42"_s, u"Ä %1"_s})
            m_folder->folder(u"BrimwellPro/"_s + name);
        m_folder->file(u"BrimwellPro/file"_s);
        m_defaults->setString(u"bwp2x_albums"_s, u"[]"_s);
        m_manager->prepare();
        QCOMPARE(albums(), u"A|b|*Default Album|Default Album.old|Patient 42|Z|Ä %1"_s);
        QCOMPARE(TestFolder::names(m_manager->validAlbumPaths()), u"A|b|Default Album"_s);
    }

    void namesOfTheDefaultAlbum()
    {
        for (const QString &name :
             {u"../../x"_s, u"/x"_s, u"x/"_s, u"."_s, u".."_s, u".x"_s, u"a\0b"_s, u""_s, QString(256, u'x')}) {
            const TestFolder around;
            BWAlbumManager manager(*m_defaults, around.folder(u"1/2"_s).toLocalFile());
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"The default album cannot be called"_s));
            manager.setOldDefaultAlbumName(name);
            manager.prepare();
            QCOMPARE(manager.currentAlbum()->path(), manager.defaultAlbumBasePath());
            QCOMPARE(TestFolder::count(around.path()) + TestFolder::count(around.path(u"1"_s)), 2);
        }
    }

    void otherProgramsAlbumsStay()
    {
        const auto quoted = [this](const QStringList &names) {
            QStringList paths;
            for (const QString &name : names)
                paths.append(u"\"%1\""_s.arg(m_folder->folder(name).toLocalFile()));
            return u"[%1]"_s.arg(paths.join(u','));
        };
        m_defaults->setString(u"bwp2x_albums"_s, quoted({u"A"_s, u"B"_s, u"C"_s}));
        m_manager->prepare();
        m_defaults->setString(u"bwp2x_albums"_s, quoted({u"A"_s, u"C"_s, u"Theirs"_s})); // B was taken off, too
        m_manager->removeCurrentAlbum();
        m_manager->addAlbumFromPath(m_folder->folder(u"Mine"_s));
        QCOMPARE(m_defaults->string(u"bwp2x_albums"_s), quoted({u"C"_s, u"Theirs"_s, u"Mine"_s}));
    }

    void makingFolders_data()
    {
        using Problem = BWAlbumManager::FolderProblem;
        const Rows<QString, Problem> row;
        row("spaces and dots", u"Proben 12.3 \"neu\""_s, Problem::None);
        row("in a new folder", u"2026/Proben"_s, Problem::None);
        row("there already", u"Album"_s, Problem::None);
        row("hidden", u".x"_s, Problem::Name);
        row("too long", QString(256, u'x'), Problem::Name);
        row("a file", u"file"_s, Problem::Taken);
        row("below a file", u"file/x"_s, Problem::Failed);
        row("not ours", u"/proc/x"_s, Problem::Failed);
        row("not allowed", u"shut/x"_s, Problem::NotAllowed);
    }
    void makingFolders()
    {
        using Problem = BWAlbumManager::FolderProblem;
        const auto [name, problem] = Rows<QString, Problem>::current();
        m_folder->file(u"file"_s);
        ::chmod(QFile::encodeName(m_folder->folder(u"shut"_s).toLocalFile()).constData(), 0555);
        const QUrl folder = QUrl::fromLocalFile(QDir(m_folder->path()).absoluteFilePath(name));
        if (problem == Problem::Failed)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot make"_s));
        ::chmod(QFile::encodeName(m_folder->path()).constData(), 0777);
        if (::geteuid() == 0) // root may write everywhere
            ::setfsuid(65534);
        const auto found = BWAlbumManager::makeAlbumFolder(folder);
        ::setfsuid(::geteuid());
        QCOMPARE(found, problem);
        QCOMPARE(BWFilePath::isFolder(folder), problem == Problem::None);
    }

    void storedLists_data()
    {
        const Rows<QString, QString, bool> row;
        row("what can be used, in order",
            u"[\"%1/B/\",5,null,\"\",\"A\",{},\"%1/gone\",\"%1/file\",\"%1/BrimwellPro/Default Album\",\"%1/A\"]"_s,
            u"B|*Default Album|A"_s, false);
        row("without the default one", u"[\"%1/A\"]"_s, u"A"_s, false);
        row("hidden", u"[\"%1/.B\",\"%1/A\"]"_s, u"A"_s, false);
        row("all vanished", u"[\"%1/gone\"]"_s, u"*Default Album"_s, false);
        row("cut off", u"[\"%1/A\""_s, u"*Default Album"_s, true);
        row("no list", u"{\"a\":\"%1/A\"}"_s, u"*Default Album"_s, true);
    }
    void storedLists()
    {
        const auto [text, listed, logged] = Rows<QString, QString, bool>::current();
        m_folder->folder(u"A"_s);
        m_folder->folder(u"B"_s);
        m_folder->folder(u".B"_s);
        m_folder->file(u"file"_s);
        m_defaults->setString(u"bwp2x_albums"_s, text.arg(m_folder->path()));
        if (logged)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"list of albums is damaged"_s));
        m_manager->prepare();
        QCOMPARE(albums(), listed);
        QVERIFY(!m_manager->faulty());
    }

    void failedFolderIsReported()
    {
        m_folder->file(u"BrimwellPro/Default Album"_s);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Albums cannot be prepared"_s));
        m_manager->prepare();
        QVERIFY(m_manager->faulty());
        QVERIFY(!m_manager->currentAlbum());
        QVERIFY(!m_manager->canRemoveCurrentAlbum());

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No album to add"_s));
        std::optional<bool> result;
        bool done = false;
        add(m_folder->file(u"capture"_s), [&](bool added, const QUrl &) {
            result = added;
            m_manager->whenAdded([&] { done = true; }); // the user quits while reading that
            QVERIFY(done);
        });
        QTRY_VERIFY(result.has_value());
        QCOMPARE(result, false);
        QVERIFY(done);
    }

    void addingAndRemovingAlbums()
    {
        m_manager->prepare(); // the first time
        QCOMPARE(albums(), u"*Default Album"_s);
        QCOMPARE(m_manager->currentAlbum()->path(), m_folder->url(u"BrimwellPro/Default Album"_s));
        QVERIFY(BWFilePath::isFolder(m_manager->currentAlbum()->path()));
        // The home folder of a system without users; no computer of that name on a network.
        QCOMPARE(BWAlbumManager(*m_defaults, u"/"_s).defaultAlbumBasePath(),
                 QUrl(u"file:///BrimwellPro/Default Album"_s));
        QVERIFY(m_defaults->string(u"bwp2x_albums"_s).isNull());
        int changes = 0;
        const BWAliveToken alive;
        m_manager->addListener(alive, [&] { ++changes; }, {});
        QVERIFY(!m_manager->canRemoveCurrentAlbum());
        m_manager->removeCurrentAlbum();
        QCOMPARE(changes, 0);

        const QUrl folder = m_folder->folder(u"Proben #1 %"_s);
        m_manager->addAlbumFromPath(folder);
        m_manager->addAlbumFromPath(QUrl(folder.toString() + u'/'));
        QCOMPARE(changes, 1);
        QCOMPARE(albums(), u"*Default Album|Proben #1 %"_s);
        QCOMPARE(m_manager->selectedIndex(), 1);

        m_manager = make();
        m_manager->prepare();
        QCOMPARE(albums(), u"*Default Album|Proben #1 %"_s);
        m_manager->setSelectedIndex(7);
        QCOMPARE(m_manager->selectedIndex(), 0);
        m_manager->setSelectedIndex(1);
        m_manager->removeCurrentAlbum();
        QCOMPARE(albums(), u"*Default Album"_s);
        QCOMPARE(m_manager->selectedIndex(), 0);
        QVERIFY(BWFilePath::isFolder(folder));
        QCOMPARE(m_defaults->string(u"bwp2x_albums"_s), u"[\"%1/BrimwellPro/Default Album\"]"_s.arg(m_folder->path()));

        // There is always an album, even after the only stored one is removed.
        m_defaults->setString(u"bwp2x_albums"_s, u"[\"%1\"]"_s.arg(folder.toLocalFile()));
        m_manager = make();
        m_manager->prepare();
        m_manager->removeCurrentAlbum();
        QCOMPARE(albums(), u"*Default Album"_s);
    }

    void capturesFromOtherThreadsAreAddedInOrder()
    {
        m_manager->prepare();
        QStringList events;
        const BWAliveToken alive;
        m_manager->addListener(alive, {}, [&] { events.append(u"contents"_s); });
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot add"_s));
        std::thread capture([&] {
            for (const QUrl &file :
                 {m_folder->file(u"a"_s, "a"), m_folder->url(u"missing"_s), m_folder->file(u"b"_s, "b")}) {
                add(file, [&](bool added, const QUrl &url) {
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
                 u"20240607_image_002.jpg"_s);
    }

    void capturesSurviveTheEndOfTheProgram()
    {
        m_manager->prepare();
        bool called = false;
        add(m_folder->file(u"a"_s, "a"), [&](bool, const QUrl &) { called = true; });
        m_manager.reset();
        QCoreApplication::processEvents();
        QVERIFY(!called);
        QCOMPARE(TestFolder::read(m_folder->url(u"BrimwellPro/Default Album/20240607_image_001.jpg"_s)), "a");
    }

private:
    std::unique_ptr<BWAlbumManager> make()
    {
        return std::make_unique<BWAlbumManager>(*m_defaults, m_folder->path(), [this] { return m_today; });
    }

    /// The albums' names, with | between them and the default album's after an asterisk.
    QString albums() const
    {
        QStringList names;
        for (const BWAlbumPtr &album : m_manager->albums())
            names.append(album->isDefaultAlbum() ? u'*' + album->name() : album->name());
        return names.join(u'|');
    }

    void add(const QUrl &file, BWAlbumManager::AddCompletion completion)
    {
        m_manager->addFile(file, image, std::move(completion));
    }

    std::optional<TestFolder> m_folder;
    QDate m_today;
    std::optional<BWAlbum> m_album;
    std::optional<BWSettingsFile> m_defaults;
    std::unique_ptr<BWAlbumManager> m_manager;
};

QTEST_GUILESS_MAIN(TestAlbums)
#include "tst_BWAlbumManager.moc"
