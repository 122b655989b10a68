// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbum.h"
#include "Model/Albums/BWFileCopy.h"
#include "Model/Albums/BWFileMoves.h"
#include "Model/Albums/BWRecentFiles.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "TestFolder.h"

#include <QRegularExpression>
#include <QTest>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Fault = BWCaptureName::Fault;
using Problem = BWExportResult::Problem;

/// Real files that get other names and other places, on one disk and on two.
class TestFileMoves : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder.emplace();
        m_moves.emplace([this] { ++m_changes; });
        m_changes = 0;
    }
    void cleanup() { m_moves.reset(); }

    void names_data()
    {
        const Rows<QByteArray, QString, QByteArray, Fault> row; // typed; becomes
        const QByteArray taken = "20240607_image_001.jpg";
        row("added", taken, u" left arm "_s, "20240607_image_001 left arm.jpg", Fault::None);
        row("taken away", "20240607_image_001 (2).jpg", QString(), taken, Fault::None);
        row("foreign", "caf\xc3\xa9.jpg", u"Häutchen"_s, "H\xc3\xa4utchen.jpg", Fault::None);
        row("slash", taken, u"a/b"_s, {}, Fault::Sign);
        row("dot after a number", taken, u".b"_s, "20240607_image_001 .b.jpg", Fault::None);
        row("longest", taken, QString(116, u'ä'), "20240607_image_001 " + QByteArray("ä").repeated(116) + ".jpg",
            Fault::None);
        row("too long", taken, QString(117, u'ä'), {}, Fault::TooLong);
    }
    void names()
    {
        const auto [before, typed, after, fault] = Rows<QByteArray, QString, QByteArray, Fault>::current();
        const BWCaptureName name = BWCaptureName::of(before);
        QCOMPARE(name.with(name.rest), before);
        QCOMPARE(name.faultOf(typed), fault);
        if (fault == Fault::None)
            QCOMPARE(name.with(typed), after);
    }

    void renamedAndUndone()
    {
        const QUrl file = m_folder->file(u"20240607_image_001.jpg"_s, "pixels");
        const BWAlbum album(m_folder->url(), [] { return QDate(2024, 6, 7); });
        const QByteArray name = "20240607_image_001 left.jpg";
        const auto result = wait([&](const auto &done) { m_moves->rename(file, name, done); });
        QCOMPARE(TestFolder::names({result.files[0].now}), QString::fromLatin1(name));
        QCOMPARE(m_changes, 1);
        QCOMPARE(TestFolder::names({album.nextPathForType(BWMediaType::Image)}), u"20240607_image_002.jpg"_s);
        m_folder->file(u"20240607_image_001.jpg"_s, "other"); // it has taken the name meanwhile
        const auto undone = wait([&](const auto &done) { m_moves->undo(done); });
        QCOMPARE(TestFolder::read(undone.files[0].now), "pixels");
        QCOMPARE(TestFolder::names({undone.files[0].now}), u"20240607_image_001 (2).jpg"_s);
        QVERIFY(!m_moves->canUndo());
    }

    void moved_data()
    {
        const Rows<bool> row;
        row("on one disk", false);
        row("to another", true);
    }
    void moved()
    {
        const auto [isFar] = Rows<bool>::current();
        const QTemporaryDir far(u"/dev/shm/album-XXXXXX"_s);
        const QUrl target = isFar ? QUrl::fromLocalFile(far.path()) : m_folder->folder(u"target"_s);
        TestFolder::write(BWFilePath::entry(target, "20240607_image_001.jpg"), "theirs");
        TestFolder::write(BWFilePath::entry(target, "20240607_image_002 named.jpg"), "theirs");
        TestFolder::write(BWFilePath::entry(target, "a.jpg"), "theirs");
        const QList<QUrl> files{m_folder->file(u"20240607_image_001.jpg"_s, "1"), m_folder->file(u"a.jpg"_s, "2"),
                                m_folder->file(u"b.jpg"_s, "3"), m_folder->url(u"gone.jpg"_s)};
        ::chmod(QFile::encodeName(files[2].toLocalFile()).constData(), 0640);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot move .*gone.jpg"_s));
        const auto result = wait([&](const auto &done) { m_moves->move(files, target, done); });
        QList<QUrl> now;
        for (const auto &file : result.files)
            now << file.now;
        QCOMPARE(TestFolder::names(now), u"20240607_image_003.jpg|a (2).jpg|b.jpg"_s);
        QCOMPARE(TestFolder::read(now[0]) + TestFolder::read(now[1]) + TestFolder::read(now[2]), "123");
        QCOMPARE(QFile::permissions(now[2].toLocalFile()) & (QFile::ReadGroup | QFile::ReadOther), QFile::ReadGroup);
        QCOMPARE(result.failed.size(), 1);
        QCOMPARE(result.failed[0].problem, Problem::SourceGone);
        QCOMPARE(TestFolder::count(target.toLocalFile()), 6);
        QVERIFY(!BWFilePath::exists(files[0]) && !BWFilePath::exists(files[2]));
        QCOMPARE(wait([&](const auto &done) { m_moves->undo(done); }).files.size(), 3);
        QCOMPARE(TestFolder::read(files[0]) + TestFolder::read(files[1]) + TestFolder::read(files[2]), "123");
        QCOMPARE(TestFolder::count(target.toLocalFile()), 3);
    }

    void stays_data()
    {
        const Rows<QByteArray, Problem> row;
        row("full disk", "full", Problem::TargetTooLarge);
        row("read-only album", "target", Problem::TargetNotWritable);
        row("folder that keeps its files", "source", Problem::TargetNotWritable);
        row("not saved", "unsettled", Problem::NotSaved);
        row("the other disk is gone", "gone", Problem::TargetFolderMissing);
    }
    /// Between two disks: it is where it was, and nowhere else.
    void stays()
    {
        const auto [why, problem] = Rows<QByteArray, Problem>::current();
        QTemporaryDir far(u"/dev/shm/album-XXXXXX"_s);
        const QUrl file = m_folder->file(u"from/a.jpg"_s, QByteArray(12'000'000, 'x'));
        if (why == "gone")
            QVERIFY(far.remove());
        if (why == "unsettled")
            m_moves->setSettle([&file](const auto &done) { done({file}); });
        ::chmod(QFile::encodeName(m_folder->path()).constData(), 0755);
        ::chmod(QFile::encodeName(m_folder->path(u"from"_s)).constData(), why == "source" ? 0555 : 0777);
        ::chmod(QFile::encodeName(far.path()).constData(), why == "target" ? 0555 : 0777);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot move .*a.jpg"_s));
        BWFileMoves::Result result;
        {
            const SmallDisk disk(why == "full" ? 1'500'000 : RLIM_INFINITY);
            const bool isShut = why == "target" || why == "source";
            const auto restore = qScopeGuard([] { ::setfsuid(::geteuid()); });
            if (isShut)
                ::setfsuid(65534); // root may write everywhere
            result = wait([&](const auto &done) { m_moves->move({file}, QUrl::fromLocalFile(far.path()), done); });
        }
        QCOMPARE(result.failed.size(), 1);
        QCOMPARE(result.failed[0].problem, problem);
        QCOMPARE(TestFolder::read(file).size(), 12'000'000);
        QCOMPARE(TestFolder::count(far.path()), 0);
        QCOMPARE(m_changes, 0);
    }

    void whileItIsCopied_data()
    {
        const Rows<QByteArray, int> row;
        row("it changes", "new pixels", EAGAIN);
        row("the user cancels", "cancel", ECANCELED);
        row("the other folder vanishes", "remove", ENOENT);
    }
    void whileItIsCopied()
    {
        const auto [what, error] = Rows<QByteArray, int>::current();
        QTemporaryDir far(u"/dev/shm/album-XXXXXX"_s);
        const QByteArray pixels(12'000'000, 'x');
        const QUrl file = m_folder->file(u"a.jpg"_s, pixels);
        QList<double> steps;
        const auto step = [&, what = what](double done) {
            steps << done;
            if (what == "remove")
                far.remove();
            else if (what != "cancel")
                TestFolder::write(file, what);
            return what != "cancel" || TestFolder::count(far.path()) != 1;
        };
        const auto name = [&far] { return QUrl::fromLocalFile(far.filePath(u"a.jpg"_s)); };
        QVERIFY(BWFileCopy::moveUnderFreeName(file, name, step).isEmpty());
        QCOMPARE(errno, error);
        QVERIFY(!steps.isEmpty() && (what != "cancel" || steps.last() < 1));
        QCOMPARE(TestFolder::read(file), error == EAGAIN ? what : pixels);
        QCOMPARE(TestFolder::count(far.path()), 0);
    }

    void recentFiles()
    {
        const QUrl list = m_folder->file(
            u"recently-used.xbel"_s,
            "<xbel version='1.0' xmlns:bookmark='http://www.freedesktop.org/standards/desktop-bookmarks'>"
            "<bookmark href='file:///theirs' added='2024-06-07T08:09:10Z' modified='2024-06-07T08:09:10Z' "
            "visited='2024-06-07T08:09:10Z'><title>T</title><info><metadata owner='http://freedesktop.org'>"
            "<bookmark:applications><bookmark:application name='E' exec='e' modified='2024-06-07T08:09:10Z' count='3'/>"
            "</bookmark:applications></metadata></info></bookmark></xbel>");
        const QByteArray ours = m_folder->url(u"Häutchen & co.jpg"_s).toEncoded().replace("&", "&amp;");
        BWRecentFiles(list.toLocalFile()).add(m_folder->url(u"Häutchen & co.jpg"_s));
        for (const QByteArray &text : {ours, "<title>T</title>"_ba, "count=\"3\""_ba, "\"image/jpeg\""_ba})
            QTRY_COMPARE(TestFolder::read(list).count(text), 1);
        BWRecentFiles(list.toLocalFile()).clear();
        QTRY_COMPARE(TestFolder::read(list).count(ours), 0);
        QTRY_COMPARE(TestFolder::read(list).count("<title>T</title>"), 1);

        TestFolder::write(list, "damaged");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"recent files stays as it is"_s));
        BWRecentFiles(list.toLocalFile()).add(list);
        QCOMPARE(TestFolder::read(list), "damaged");
    }

private:
    static BWFileMoves::Result wait(const std::function<void(const BWFileMoves::Finished &)> &begin)
    {
        std::optional<BWFileMoves::Result> result;
        begin([&result](const BWFileMoves::Result &now) { result = now; });
        if (!QTest::qWaitFor([&] { return result.has_value(); }, 20'000))
            qFatal("No answer");
        return *result;
    }

    std::optional<TestFolder> m_folder;
    std::optional<BWFileMoves> m_moves;
    int m_changes = 0;
};

QTEST_GUILESS_MAIN(TestFileMoves)
#include "tst_BWFileMoves.moc"
