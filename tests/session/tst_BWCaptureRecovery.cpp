// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbum.h"
#include "Model/Capture/BWCaptureRecovery.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "Utils/BWTemporaryFiles.h"
#include "Utils/BWUIUtils.h"

#include <ctime>
#include <fcntl.h>
#include <functional>
#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

using Change = std::function<void(const QByteArray &path)>;
constexpr uid_t nobody = 65534;
constexpr time_t longAgo = 1'720'000'000;

QByteArray picture()
{
    QImage image(640, 480, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QBuffer buffer;
    image.save(&buffer, "JPG");
    return buffer.data();
}

void setDate(const QByteArray &path, time_t date)
{
    const timespec times[]{{0, UTIME_OMIT}, {date, 0}};
    QCOMPARE(::utimensat(AT_FDCWD, path.constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    setDate(QFile::encodeName(path), longAgo);
}

Change become(const QByteArray &content)
{
    return [content](const QByteArray &path) { put(QFile::decodeName(path), content); };
}

} // namespace

/// Which files count as captures of an earlier run, and where captures are kept.
class TestLeftCaptures : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_shared = m_folder->filePath(u"tmp"_s);
        m_other = m_folder->filePath(u"other"_s);
        m_album = m_folder->filePath(u"album"_s);
        for (const QString &folder : {m_shared, m_other, m_album})
            QVERIFY(QDir().mkpath(folder));
        qputenv("TMPDIR", m_shared.toUtf8());
        m_private = BWUIUtils::temporaryFolder();
    }
    void cleanup() { qputenv("TMPDIR", m_outerTemporary); }

    void ownCapturesAreCollected_data()
    {
        // the folder of the candidates; what is done to them; whether they are taken
        const Rows<QString, Change, bool> row;
        const auto everywhere = [&row](const QByteArray &title, bool taken, const Change &change) {
            for (const char *folder : {"private", "shared"})
                row((title + ", " + folder).constData(), QString::fromLatin1(folder), change, taken);
        };
        everywhere("picture", true, [](const QByteArray &) {});
        // As when $TMPDIR could not be used.
        row(
            "in the other folder", u"other"_s, [](const QByteArray &) {}, true);
        everywhere("from the future", true, [](const QByteArray &path) { setDate(path, 4'000'000'000); });
        everywhere("just made", false, [](const QByteArray &path) { setDate(path, ::time(nullptr)); });
        everywhere("text", false, become("no picture at all"));
        everywhere("half a picture", false, become(picture().chopped(200)));
        // A decoder that stops at the end of the picture would accept it.
        everywhere("beginning of a hole", false, [](const QByteArray &path) {
            QCOMPARE(::truncate(path.constData(), 100 << 20), 0);
            setDate(path, longAgo);
        });
        everywhere("link to a picture", false, [](const QByteArray &path) {
            ::rename(path.constData(), (path + "x").constData());
            QCOMPARE(::symlink((path + "x").constData(), path.constData()), 0);
            setDate(path, longAgo);
        });
        everywhere("pipe", false, [](const QByteArray &path) {
            ::unlink(path.constData());
            QCOMPARE(::mkfifo(path.constData(), 0666), 0);
            setDate(path, longAgo);
        });
        everywhere("another name", false,
                   [](const QByteArray &path) { ::rename(path.constData(), (path + ".old.jpg").constData()); });
        const auto claim = std::make_shared<std::shared_ptr<BWFileClaim>>();
        everywhere("in use", false,
                   [claim](const QByteArray &path) { *claim = BWFileClaim::existing(QFile::decodeName(path)); });
        const Change doubled = [](const QByteArray &path) { ::link(path.constData(), (path + "x").constData()); };
        everywhere("with a second name", false, doubled);
        row(
            "open to all", u"shared"_s, [](const QByteArray &path) { ::chmod(path.constData(), 0666); }, false);
        if (::geteuid() == 0) {
            everywhere("another user's", false,
                       [](const QByteArray &path) { QCOMPARE(::chown(path.constData(), nobody, nobody), 0); });
            const Change giveAway = [](const QByteArray &path) {
                QCOMPARE(::chown(path.left(path.lastIndexOf('/')).constData(), nobody, nobody), 0);
            };
            row("folder of another user", u"private"_s, giveAway, false);
        }
        const Change showAll = [](const QByteArray &path) {
            ::chmod(path.left(path.lastIndexOf('/')).constData(), 0755);
        };
        row("folder that all can see", u"private"_s, showAll, false);
    }
    void ownCapturesAreCollected()
    {
        const auto [folder, change, taken] = Rows<QString, Change, bool>::current();
        const auto other = BWPrivateFolder::make(QFile::encodeName(m_other));
        QVERIFY(other);
        const QString path = folder == "private"_L1 ? m_private
            : folder == "other"_L1                  ? QFile::decodeName(other->path())
                                                    : m_shared;
        const QString file = path + u"/brimwellpro-00000000-0000-0000-0000-000000000001.jpg"_s;
        put(file, picture());
        change(QFile::encodeName(file));
        const QList<BWOrphanedCapture> found = collect();
        QCOMPARE(found.size(), taken ? 1 : 0);
        if (taken)
            QCOMPARE(found[0].file, QUrl::fromLocalFile(file));
    }

    void leftoversAreRemoved()
    {
        const QString capture = m_private + u"/brimwellpro-00000000-0000-0000-0000-000000000001.jpg"_s;
        const QString text = m_private + u"/brimwellpro-00000000-0000-0000-0000-000000000002.mov"_s;
        const QString half = m_album + u"/.20240607_image_001.jpg.0123abcd.part"_s;
        const QString halfMove = m_album + u"/.20240607_image_002 left.jpg.0123abcd.part"_s;
        put(capture, picture());
        put(m_album + u"/a.jpg"_s, picture()); // was copied, but not removed
        put(text, "not a movie at all");
        put(half, "half");
        put(halfMove, "half");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be taken over.*2.mov"_s));
        QVERIFY(collect().isEmpty());
        QVERIFY(!QFile::exists(capture) && QFile::exists(text));
        BWSettingsFile settings(m_folder->filePath(u"settings.conf"_s));
        BWAlbumManager albums(settings, m_folder->path());
        albums.prepare();
        albums.addAlbumFromPath(QUrl::fromLocalFile(m_album));
        albums.setSelectedIndex(0); // another one than that
        BWCaptureRecovery recovery(albums, {});
        recovery.start({});
        QTRY_COMPARE(QDir(m_album).entryList(QDir::Files | QDir::Hidden), QStringList{u"a.jpg"_s});
    }

    void whatIsTakenBecomesTheUsersOwn()
    {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        const QString file = BWUIUtils::temporaryPath(u"brimwellpro"_s, u"jpg"_s).toLocalFile();
        QVERIFY(BWFileClaim::create(file));
        QCOMPARE(modeOf(file), 0600U);
        put(file, picture());
        const QList<BWOrphanedCapture> found = collect();
        QCOMPARE(found.size(), 1);
        QUrl added;
        const BWAlbum album(QUrl::fromLocalFile(m_album));
        QVERIFY(album.addFile(found[0].file, found[0].type, &added));
        QCOMPARE(modeOf(added.toLocalFile()), 0666 & ~mask);
        // The program was killed before it removed the temporary file, and the user has deleted the picture.
        QVERIFY(QFile::rename(added.toLocalFile(), m_folder->filePath(u"deleted.jpg"_s)));
        QVERIFY(collect().isEmpty());
        QVERIFY(!QFile::exists(file));
    }

    void occupiedFolderIsAvoided_data()
    {
        const Rows<Change> row; // what stands at its name
        const auto folder = [](mode_t mode, uid_t owner = ::geteuid()) {
            return [=](const QByteArray &path) {
                ::mkdir(path.constData(), 0);
                ::chmod(path.constData(), mode);
                QCOMPARE(::chown(path.constData(), owner, -1), 0);
            };
        };
        row("file", become("x"));
        row("link to a folder", [](const QByteArray &path) { QCOMPARE(::symlink("/", path.constData()), 0); });
        row("open to all", folder(0777));
        row("read-only", folder(0500));
        if (::geteuid() == 0)
            row("another user's", folder(0700, nobody));
    }
    void occupiedFolderIsAvoided()
    {
        const auto [squat] = Rows<Change>::current();
        QCOMPARE(modeOf(m_private), 0700U);
        QVERIFY(QDir().rmdir(m_private));
        squat(QFile::encodeName(m_private));
        const QString folder = BWUIUtils::temporaryFolder();
        QVERIFY(folder.startsWith(m_private + u'-'));
        QCOMPARE(modeOf(folder), 0700U);
        QCOMPARE(BWUIUtils::temporaryFolder(), folder); // and not one for each capture
        put(folder + u"/brimwellpro-00000000-0000-0000-0000-000000000001.jpg"_s, picture());
        QCOMPARE(collect().size(), 1);
    }

    /// Another home is a test's, for instance.
    void otherHomesHaveTheirOwnFolder()
    {
        put(m_private + u"/brimwellpro-00000000-0000-0000-0000-000000000001.jpg"_s, picture());
        const auto restore = qScopeGuard([home = qgetenv("HOME")] { qputenv("HOME", home); });
        qputenv("HOME", m_folder->path().toUtf8());
        QVERIFY(collect().isEmpty());
        QVERIFY(BWUIUtils::temporaryFolder() != m_private);
    }

private:
    QList<BWOrphanedCapture> collect() const
    {
        return BWOrphanedCaptures::collect({m_shared, m_other}, QUrl::fromLocalFile(m_album));
    }
    static mode_t modeOf(const QString &path)
    {
        struct stat info { };
        ::stat(QFile::encodeName(path).constData(), &info);
        return info.st_mode & 0777;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    const QByteArray m_outerTemporary = qgetenv("TMPDIR");
    QString m_shared;
    QString m_other;
    QString m_private;
    QString m_album;
};

QTEST_GUILESS_MAIN(TestLeftCaptures)
#include "tst_BWCaptureRecovery.moc"
