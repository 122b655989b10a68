// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Model/Albums/BWLastCapture.h"
#include "Model/Capture/BWSnapshotTags.h"
#include "Model/Settings/BWSettingsFile.h"
#include "TestFolder.h"
#include "TestJpeg.h"

#include <filesystem>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using State = BWAlbumContents::State;

/// An album's contents as they change under the program's eyes, in a real folder.
class TestAlbumContents : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void reportsThatThereIsNoAlbum()
    {
        BWAlbumManager albums(m_defaults, m_folder.path());
        BWAlbumContents contents(albums, m_clock);
        contents.reload();
        QCOMPARE(contents.state(), State::Reading); // it is not known yet
        m_folder.file(u"BrimwellPro"_s); // where the folder should be
        albums.prepare();
        contents.reload();
        QCOMPARE(contents.state(), State::Unavailable);
        QVERIFY(QFile::remove(m_folder.path() + u"/BrimwellPro"_s));
    }

    void followsTheFolder()
    {
        m_albums.prepare();
        const QDir album(m_albums.currentAlbum()->path().toLocalFile());
        const auto write = [this](const QString &name) { m_folder.file(u"BrimwellPro/Default Album/"_s + name); };
        write(u"a.jpg"_s);
        BWAlbumContents contents(m_albums, m_clock);
        QSignalSpy reloaded(&contents, &BWAlbumContents::reloaded);
        QSignalSpy changed(&contents, &BWAlbumContents::changed);
        QSignalSpy written(&contents, &BWAlbumContents::filesWritten);
        contents.reload();
        QCOMPARE(reloaded.size(), 1);
        QCOMPARE(contents.state(), State::Reading);
        m_clock.advance(2s); // and no listing has come yet
        QCOMPARE(contents.state(), State::NotAnswering);
        QTRY_COMPARE(contents.state(), State::Listed);
        QCOMPARE(names(contents), u"a.jpg"_s);
        QCOMPARE(reloaded.size(), 2);

        changed.clear();
        write(u"b.jpg"_s);
        write(u"c.mov"_s);
        write(u"notes.txt"_s);
        QTRY_COMPARE(names(contents), u"b.jpg|a.jpg|c.mov"_s);
        const auto changes = changed.size();
        written.clear();
        write(u"a.jpg"_s); // again
        QTRY_COMPARE(written.size(), 1);
        m_folder.file(u"new"_s);
        std::filesystem::rename(m_folder.path(u"new"_s).toStdString(), album.filePath(u"a.jpg"_s).toStdString());
        QTRY_COMPARE(written.size(), 2);
        QCOMPARE(changed.size(), changes); // the list is the same
        QCOMPARE(reloaded.size(), 2);

        contents.reload();
        QTRY_COMPARE(reloaded.size(), 3);
        m_clock.advance(2s);
        QCOMPARE(contents.state(), State::Listed);

        const QString elsewhere = album.path() + u" elsewhere"_s;
        QVERIFY(QDir().rename(album.path(), elsewhere));
        QTRY_COMPARE(contents.state(), State::Unavailable);
        QCOMPARE(names(contents), QString());
        QVERIFY(QDir().rename(elsewhere, album.path()));
        QTRY_COMPARE(contents.state(), State::Listed);
        write(u"d.jpg"_s); // watched as before
        QTRY_COMPARE(names(contents), u"d.jpg|b.jpg|a.jpg|c.mov"_s);
        QCOMPARE(reloaded.size(), 3);
    }

    /// What it makes of thousands of changes is what a new listing shows. Set BW_SEED to repeat a run.
    void followsLikeANewListing()
    {
        const uint seed = qEnvironmentVariableIsSet("BW_SEED") ? qEnvironmentVariable("BW_SEED").toUInt()
                                                               : QRandomGenerator::global()->generate();
        qInfo("BW_SEED=%u", seed);
        QRandomGenerator random(seed);
        m_albums.addAlbumFromPath(m_folder.folder(u"Busy"_s));
        const QDir album(m_folder.path(u"Busy"_s));
        BWAlbumContents contents(m_albums, m_clock);
        QSignalSpy reloaded(&contents, &BWAlbumContents::reloaded);
        contents.reload();
        QTRY_COMPARE(contents.state(), State::Listed);
        const QStringList kinds{u"A%1.jpg"_s, u"a%1.jpg"_s, u"20240607_image_%1.jpg"_s, u"b.%1.mov"_s,
                                u".%1.jpg.part"_s};
        for (int round = 0; round < 20; ++round) {
            for (int i = 0; i < 100; ++i) {
                const auto name = [&] { return kinds[random.bounded(5)].arg(random.bounded(40)); };
                if (random.bounded(3) > 0)
                    TestFolder::write(m_folder.url(u"Busy/"_s + name()), "x");
                else if (random.bounded(2) > 0)
                    QFile::remove(album.filePath(name()));
                else
                    QFile::rename(album.filePath(name()), album.filePath(name()));
            }
            const auto listed = *m_albums.currentAlbum()->contents();
            reloaded.clear();
            contents.reload();
            QTRY_COMPARE(reloaded.size(), 1);
            QCOMPARE(names(contents), TestFolder::names(listed.images + listed.videos));
        }
    }

    void anotherAlbumIsEmptyUntilItIsListed()
    {
        m_folder.file(u"First/a.jpg"_s);
        m_folder.file(u"Second/b.jpg"_s);
        BWAlbumContents contents(m_albums, m_clock);
        for (const auto &[album, file] : {std::pair{u"First"_s, u"a.jpg"_s}, {u"Second"_s, u"b.jpg"_s}}) {
            m_albums.addAlbumFromPath(m_folder.url(album));
            contents.reload();
            QCOMPARE(names(contents), QString());
            QTRY_COMPARE(names(contents), file);
        }
    }

    void lastCaptureIsTheNewest()
    {
        m_albums.addAlbumFromPath(m_folder.folder(u"Captures"_s));
        const auto file = [this](const QString &name) { return m_folder.url(u"Captures/"_s + name); };
        const auto write = [&](const QString &name, int minutesAgo) {
            TestFolder::write(file(name), "x");
            QFile opened(file(name).toLocalFile());
            QVERIFY(opened.open(QIODevice::ReadWrite));
            QVERIFY(opened.setFileTime(QDateTime::currentDateTime().addSecs(-60 * minutesAgo),
                                       QFileDevice::FileModificationTime));
        };
        write(u"a.jpg"_s, 5);
        write(u"b.jpg"_s, 4);
        write(u"c.mov"_s, 3);
        BWAlbumContents contents(m_albums);
        BWLastCapture last(m_albums, contents);
        contents.follow();
        QTRY_COMPARE(last.file(), file(u"c.mov"_s));
        write(u"b.jpg"_s, 2);
        write(u"z.mov"_s, 1);
        QTRY_COMPARE(last.file(), file(u"z.mov"_s));
        QVERIFY(QFile::remove(file(u"z.mov"_s).toLocalFile()));
        QTRY_COMPARE(last.file(), file(u"b.jpg"_s));

        // What comes now is the last one, whatever it is called.
        write(u"0.jpg"_s, 9);
        last.captureAdded(file(u"0.jpg"_s));
        QCOMPARE(last.file(), file(u"0.jpg"_s));
        QTRY_VERIFY(contents.files(BWMediaType::Image).contains(file(u"0.jpg"_s)));
        write(u"d.jpg"_s, 0);
        QTRY_VERIFY(contents.files(BWMediaType::Image).contains(file(u"d.jpg"_s)));
        QCOMPARE(last.file(), file(u"0.jpg"_s));
        QVERIFY(QFile::remove(file(u"0.jpg"_s).toLocalFile()));
        QTRY_COMPARE(last.file(), file(u"d.jpg"_s));

        // A picture is as old as it says, whenever somebody measured in it.
        const BWSnapshotTags tags{QDateTime::currentDateTime().addSecs(-60 * 4), {}, {}};
        TestFolder::write(file(u"d.jpg"_s), tags.addedTo(TestJpeg::encode(TestJpeg::noise({16, 16}, 1))));
        write(u"0.mov"_s, 9);
        QTRY_COMPARE(last.file(), file(u"c.mov"_s));

        m_albums.addAlbumFromPath(m_folder.folder(u"Empty"_s));
        QTRY_VERIFY(last.file().isEmpty());
        last.captureAdded(file(u"a.jpg"_s)); // of another album by now
        QVERIFY(last.file().isEmpty());
    }

private:
    static QString names(const BWAlbumContents &contents)
    {
        return TestFolder::names(contents.files(BWMediaType::Image) + contents.files(BWMediaType::Video));
    }

    TestFolder m_folder;
    BWSettingsFile m_defaults{m_folder.path() + u"/settings.conf"_s};
    BWManualClock m_clock;
    BWAlbumManager m_albums{m_defaults, m_folder.path()};
};

QTEST_GUILESS_MAIN(TestAlbumContents)
#include "tst_BWAlbumContents.moc"
