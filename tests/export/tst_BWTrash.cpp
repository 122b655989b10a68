// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWTrash.h"
#include "Rows.h"
#include "TestFolder.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

class TestTrash : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder.emplace();
        std::filesystem::remove_all(QFileInfo(TestFolder::trash()).path().toStdString());
    }

    void trashAndRestore_data()
    {
        const Rows<QByteArray> row;
        row("plain", "20240607_image_001.jpg");
        row("letters of all kinds", "H\xc3\xa4utchen \xf0\x9f\x94\xac.jpg");
        row("special signs", "100% %41 \"a\" 'b' \\ two\nlines (deleted)");
        row("not UTF-8", "caf\xe9.jpg");
    }
    void trashAndRestore()
    {
        const auto [name] = Rows<QByteArray>::current();
        // The second gets another name in the Trash.
        const QList<QUrl> files{TestFolder::write(BWFilePath::entry(m_folder->folder(u"a"_s), name), "first"),
                                TestFolder::write(BWFilePath::entry(m_folder->folder(u"b"_s), name), "second")};
        BWTrash trash;
        const BWTrash::Moved moved = move(trash, files);
        QCOMPARE(moved.files, files);
        QVERIFY(moved.stayed.isEmpty());
        QVERIFY(!BWFilePath::exists(files[0]) && !BWFilePath::exists(files[1]));
        // File managers use this to put files back.
        QCOMPARE(notedPaths(), QSet<QByteArray>({BWFilePath::native(files[0]), BWFilePath::native(files[1])}));

        const BWTrash::Restored restored = undo(trash);
        QVERIFY(restored.failed.isEmpty());
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(restored.files[i].original, files[i]);
            QCOMPARE(restored.files[i].now, files[i]);
            QCOMPARE(TestFolder::read(files[i]), i == 0 ? "first" : "second");
        }
        QVERIFY(notedPaths().isEmpty());
        QCOMPARE(TestFolder::count(TestFolder::trash()), 0);
        QVERIFY(!trash.canUndo());
    }

    void unmovableFilesStayAndUndoTakesTheLastMove()
    {
        const QTemporaryDir otherDisk(u"/dev/shm/trash-XXXXXX"_s); // has no Trash
        const QUrl there = BWFilePath::entry(QUrl::fromLocalFile(otherDisk.path()), "a.jpg");
        QVERIFY(QFile(there.toLocalFile()).open(QIODevice::WriteOnly));
        const QUrl gone = m_folder->url(u"gone.jpg"_s);
        BWTrash trash;
        move(trash, {m_folder->file(u"earlier.jpg"_s)});
        const QUrl fine = m_folder->file(u"fine.jpg"_s, "pixels");
        for (const char *name : {"a.jpg", "gone.jpg", "a.jpg"})
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(u"Cannot move to the Trash .*"_s + QLatin1String(name)));
        const BWTrash::Moved moved = move(trash, {there, fine, gone});
        QCOMPARE(moved.files, QList<QUrl>{fine});
        QCOMPARE(moved.stayed.size(), 2);
        QCOMPARE(moved.stayed[0].file, there);
        QVERIFY(BWFilePath::exists(there) && !moved.stayed[0].reason.isEmpty());
        QCOMPARE(moved.stayed[1].file, gone);

        move(trash, {there}); // takes nothing back from the one before
        QCOMPARE(undo(trash).files.size(), 1); // only the last time is undone
        QCOMPARE(TestFolder::read(fine), "pixels");
        QVERIFY(undo(trash).files.isEmpty());
    }

    void undoLosesNothing()
    {
        const QUrl taken = m_folder->file(u"taken.jpg"_s, "trashed");
        const QUrl emptied = m_folder->file(u"emptied.jpg"_s, "trashed");
        const QUrl homeless = m_folder->file(u"sub/homeless.jpg"_s, "trashed");
        BWTrash trash;
        move(trash, {taken, emptied, homeless});
        m_folder->file(u"taken.jpg"_s, "new");
        m_folder->file(u"taken (2).jpg"_s, "newer");
        // Another file of that name comes into the Trash after it was emptied.
        const QString inTrash = TestFolder::trash() + u"/emptied.jpg"_s;
        QVERIFY(QFile::rename(inTrash, m_folder->path(u"keeps the inode"_s)));
        TestFolder::write(QUrl::fromLocalFile(inTrash), "other");
        QVERIFY(QDir(m_folder->path(u"sub"_s)).removeRecursively());

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot put back .*emptied.jpg"_s));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot put back .*homeless.jpg"_s));
        const BWTrash::Restored restored = undo(trash);
        QCOMPARE(restored.files.size(), 1);
        QCOMPARE(restored.files[0].original, taken);
        QCOMPARE(restored.files[0].now, m_folder->url(u"taken (3).jpg"_s));
        QCOMPARE(TestFolder::read(taken) + TestFolder::read(m_folder->url(u"taken (2).jpg"_s))
                     + TestFolder::read(restored.files[0].now),
                 "newnewertrashed");
        QCOMPARE(restored.failed.size(), 2);
        QVERIFY(!BWFilePath::exists(emptied) && QFile::exists(inTrash));
        // Other programs can still put it back.
        QVERIFY(notedPaths().contains(BWFilePath::native(homeless)));
        QVERIFY(QFile::exists(TestFolder::trash() + u"/homeless.jpg"_s));
    }

private:
    static QSet<QByteArray> notedPaths()
    {
        QSet<QByteArray> paths;
        const QUrl info = QUrl::fromLocalFile(QFileInfo(TestFolder::trash()).path() + u"/info"_s);
        for (const QByteArray &note : BWFilePath::entries(info).value_or(QList<QByteArray>())) {
            const QByteArray text = TestFolder::read(BWFilePath::entry(info, note));
            const qsizetype begin = text.indexOf("\nPath=") + 6;
            paths.insert(QByteArray::fromPercentEncoding(text.mid(begin, text.indexOf('\n', begin) - begin)));
        }
        return paths;
    }

    static BWTrash::Moved move(BWTrash &trash, const QList<QUrl> &files)
    {
        std::optional<BWTrash::Moved> result;
        trash.move(files, [&](const BWTrash::Moved &moved) { result = moved; });
        return QTest::qWaitFor([&] { return result.has_value(); }, 20'000) ? *result : BWTrash::Moved();
    }

    static BWTrash::Restored undo(BWTrash &trash)
    {
        std::optional<BWTrash::Restored> result;
        trash.undo([&](const BWTrash::Restored &restored) { result = restored; });
        return QTest::qWaitFor([&] { return result.has_value(); }, 20'000) ? *result : BWTrash::Restored();
    }

    std::optional<TestFolder> m_folder;
};

QTEST_GUILESS_MAIN(TestTrash)
#include "tst_BWTrash.moc"
