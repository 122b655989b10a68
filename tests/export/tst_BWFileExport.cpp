// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWFileExport.h"
#include "Model/Export/BWZipExport.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "TestFolder.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/time.h>

using namespace Qt::StringLiterals;

namespace {

using Outcome = BWExportResult::Outcome;
using Problem = BWExportResult::Problem;

QByteArray noise(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32 *>(bytes.data()), size / 4);
    return bytes;
}

} // namespace

class TestFileExport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder.emplace();
        m_folder->folder(u"out"_s);
    }

    void copyIsWholeAndKeepsItsDate_data()
    {
        const Rows<QByteArray> row;
        row("plain", "copy.jpg");
        row("not UTF-8", "caf\xe9 100% \n.jpg");
        row("no room for .part", QByteArray(251, 'n') + ".jpg");
        row("nor in the middle of a letter", "n" + QByteArray("\xc3\xa4").repeated(127));
    }
    void copyIsWholeAndKeepsItsDate()
    {
        const auto [name] = Rows<QByteArray>::current();
        const QByteArray content = noise(9'000'000);
        const QUrl source = m_folder->file(u"a.jpg"_s, content);
        const timeval times[]{{0, 0}, {1'720'000'001, 0}};
        ::utimes(BWFilePath::native(source).constData(), times);
        ::chmod(BWFilePath::native(source).constData(), 0600);
        const QUrl target = BWFilePath::entry(m_folder->url(u"out"_s), name);
        TestFolder::write(target, "old");

        BWExportWatch watch;
        const BWExportResult result = BWExportCopy::run(source, target, watch);
        QCOMPARE(result.reason, QString());
        QCOMPARE(result.file, target);
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), 1);
        struct stat info;
        QCOMPARE(::stat(BWFilePath::native(target).constData(), &info), 0);
        QCOMPARE(info.st_mtim.tv_sec, 1'720'000'001);
        QCOMPARE(info.st_mode & 0777, mode_t(0600));
        QVERIFY(TestFolder::read(target) == content);
    }

    void specialTargets_data()
    {
        const Rows<QString, int, Problem> row; // the target, how many files
        row("the file itself", u"a.jpg"_s, 1, Problem::None);
        row("the file itself, by another way", u"link/a.jpg"_s, 1, Problem::None);
        row("a link to it", u"out/link.jpg"_s, 1, Problem::None);
        row("one of the files of an archive", u"b.jpg"_s, 2, Problem::TargetIsSource);
        row("folder", u"out"_s, 1, Problem::TargetIsFolder);
        row("archive as a folder", u"out"_s, 2, Problem::TargetIsFolder);
        row("no folder", u"gone/x.zip"_s, 2, Problem::TargetFolderMissing);
        row("below a file", u"a.jpg/x.jpg"_s, 1, Problem::TargetFolderMissing);
        row("long name", QString(256, u'n'), 1, Problem::NameTooLong);
    }
    void specialTargets()
    {
        const auto [target, files, problem] = Rows<QString, int, Problem>::current();
        const QList<QUrl> sources{m_folder->file(u"a.jpg"_s, "pixels"), m_folder->file(u"b.jpg"_s, "more")};
        QVERIFY(QFile::link(m_folder->path(), m_folder->path(u"link"_s)));
        QVERIFY(QFile::link(m_folder->path(u"a.jpg"_s), m_folder->path(u"out/link.jpg"_s)));
        QCOMPARE(run(sources.first(files), m_folder->url(target)).problem, problem);
        QCOMPARE(TestFolder::read(sources[0]) + TestFolder::read(sources[1]), "pixelsmore");
        QCOMPARE(TestFolder::count(m_folder->path()), 4);
        if (problem == Problem::None)
            QCOMPARE(TestFolder::read(m_folder->url(target)), "pixels");
    }

    void failureKeepsTheOldTarget_data()
    {
        const Rows<int, QString, Problem> row; // how many files; the second or only one
        const auto rows = [&row](const QByteArray &title, const QString &second, Problem problem) {
            for (const int files : {1, 2})
                row((title + ", " + QByteArray::number(files)).constData(), files, second, problem);
        };
        rows("full disk", u"b.jpg"_s, Problem::TargetTooLarge);
        rows("read-only folder", u"b.jpg"_s, Problem::TargetNotWritable);
        rows("gone", u"gone"_s, Problem::SourceGone);
        rows("folder", u"out"_s, Problem::SourceUnreadable);
        rows("pipe", u"pipe"_s, Problem::SourceUnreadable);
        rows("cut off", u"b.jpg"_s, Problem::SourceChanged);
        rows("grown", u"b.jpg"_s, Problem::SourceChanged);
        rows("cancelled", u"b.jpg"_s, Problem::None);
    }
    void failureKeepsTheOldTarget()
    {
        const auto [files, second, problem] = Rows<int, QString, Problem>::current();
        const QByteArray what = QByteArray(QTest::currentDataTag()).split(',').first();
        const QUrl target = m_folder->file(u"out/x.zip"_s, "old");
        m_folder->file(u"out/x.zip.part"_s, "another program's");
        ::mkfifo(QFile::encodeName(m_folder->path(u"pipe"_s)).constData(), 0666);
        const QUrl changing = m_folder->file(u"b.jpg"_s, noise(12'000'000));
        QList<QUrl> sources{m_folder->file(u"a.jpg"_s, noise(1'000'000)), m_folder->url(second)};
        sources = sources.last(files);

        BWExportWatch *running = nullptr;
        BWExportWatch watch([&](qint64, qint64) {
            if (what == "cancelled")
                running->cancel();
            else if (what == "cut off" || what == "grown")
                QFile::resize(changing.toLocalFile(), what == "grown" ? 13'000'000 : 100);
        });
        running = &watch;
        ::chmod(QFile::encodeName(m_folder->path()).constData(), 0755);
        if (what == "read-only folder")
            ::setfsuid(65534); // root may write everywhere
        BWExportResult result;
        {
            const auto restore = qScopeGuard([] { ::setfsuid(::geteuid()); });
            const SmallDisk disk(what == "full disk" ? 5'000'000 : RLIM_INFINITY);
            result = run(sources, target, watch);
        }
        QCOMPARE(result.outcome, what == "cancelled" ? Outcome::Cancelled : Outcome::Failed);
        QCOMPARE(result.problem, problem);
        QCOMPARE(result.reason.isNull(), what == "cancelled");
        QCOMPARE(TestFolder::read(target) + TestFolder::read(m_folder->url(u"out/x.zip.part"_s)),
                 "oldanother program's");
        // An unfinished archive stays, an unfinished copy does not.
        const bool leaves = files == 2 && !result.leftover.isEmpty();
        QCOMPARE(leaves, files == 2 && what != "cancelled" && what != "read-only folder");
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), leaves ? 3 : 2);
        if (leaves)
            QVERIFY(QFile::exists(m_folder->path(u"out/x.zip (2).part"_s)));
    }

    void exportsRunOneAtATimeAndCanBeCancelled()
    {
        QList<QUrl> sources;
        for (int i = 0; i < 40; ++i)
            sources.append(m_folder->file(u"%1.jpg"_s.arg(i), noise(2'000'000)));
        const QUrl target = m_folder->file(u"out/x.zip"_s, "old");
        BWFileExport fileExport;
        QList<BWExportResult> results;
        const auto finished = [&](const BWExportResult &result) { results.append(result); };
        QElapsedTimer timer;
        timer.start();
        qint64 last = 0;
        int reports = 0;
        QVERIFY(fileExport.start(sources, target, finished, [&](qint64 done, qint64 total) {
            QCOMPARE(total, 80'000'000);
            QVERIFY(done > last && done <= total);
            last = done;
            ++reports;
            if (done > 10'000'000)
                fileExport.cancel();
        }));
        QVERIFY(!fileExport.start(sources, target, finished));
        QTRY_COMPARE_WITH_TIMEOUT(results.size(), 1, 30'000);
        QCOMPARE(results.first().outcome, Outcome::Cancelled);
        QVERIFY(last < 80'000'000);
        QVERIFY2(reports <= timer.elapsed() / 50 + 1, qPrintable(QString::number(reports)));
        QCOMPARE(TestFolder::read(target), "old");
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), 1);

        // A failure is logged once, and the next export may begin from within the end of the last.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^Cannot save .*gone"_s));
        QVERIFY(fileExport.start({m_folder->url(u"gone"_s)}, target, [&](const BWExportResult &result) {
            finished(result);
            QVERIFY(fileExport.start(sources.first(1), target, finished));
        }));
        QTRY_COMPARE_WITH_TIMEOUT(results.size(), 3, 30'000);
        QCOMPARE(results[1].outcome, Outcome::Failed);
        QCOMPARE(results[2].outcome, Outcome::Done);
        QVERIFY(TestFolder::read(target) == TestFolder::read(sources.first()));
        QVERIFY(fileExport.start(sources, target, finished));
        // Goes while an export runs.
    }

    void dropIntoAFolder()
    {
        const QUrl out = m_folder->url(u"out"_s);
        const QList<QUrl> files{m_folder->file(u"ä.jpg"_s, "new"), m_folder->file(u"b.jpg"_s, "pixels"),
                                m_folder->url(u"gone.jpg"_s), m_folder->file(u"out/self.jpg"_s, "itself")};
        m_folder->file(u"out/ä.jpg"_s, "old");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot copy .*gone.jpg"_s));
        QCOMPARE(BWFolderCopies().copy(files, out),
                 (QStringList{u"ä.jpg"_s, u"b.jpg"_s, u"gone.jpg"_s, u"self.jpg"_s}));
        QCOMPARE(TestFolder::read(m_folder->url(u"out/ä.jpg"_s)), "new");
        QCOMPARE(TestFolder::read(m_folder->url(u"out/b.jpg"_s)), "pixels");
        QCOMPARE(TestFolder::read(m_folder->url(u"out/self.jpg"_s)), "itself");
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), 3);
    }

private:
    static BWExportResult run(const QList<QUrl> &files, const QUrl &target, BWExportWatch &watch)
    {
        return files.size() == 1 ? BWExportCopy::run(files.first(), target, watch)
                                 : BWZipExport::run(files, target, watch);
    }
    static BWExportResult run(const QList<QUrl> &files, const QUrl &target)
    {
        BWExportWatch watch;
        return run(files, target, watch);
    }

    std::optional<TestFolder> m_folder;
};

QTEST_GUILESS_MAIN(TestFileExport)
#include "tst_BWFileExport.moc"
