// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWFileMoves.h"
#include "Model/Albums/BWTrash.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "ThumbnailFixture.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWVersion.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QTest>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

/// What is shared with other programs, on disk.
class TestThumbnailStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.emplace(); }
    void cleanup() { m_fixture.reset(); }

    void otherProgramsFindOurs()
    {
        QList<QUrl> files;
        for (const char *name : {"plain.jpg", "\xc3\xa4 \xe6\x97\xa5.jpg", "100%41.jpg", "it's \"one\".jpg",
                                 "two\nlines.jpg", "\xff\xfe.jpg", "a+b&c;d=e@f,g!(h)[i]~j#k?l|m.jpg"})
            files.append(m_fixture->file(name, ThumbnailFixture::jpeg(Qt::red)));
        m_fixture->make(files);

        qputenv("XDG_CACHE_HOME", m_fixture->cache().left(m_fixture->cache().lastIndexOf('/')));
        QByteArray listing;
        QVERIFY(ThumbnailFixture::run(u"gio"_s,
                                      {u"list"_s, u"-u"_s, u"-a"_s, u"thumbnail::path,thumbnail::is-valid"_s,
                                       QFile::decodeName(m_fixture->path(""))},
                                      &listing));
        for (const QUrl &file : files) {
            const QByteArray uri = BWThumbnailStore::uri(BWFilePath::native(file));
            const QByteArray line = listing.mid(listing.indexOf(uri + '\t')).split('\n').first();
            QVERIFY2(line.contains("thumbnail::is-valid=TRUE") && line.contains("/large/"), uri + '\n' + listing);
        }
        QDirIterator entries(QFile::decodeName(m_fixture->cache()), QDir::AllEntries | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        int count = 0;
        while (entries.hasNext()) {
            struct stat info;
            QCOMPARE(::stat(QFile::encodeName(entries.next()).constData(), &info), 0);
            QCOMPARE(info.st_mode & 0777, S_ISDIR(info.st_mode) ? mode_t(0700) : mode_t(0600));
            ++count;
        }
        QCOMPARE(count, files.size() + 1); // nothing but them in one folder
    }

    void theirsAreUsedIfValid_data()
    {
        const Rows<QByteArray, QByteArray, QByteArray, QString> row; // the folder; a text of it, changed; what is shown
        const QByteArray none;
        row("valid", "large", none, none, u"blue"_s);
        row("larger", "x-large", none, none, u"blue"_s);
        row("smaller", "normal", none, none, u"red"_s);
        row("no size", "large", "Thumb::Size", none, u"blue"_s);
        row("other size", "large", "Thumb::Size", "1", u"red"_s);
        row("no time", "large", "Thumb::MTime", none, u"red"_s);
        row("stale", "large", "Thumb::MTime", "1", u"red"_s);
        row("fraction", "large", "Thumb::MTime",
            QByteArray::number(ThumbnailFixture::longAgo.toSecsSinceEpoch()) + ".123", u"blue"_s);
        row("other file", "large", "Thumb::URI", "file:///x", u"red"_s);
        row("damaged", "large", "cut", none, u"red"_s);
        row("claims two gigabytes", "large", "huge", none, u"red"_s);
        row("colours by number", "large", "indexed", none, u"blue"_s);
        row("16 bits and alpha", "large", "deep", none, u"blue"_s);
        row("too large", "large", "wide", none, u"red"_s);
        row("failed", "fail/brimwellpro-" BW_VERSION, none, none, u"impossible"_s);
    }

    void theirsAreUsedIfValid()
    {
        const auto [folder, key, value, shown] = Rows<QByteArray, QByteArray, QByteArray, QString>::current();
        const QByteArray picture = ThumbnailFixture::jpeg(Qt::red);
        const QUrl file = m_fixture->file("picture.jpg", picture);
        const QByteArray uri = BWThumbnailStore::uri(m_fixture->path("picture.jpg"));
        QMap<QByteArray, QByteArray> texts{
            {"Thumb::URI", uri},
            {"Thumb::MTime", QByteArray::number(ThumbnailFixture::longAgo.toSecsSinceEpoch())},
            {"Thumb::Size", QByteArray::number(picture.size())}};
        if (value.isNull())
            texts.remove(key);
        else
            texts.insert(key, value);
        QImage image(key == "wide" ? 1025 : 200, 150, QImage::Format_RGB32);
        image.fill(Qt::blue);
        if (key == "indexed" || key == "deep")
            image.convertTo(key == "deep" ? QImage::Format_RGBA64 : QImage::Format_Indexed8);
        for (auto text = texts.cbegin(); text != texts.cend(); ++text)
            image.setText(QString::fromLatin1(text.key()), QString::fromLatin1(text.value()));
        QBuffer buffer;
        QVERIFY(image.save(&buffer, "png"));
        QByteArray png = buffer.data();
        if (key == "cut")
            png.chop(png.size() / 3);
        if (key == "huge")
            png.insert(33, QByteArray("\x77\0\0\0tEXt", 8)); // behind the header
        const QByteArray name = entry(folder, uri);
        QVERIFY(QDir().mkpath(QFile::decodeName(m_fixture->cache() + '/' + folder)));
        TestFolder::write(BWFilePath::url(name), png);

        QCOMPARE(m_fixture->make(file), shown);
        rusage usage{};
        QCOMPARE(::getrusage(RUSAGE_SELF, &usage), 0);
        QVERIFY(usage.ru_maxrss < 1'000'000); // kilobytes
        if (shown != u"red"_s)
            return;
        QImage own; // has replaced it
        QVERIFY(own.load(QFile::decodeName(entry("large", uri)), "png"));
        QCOMPARE(ThumbnailFixture::nameOf(own.pixel(5, 5)), u"red"_s);
        QCOMPARE(own.text(u"Thumb::URI"_s).toLatin1(), uri);
    }

    void failuresAreRemembered()
    {
        const QByteArray good = ThumbnailFixture::jpeg(Qt::red);
        const QUrl file = m_fixture->file("picture.jpg", QByteArray(good.size(), 'x'));
        QCOMPARE(m_fixture->make(file), u"impossible"_s);
        m_fixture->file("picture.jpg", good); // of the same size and time
        m_fixture->restart();
        QCOMPARE(m_fixture->make(file), u"impossible"_s);
        m_fixture->setModified("picture.jpg", ThumbnailFixture::longAgo.addSecs(1));
        m_fixture->restart();
        QCOMPARE(m_fixture->make(file), u"red"_s);
    }

    /// Who deletes or renames a picture would not expect to be able to see it there, or its old name.
    void forgottenWithTheFile()
    {
        QList<QUrl> files;
        for (const char *name : {"stays.jpg", "renamed.jpg", "trashed.jpg"})
            files.append(m_fixture->file(name, ThumbnailFixture::jpeg(Qt::red)));
        m_fixture->make(files, 128);
        m_fixture->restart();
        m_fixture->make(files, 500);
        files.append(m_fixture->file("broken.jpg", "not a picture"));
        m_fixture->make(files.last());
        QCOMPARE(storedFiles(), 7);

        qputenv("XDG_CACHE_HOME", m_fixture->cache().left(m_fixture->cache().lastIndexOf('/')));
        bool renamed = false, trashed = false;
        BWFileMoves moves([] {});
        moves.rename(files[1], "new.jpg", [&](const auto &result) { renamed = result.failed.isEmpty(); });
        BWTrash trash;
        trash.move({files[2], files[3]}, [&](const auto &result) { trashed = result.stayed.isEmpty(); });
        QTRY_VERIFY(renamed && trashed);
        const QImage picture(16, 16, QImage::Format_RGB32); // that a worker had begun to store before
        BWThumbnailStore(m_fixture->cache())
            .keep(m_fixture->path("renamed.jpg"), {}, BWThumbnailSize::Normal,
                  {BWThumbnail::Kind::Picture, picture, {}});
        QCOMPARE(storedFiles(), 2);
        QCOMPARE(m_fixture->make(files[0]), u"red"_s);
    }

    void oldestOfOursMakeRoom()
    {
        constexpr int most = 6000, files = 100;
        const QImage picture(16, 16, QImage::Format_RGB32);
        const QString folder = QFile::decodeName(m_fixture->cache() + "/large/");
        QVERIFY(QDir().mkpath(folder));
        const auto isOf = [](const QString &path, int second) {
            QFile file(path);
            return file.open(QIODevice::ReadWrite)
                && file.setFileTime(QDateTime::fromSecsSinceEpoch(second), QFileDevice::FileModificationTime);
        };
        TestFolder::write(QUrl::fromLocalFile(folder + u"theirs.png"_s), QByteArray(most / 4, 'x'));
        QVERIFY(isOf(folder + u"theirs.png"_s, 0));
        BWThumbnailStore store(m_fixture->cache(), most);
        const auto path = [this](int number) { return m_fixture->path("f" + QByteArray::number(number)); };
        for (int i = 0; i < files; ++i) {
            m_fixture->file("f" + QByteArray::number(i), {});
            store.keep(path(i), {}, BWThumbnailSize::Large, {BWThumbnail::Kind::Picture, picture, {}});
            QVERIFY(isOf(QFile::decodeName(entry("large", BWThumbnailStore::uri(path(i)))), i + 1));
        }
        QVERIFY(store.find(path(files - 1), {}, BWThumbnailSize::Large));
        QVERIFY(!store.find(path(0), {}, BWThumbnailSize::Large));
        QVERIFY(QFile::exists(folder + u"theirs.png"_s));
        const auto left = QDir(folder).entryList(QDir::Files).size();
        QVERIFY2(left > 4 && left < 30, qPrintable(QString::number(left))); // about 300 bytes each
    }

    void unstoredThumbnailsAreShown()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        for (const QByteArray reason : {"no folder can be made", "the disk is full", "none is wanted"}) {
            m_fixture.emplace();
            if (reason == "no folder can be made")
                m_fixture->options().sharedFolder = m_fixture->path("picture0.jpg") + "/thumbnails";
            else if (reason == "none is wanted")
                m_fixture->options().sharedFolder.clear();
            m_fixture->restart();
            QList<QUrl> files;
            for (const QByteArray name : {"picture0.jpg", "picture1.jpg", "picture2.jpg"})
                files.append(m_fixture->file(name, ThumbnailFixture::jpeg(Qt::red)));
            if (reason != "none is wanted") // one line for all of them
                QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be stored"_s));
            {
                const SmallDisk disk(reason == "the disk is full" ? 100 : RLIM_INFINITY);
                m_fixture->make(files);
            }
            QVERIFY2(m_fixture->shown(files.last()) == u"red"_s, reason);
            QDirIterator left(QFile::decodeName(m_fixture->cache()), QDir::Files, QDirIterator::Subdirectories);
            QVERIFY2(!left.hasNext(), reason);
        }
    }

    void thumbnailsOfThumbnailsAreNotStored()
    {
        QVERIFY(QDir().mkpath(QFile::decodeName(m_fixture->cache() + "/large")));
        QCOMPARE(::symlink((m_fixture->cache() + "/large").constData(), m_fixture->path("link").constData()), 0);
        const QUrl file = m_fixture->file("link/picture.jpg", ThumbnailFixture::jpeg(Qt::red));
        QCOMPARE(m_fixture->make(file), u"red"_s);
        QCOMPARE(QDir(QFile::decodeName(m_fixture->cache() + "/large")).count(), 3U); // with . and ..
    }

private:
    int storedFiles() const
    {
        QDirIterator entries(QFile::decodeName(m_fixture->cache()), QDir::Files, QDirIterator::Subdirectories);
        int count = 0;
        for (; entries.hasNext(); entries.next())
            ++count;
        return count;
    }

    QByteArray entry(const QByteArray &folder, const QByteArray &uri) const
    {
        return m_fixture->cache() + '/' + folder + '/' + QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()
            + ".png";
    }

    std::optional<ThumbnailFixture> m_fixture;
};

QTEST_GUILESS_MAIN(TestThumbnailStore)
#include "tst_BWThumbnailStore.moc"
