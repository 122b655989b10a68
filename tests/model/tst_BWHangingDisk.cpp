// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumContents.h"
#include "Model/Albums/BWStillLoader.h"
#include "Model/Measuring/BWMeasurementFile.h"
#include "Model/Settings/BWSettingsFile.h"
#include "TestFolder.h"

#include <QTest>

using namespace Qt::StringLiterals;
using State = BWAlbumContents::State;

/// An album on a disk that no longer answers. Runs with hanging_disk preloaded: anything that waits for the disk makes
/// the test time out.
class TestHangingDisk : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nothingWaits()
    {
        const TestFolder folder;
        folder.file(u"BrimwellPro/Default Album/a.jpg"_s);
        folder.folder(u"hanging/Remote"_s);
        BWSettingsFile defaults(folder.path(u"settings.conf"_s));
        defaults.setString(
            u"bwp2x_albums"_s,
            u"[\"%1/hanging/Remote\",\"%1/BrimwellPro/Default Album\",\"%1/gone\"]"_s.arg(folder.path()));
        BWAlbumManager albums(defaults, folder.path());
        BWAlbumContents contents(albums);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"The disk does not answer about .*Remote"_s));
        albums.prepareInBackground();
        QVERIFY(!albums.isPrepared()); // as nothing has waited
        contents.reload();
        QCOMPARE(contents.state(), State::Reading);
        albums.waitUntilPrepared();
        QCOMPARE(albums.albums().size(), 2); // the one that hangs may come back, the missing one is dropped
        QCOMPARE(albums.currentAlbum()->name(), u"Remote"_s);

        contents.reload();
        QTRY_COMPARE(contents.state(), State::NotAnswering);
        albums.setSelectedIndex(1);
        contents.reload();
        QTRY_COMPARE(TestFolder::names(contents.files(BWMediaType::Image)), u"a.jpg"_s);

        albums.setSelectedIndex(0);
        bool called = false;
        albums.addFile(folder.file(u"capture"_s), BWMediaType::Image, [&](bool, const QUrl &) { called = true; });
        albums.whenAdded([&] { called = true; });
        QCoreApplication::processEvents();
        QVERIFY(!called);
        albums.abandonAdding();
        QVERIFY(QFile::exists(folder.path(u"capture"_s)));
    }

    void albumsFolderItselfHangs()
    {
        const TestFolder folder;
        BWSettingsFile defaults(folder.path(u"settings.conf"_s));
        bool called = false;
        const QUrl capture = folder.file(u"capture"_s);
        {
            BWAlbumManager albums(defaults, folder.folder(u"hanging/home"_s).toLocalFile());
            BWAlbumContents contents(albums);
            albums.prepareInBackground();
            contents.reload();
            albums.addFile(capture, BWMediaType::Image, [&](bool, const QUrl &) { called = true; });
            QTRY_COMPARE(contents.state(), State::NotAnswering);
            QVERIFY(!albums.isPrepared());
        }
        QVERIFY2(!called && QFile::exists(capture.toLocalFile()), "kept for the next start");
    }

    void pictureHoldsUpNoOther()
    {
        const TestFolder folder;
        BWStillLoader loader;
        QUrl slow;
        QUrl loaded;
        connect(&loader, &BWStillLoader::takesLong, this, [&](const QUrl &file) { slow = file; });
        connect(&loader, &BWStillLoader::loaded, this, [&](const BWAlbumPicture &still) { loaded = still.file; });
        loader.load(folder.url(u"hanging/a.jpg"_s));
        QTRY_COMPARE(slow, folder.url(u"hanging/a.jpg"_s));
        loader.load(folder.file(u"b.jpg"_s));
        QTRY_COMPARE(loaded, folder.url(u"b.jpg"_s));
    }

    void measurementsHoldUpNobody()
    {
        const TestFolder folder;
        BWMeasurementFile slow(folder.url(u"hanging/a.jpg"_s));
        BWMeasurementFile quick(folder.file(u"b.jpg"_s));
        for (BWMeasurementFile *file : {&slow, &quick}) {
            file->change({{{u"length"_s, {{0, 0}, {1, 0}}, {}}}, {}, {}});
            file->save();
        }
        QTRY_COMPARE(quick.problem(), BWPictureProblem::NotJpeg);
        QVERIFY(slow.isSaving());
    }

    void captureBeforeTheAlbumsAreKnown()
    {
        const TestFolder folder;
        BWSettingsFile defaults(folder.path(u"settings.conf"_s));
        BWAlbumManager albums(defaults, folder.path());
        albums.prepareInBackground();
        bool done = false;
        albums.addFile(folder.file(u"capture"_s), BWMediaType::Image, [&](bool added, const QUrl &) { done = added; });
        QTRY_VERIFY(done);
    }
};

QTEST_GUILESS_MAIN(TestHangingDisk)
#include "tst_BWHangingDisk.moc"
