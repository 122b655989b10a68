// SPDX-License-Identifier: GPL-3.0-or-later
#include "AttachedCameras.h"
#include "BWManualClock.h"
#include "Model/Capture/BWSeriesRun.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "TestFolder.h"

#include <atomic>
#include <dlfcn.h>
#include <QTest>
#include <sys/statvfs.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Reason = BWSeries::Reason;

namespace {

std::atomic<bool> diskIsFull = false;

} // namespace

/// In place of the C library's, for all that is in this process.
extern "C" int statvfs(const char *path, struct statvfs *disk) noexcept
{
    static const auto real = reinterpret_cast<decltype(&statvfs)>(::dlsym(RTLD_NEXT, "statvfs"));
    const int result = real(path, disk);
    disk->f_bavail = diskIsFull ? 0 : disk->f_blocks;
    return result;
}

/// A series with a simulated camera and a real folder.
class TestSeriesRun : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<TestFolder>();
        qputenv("TMPDIR", m_folder->folder(u"tmp"_s).toLocalFile().toUtf8());
        m_defaults = std::make_unique<BWSettingsFile>(m_folder->path(u"settings.conf"_s));
        m_albums = std::make_unique<BWAlbumManager>(*m_defaults, m_folder->path(), [] { return QDate(2024, 6, 7); });
        m_albums->prepare();
        m_albums->addAlbumsFromPaths({m_folder->folder(u"BrimwellPro/Chosen"_s)});
        m_chosen = m_albums->albums().constLast();
        m_capture = std::make_unique<BWCaptureController>(
            *m_albums, BWCaptureController::Callbacks{[this] { ++m_stills; }, [](bool) {}, [](const auto &) {}});
        m_cameras = std::make_unique<AttachedCameras>(QList{AttachedCameras::Type::High}, BWPixelFormat::MJPEG);
        plugIn();
        m_stills = 0;
        makeRun();
    }
    void cleanup()
    {
        m_camera.reset();
        m_run.reset();
        m_cameras.reset();
        m_capture.reset();
        m_albums.reset();
    }

    void picturesGoIntoTheChosenAlbum()
    {
        m_run->start(endless(), m_chosen);
        takePicture(1);
        BWFrame frozen;
        m_camera->setOnCameraFrame([&](BWCamera &, const BWFrame &frame) { frozen = frame.copied(); });
        takePicture(2);
        m_camera->stopWithCompletion({});
        QTRY_VERIFY(!m_camera->started());
        m_capture->setFrozenFrame(frozen);
        m_camera->startWithCompletion({});
        QTRY_VERIFY(m_camera->started());
        takePicture(3); // a live one
        m_capture->forceSnapshot(m_camera);
        QTRY_COMPARE(m_albums->currentAlbum()->contentsForType(BWMediaType::Image)->size(), 1); // the frozen one
        QCOMPARE(m_stills, 1);
        QCOMPARE(TestFolder::names(*m_chosen->contentsForType(BWMediaType::Image)),
                 u"20240607_image_003.jpg|20240607_image_002.jpg|20240607_image_001.jpg"_s);
        m_camera->setOnCameraFrame({});
        m_run->stop();
        QCOMPARE(m_result.saved, 3);
        QCOMPARE(m_result.last.fileName(), u"20240607_image_003.jpg"_s);
    }

    void endsInOrder_data()
    {
        const Rows<Reason> row;
        row("album removed", Reason::AlbumGone);
        row("album renamed", Reason::AlbumGone);
        row("its disk is unmounted", Reason::AlbumGone);
        row("full disk", Reason::DiskFull);
        row("temporary files cannot be written", Reason::NotSaved);
    }
    void endsInOrder()
    {
        const auto [reason] = Rows<Reason>::current();
        const QByteArray moment = QTest::currentDataTag();
        m_run->start(endless(), m_chosen);
        takePicture(1);
        QTRY_VERIFY(m_looks > 0);
        const QString folder = m_chosen->path().toLocalFile();
        std::optional<SmallDisk> small;
        if (moment == "album removed")
            QVERIFY(QDir(folder).removeRecursively());
        else if (moment == "album renamed")
            QVERIFY(QDir().rename(folder, folder + u" 2"_s));
        else if (moment == "temporary files cannot be written")
            small.emplace(1000);
        diskIsFull = moment == "full disk";
        m_device = moment == "its disk is unmounted" ? 2 : 1;
        m_clock.advance(10s);
        QTRY_VERIFY((push(), !m_run->isRunning()));
        QCOMPARE(m_result.reason, reason);
        QCOMPARE(m_ends, 1);
        QTRY_VERIFY(!QFile::exists(recordFile()));
    }

    void cameraIsPulledAndAnotherPlugged()
    {
        m_run->start(endless(), m_chosen);
        takePicture(1);
        m_clock.advance(10s); // requested, but no frame comes
        m_camera.reset();
        m_cameras->unplug(0);
        QTRY_VERIFY(m_cameras->list().isEmpty());
        m_clock.advance(30s);
        QCOMPARE(m_run->series().state(), BWSeries::State::WaitingForCamera);
        m_cameras->hand(0).plugIn();
        plugIn();
        takePicture(2);
        QCOMPARE(m_run->series().missedCount(), 4);
        m_run->stop();
    }

    void goesOnInALaterRun()
    {
        m_run->start({10s, 0s, BWSeriesPlan::End::Number, 3, 1s}, m_chosen);
        takePicture(1);
        auto second = std::make_unique<BWSeriesRun>(parts(), recordFile(), m_clock);
        QTRY_VERIFY(QFile::exists(recordFile()));
        QVERIFY(!second->unfinished()); // of a program that still runs
        second.reset();
        m_run->stop(Reason::LeftForNextStart);
        makeRun();
        const std::optional<BWSeriesRecord> record = m_run->unfinished();
        QVERIFY(record);
        QCOMPARE(record->saved, 1);
        m_albums->setSelectedIndex(0);
        m_folder->file(u"BrimwellPro/Chosen/20240607_image_002.jpg"_s); // somebody else's
        m_run->resume(*record);
        QCOMPARE(m_run->album(), m_chosen);
        takePicture(2);
        takePicture(3);
        QTRY_COMPARE(m_ends, 1);
        QCOMPARE(m_result.reason, Reason::Done);
        const auto all = *m_chosen->contentsForType(BWMediaType::Image);
        QCOMPARE(all.size(), 4);
        QCOMPARE(TestFolder::names(m_run->files().among(all)),
                 u"20240607_image_004.jpg|20240607_image_003.jpg|20240607_image_001.jpg"_s);
        makeRun();
        QVERIFY(!m_run->unfinished());
    }

private:
    static BWSeriesPlan endless() { return {10s, 0s, BWSeriesPlan::End::UntilStopped, 1, 1s}; }
    QString recordFile() const { return m_folder->path(u"series.json"_s); }
    BWSeriesRun::Parts parts()
    {
        return {*m_albums, *m_capture, [this] { return m_camera; }};
    }
    void makeRun()
    {
        m_ends = 0;
        m_result = {};
        m_looks = 0;
        diskIsFull = false;
        m_device = 1;
        m_run.reset(); // lets go of the record
        m_run = std::make_unique<BWSeriesRun>(
            parts(), recordFile(), m_clock, [this] { return m_clock.now(); },
            [this](const QUrl &album) {
                BWSeriesRun::Disk disk = BWSeriesRun::lookAt(album);
                disk.device = m_device;
                ++m_looks;
                return disk;
            });
        connect(m_run.get(), &BWSeriesRun::ended, this, [this](const BWSeriesResult &result) {
            ++m_ends;
            m_result = result;
        });
    }
    void plugIn()
    {
        QTRY_VERIFY(!m_cameras->list().isEmpty());
        m_camera = (*m_cameras)[0];
        m_capture->prepareCamera(m_camera);
        m_camera->startWithCompletion({});
        QTRY_VERIFY(m_camera->started());
    }
    void push() { m_cameras->hand(0).pushFrames(1); }
    /// Waits until that many are saved.
    void takePicture(qint64 count)
    {
        if (m_run->series().savedCount() > 0 || m_run->series().missedCount() > 0)
            m_clock.advance(10s);
        QTRY_VERIFY((push(), m_run->series().savedCount() == count));
    }

    BWManualClock m_clock;
    std::unique_ptr<TestFolder> m_folder;
    std::unique_ptr<BWSettingsFile> m_defaults;
    std::unique_ptr<BWAlbumManager> m_albums;
    std::unique_ptr<BWCaptureController> m_capture;
    std::unique_ptr<AttachedCameras> m_cameras;
    std::unique_ptr<BWSeriesRun> m_run;
    BWAlbumPtr m_chosen;
    BWCameraPtr m_camera;
    BWSeriesResult m_result;
    std::atomic<quint64> m_device = 1;
    std::atomic<int> m_looks = 0;
    int m_stills = 0;
    int m_ends = 0;
};

QTEST_GUILESS_MAIN(TestSeriesRun)
#include "tst_BWSeriesRun.moc"
