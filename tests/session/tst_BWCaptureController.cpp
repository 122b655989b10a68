// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWMovie.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/Measuring/BWPictureFile.h"
#include "Model/Settings/BWSettingsFile.h"
#include "MovieProbe.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "Utils/BWUIUtils.h"

#include <atomic>
#include <optional>
#include <QDate>
#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSemaphore>
#include <QSet>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>

using namespace Qt::StringLiterals;
using End = BWRecordingStatus::End;
using Refusals = QList<BWCaptureRefusal>;

namespace {

using Type = BWSimulatedCameraOptions::Type;

/// Simulated cameras of different types, and what the program does with them: the first that is found is used, another
/// one takes over when that one is unplugged, and the user may switch.
class Desk {
public:
    Desk(BWCaptureController &capture, const QList<Type> &types, std::optional<BWPixelFormat> format = {})
        : m_capture(capture)
    {
        QList<BWSimulatedCameraOptions> options;
        for (const Type type : types) {
            options.emplaceBack();
            options.last().type = type;
            options.last().pacing = BWSimulatedCameraOptions::Pacing::Manual;
            options.last().pixelFormat = format;
        }
        auto backend = BWSimulatedBackend::create(options);
        hands = backend->cameras();
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(std::move(backend));
        m_detector =
            std::make_unique<BWCameraDetector>(QList{BWCameraDetector::descriptionForHighResolutionMicroscope(),
                                                     BWCameraDetector::descriptionForRegularMicroscope()},
                                               std::move(backends));
        m_detector->setCameraFoundBlock([this](const BWDetectedCameraPtr &device) {
            m_capture.prepareCamera(m_manager.addDetectedCamera(device));
            if (!current)
                use(m_manager.cameras().constLast());
        });
        m_detector->setCameraRemovedBlock([this](const BWDetectedCameraPtr &device) {
            const bool wasCurrent = current && current->detectedCamera() == device;
            m_manager.removeDetectedCamera(device);
            if (wasCurrent)
                use(m_manager.cameras().isEmpty() ? nullptr : m_manager.cameras().constFirst());
        });
        m_detector->startCamerasDetection();
    }
    ~Desk()
    {
        current.reset();
        while (!m_manager.cameras().isEmpty())
            m_manager.removeDetectedCamera(m_manager.cameras().constFirst()->detectedCamera());
    }

    void use(const BWCameraPtr &camera)
    {
        if (const BWCameraPtr before = std::exchange(current, camera))
            before->stopWithCompletion({});
        if (camera)
            camera->startWithCompletion({});
    }
    const QList<BWCameraPtr> &cameras() const { return m_manager.cameras(); }

    BWCameraPtr current;
    QList<std::shared_ptr<BWSimulatedCamera>> hands;

private:
    BWCaptureController &m_capture;
    std::unique_ptr<BWCameraDetector> m_detector;
    BWCameraManager m_manager;
};

} // namespace

/// Captures from the driver's callback to the file in the album folder.
class TestCapture : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_temporary = m_folder->filePath(u"tmp"_s);
        QVERIFY(QDir().mkpath(m_temporary));
        qputenv("TMPDIR", m_temporary.toUtf8());
        m_temporary = BWUIUtils::temporaryFolder();
        m_defaults = std::make_unique<BWSettingsFile>(m_folder->filePath(u"settings.conf"_s));
        m_albums = std::make_unique<BWAlbumManager>(*m_defaults, m_folder->path(), [] { return QDate(2024, 6, 7); });
        m_albums->prepare();
        m_saved.clear();
        m_left.clear();
        m_stills = 0;
        m_recording = false;
        m_results.clear();
        m_refused.clear();
        m_albumIsShort = false;
        m_capture = std::make_unique<BWCaptureController>(
            *m_albums,
            BWCaptureController::Callbacks{[this] { ++m_stills; },
                                           [this](bool recording) { m_recording = recording; },
                                           [this](const BWCaptureResult &result) { done(result); },
                                           {},
                                           [this](BWCaptureRefusal reason) { m_refused << reason; }},
            [this](const QUrl &, const QUrl &) { return m_albumIsShort.load(); });
        m_desk = std::make_unique<Desk>(*m_capture, QList{Type::High}, BWPixelFormat::MJPEG);
        QTRY_VERIFY(m_desk->current);
        m_camera = m_desk->current;
        m_hand = m_desk->hands.first();
        m_camera->setOnCameraFrame([this](BWCamera &, const BWFrame &frame) {
            const BWPlane &bytes = frame.plane(0);
            m_lastFrame = QByteArray(reinterpret_cast<const char *>(bytes.data), static_cast<qsizetype>(bytes.size));
            m_lastCopy = frame.copied();
        });
        QTRY_VERIFY(m_camera->started());
    }
    void cleanup()
    {
        m_camera.reset();
        m_desk.reset(); // joins the camera's threads
        m_capture.reset();
        m_albums.reset();
        qputenv("TMPDIR", m_outerTemporary);
    }

    void snapshotsLandInTheAlbum()
    {
        const QList<BWMeasurement> line{{u"length"_s, {{0.1, 0.1}, {0.35, 0.1}}, {}}};
        m_capture->setSnapshotTags(u"MX7"_s, u"BrimwellPro 1"_s, {{u"50x"_s, 8, 0.01, {}}, {}, u"MX7"_s, line},
                                   u"4:3"_s);
        for (int i = 1; i <= 3; ++i) {
            m_capture->forceSnapshot(m_camera);
            captureFrame();
            QTRY_COMPARE(m_saved.size(), i);
            QCOMPARE(m_stills, i);
        }
        QCOMPARE(m_saved,
                 QStringList({u"20240607_image_001.jpg"_s, u"20240607_image_002.jpg"_s, u"20240607_image_003.jpg"_s}));
        const QString path = inAlbum(u"20240607_image_003.jpg"_s);
        QCOMPARE(pictureIn(path).mid(18), lastFrame().mid(18)); // behind the resolution
        QCOMPARE(QImage(path), QImage::fromData(lastFrame()));
        QProcess exiftool;
        exiftool.start(u"exiftool"_s, {u"-j"_s, u"-validate"_s, u"-struct"_s, u"-all"_s, path});
        QVERIFY(exiftool.waitForFinished());
        const QJsonObject tags = QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array().at(0).toObject();
        QCOMPARE(tags[u"Model"_s].toString(), u"MX7"_s);
        QCOMPARE(tags[u"Software"_s].toString(), u"BrimwellPro 1"_s);
        QCOMPARE(tags[u"Validate"_s].toString(), u"OK"_s);
        QCOMPARE(tags[u"MillimetresPerWidth"_s].toDouble(), 8.0);
        const auto result = tags[u"Measurements"_s][0][u"Results"_s][0];
        QCOMPARE(result[u"Value"_s].toDouble(), 2000.0); // micrometres
        QCOMPARE(tags[u"XResolution"_s].toDouble(), tags[u"ImageWidth"_s].toInt() / 0.8);
        QCOMPARE(tags[u"ExifImageWidth"_s].toInt(), tags[u"ImageWidth"_s].toInt());
        const QDateTime taken = QDateTime::fromString(tags[u"DateTimeOriginal"_s].toString(), u"yyyy:MM:dd HH:mm:ss"_s);
        QVERIFY(std::abs(taken.secsTo(QDateTime::currentDateTime())) < 60);
        QVERIFY(QDir(m_temporary).isEmpty()); // nothing of ours is left behind
    }

    void buttonOnTheCamera()
    {
        m_hand->pressButton();
        captureFrame();
        QTRY_COMPARE(m_saved.size(), 1);
        int recordPressed = 0;
        m_capture->setButtonRecords(true, [&] { ++recordPressed; });
        m_hand->pressButton();
        QTRY_COMPARE(recordPressed, 1);
        QVERIFY(BWCaptureController::isHardwareButton(Qt::Key_WebCam, false, false));
        QVERIFY(!BWCaptureController::isHardwareButton(Qt::Key_WebCam, true, false)); // held down
        QVERIFY(!BWCaptureController::isHardwareButton(Qt::Key_WebCam, false, true)); // came by way of the camera
        m_capture->pressHardwareButton(m_camera); // as a key
        QTRY_COMPARE(recordPressed, 2);
        captureFrame();
        // That frame was not taken: the next one is the second snapshot, and there is no third.
        m_capture->forceSnapshot(m_camera);
        captureFrame();
        QTRY_COMPARE(m_saved.size(), 2);
        QCOMPARE(pictureIn(inAlbum(u"20240607_image_002.jpg"_s)), lastFrame());
    }

    void frozenFrameIsSavedByEveryPress()
    {
        captureFrame();
        const QByteArray frozen = lastFrame();
        m_capture->setFrozenFrame(m_lastCopy);
        m_hand->pressButton();
        captureFrame();
        std::shared_ptr<void> busy = keepBusy(); // which does not matter
        m_capture->forceSnapshot(m_camera);
        const QList<BWMeasurement> line{{u"length"_s, {{0.1, 0.1}, {0.35, 0.1}}, {}}};
        m_capture->setSnapshotTags({}, {}, {{}, {}, {}, line}, u"4:3"_s); // laid over the frozen picture
        m_capture->pressHardwareButton(m_camera);
        const BWCalibration scale{u"50x"_s, 8, 0, {}, {u"16:9"_s}};
        m_capture->setSnapshotTags({}, {}, {scale, {}, {}, line}, u"1600x1200"_s); // of others of that shape
        m_capture->forceSnapshot(nullptr);
        bool written = false;
        m_capture->whenStillsAreWritten([&] { m_albums->whenAdded([&] { written = true; }); });
        QTRY_VERIFY(written);
        QCOMPARE(m_saved.size(), 4);
        QCOMPARE(m_stills, 4);
        for (const QString &name : std::as_const(m_saved))
            QCOMPARE(pictureIn(inAlbum(name)), frozen);
        int measured = 0;
        for (const QString &name : std::as_const(m_saved))
            measured += int(BWPictureFile::read(QUrl::fromLocalFile(inAlbum(name))).metadata.measurements.size());
        QCOMPARE(measured, 1);
        busy.reset();
        m_capture->setFrozenFrame({});
        m_capture->forceSnapshot(m_camera);
        captureFrame();
        QTRY_COMPARE(m_saved.size(), 5);
        QCOMPARE(pictureIn(inAlbum(m_saved[4])), lastFrame());
    }

    void tornFrozenFrameLeavesThePressToTheNext()
    {
        m_hand->tearNextFrames(1);
        captureFrame();
        settle();
        m_capture->setFrozenFrame(m_lastCopy);
        m_capture->forceSnapshot(m_camera);
        QTRY_VERIFY((captureFrame(), m_saved.size() == 1));
        QVERIFY(!QImage(inAlbum(m_saved[0])).isNull());
        m_capture->forceSnapshot(nullptr);
        QTRY_COMPARE(m_left, QList<QUrl>{{}}); // it is reported as lost
    }

    void snapshotWithoutPictureIsReported()
    {
        m_capture->forceSnapshot(m_camera);
        settle();
        m_hand->unplug();
        QTRY_COMPARE(m_refused, Refusals{BWCaptureRefusal::NoPicture});
        m_capture->pressHardwareButton(m_camera);
        QTRY_COMPARE(m_refused.size(), 2);
        QVERIFY(m_saved.isEmpty() && m_left.isEmpty());
    }

    void lostCaptureIsReported()
    {
        // The album is gone: the capture is kept where it is.
        QVERIFY(QDir(m_folder->filePath(u"BrimwellPro"_s)).removeRecursively());
        m_capture->forceSnapshot(m_camera);
        captureFrame();
        QTRY_COMPARE(m_left.size(), 1);
        QVERIFY(!QImage(m_left[0].toLocalFile()).isNull());
        // No place for the temporary file either: that is reported, and the log says why.
        const SmallDisk full(1000);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot write .*: File too large"_s));
        m_capture->forceSnapshot(m_camera);
        captureFrame();
        QTRY_COMPARE(m_left.size(), 2);
        QVERIFY(m_left[1].isEmpty());
        QVERIFY(m_saved.isEmpty());
    }

    void movieIsSavedHoweverItEnds_data()
    {
        const Rows<End> row;
        row("unplugged", End::CameraGone);
        row("removed, which is noticed while it grows", End::FileGone);
        row("removed and ended at once", End::Asked);
    }
    void movieIsSavedHoweverItEnds()
    {
        const auto [end] = Rows<End>::current();
        m_capture->toggleRecording(m_camera);
        captureFrame();
        captureFrame();
        QTRY_VERIFY(m_recording);
        if (end == End::CameraGone)
            m_hand->unplug();
        else
            QVERIFY(QDir(m_temporary).removeRecursively());
        if (end == End::Asked)
            m_capture->toggleRecording(m_camera);
        if (end == End::FileGone)
            QTRY_VERIFY((captureFrame(), !m_saved.isEmpty()));
        QTRY_COMPARE(m_saved, QStringList{u"20240607_video_001.mov"_s});
        QVERIFY(!m_recording);
        QCOMPARE(m_results[0].recording.end, end);
        const QString path = inAlbum(m_saved[0]);
        QVERIFY(MovieProbe::framesIn(path) > 0);
        QCOMPARE(uint64_t(MovieProbe::framesIn(path)), m_results[0].recording.frames);
        QCOMPARE(completeMovie(path), BWMovieCompletion::Plain);
    }

    /// The outcome of pressing Record where no movie can begin.
    void everyPressIsAnswered_data()
    {
        const Rows<Refusals, QList<End>> row;
        row("no camera", Refusals{BWCaptureRefusal::NotStreaming}, QList<End>());
        row("stopped camera", Refusals{BWCaptureRefusal::NotStreaming}, QList<End>());
        row("pressed twice", Refusals(), QList{End::Asked});
        row("stopped before it begins", Refusals(), QList{End::Asked});
        row("no picture comes", Refusals(), QList{End::Asked});
        row("full album", Refusals(), QList{End::DiskFull});
        row("full disk", Refusals(), QList{End::DiskFull});
    }
    void everyPressIsAnswered()
    {
        const auto [refused, ends] = Rows<Refusals, QList<End>>::current();
        const QByteArray moment = QTest::currentDataTag();
        m_albumIsShort = moment == "full album";
        std::optional<SmallDisk> full;
        if (moment == "full disk")
            full.emplace(10);
        if (moment == "stopped camera")
            m_camera->stopWithCompletion({});
        settle();
        std::shared_ptr<void> busy;
        if (moment == "pressed twice" || moment == "stopped before it begins")
            busy = keepBusy();
        if (moment == "stopped before it begins")
            m_camera->stopWithCompletion({}); // comes first, but has no effect yet
        m_capture->toggleRecording(moment == "no camera" ? nullptr : m_camera);
        if (moment == "no picture comes")
            settle();
        if (moment == "pressed twice" || moment == "no picture comes")
            m_capture->toggleRecording(m_camera);
        busy.reset();
        for (int i = 0; full && i < 20; ++i)
            captureFrame();
        QTRY_COMPARE(m_results.size(), ends.size());
        for (qsizetype i = 0; i < ends.size(); ++i)
            QCOMPARE(m_results[i].recording.end, ends[i]);
        QCOMPARE(m_refused, refused);
        QVERIFY(m_saved.isEmpty());
        QVERIFY(!m_recording);
        QVERIFY(QDir(m_temporary).isEmpty());
    }

    void pressWhileSavingIsRefused()
    {
        m_capture->toggleRecording(m_camera);
        captureFrame();
        QTRY_VERIFY(m_recording);
        std::shared_ptr<void> busy = keepBusy(); // so that it cannot report
        m_capture->toggleRecording(m_camera);
        QTRY_VERIFY(!m_camera->recording());
        m_capture->toggleRecording(m_camera);
        QCOMPARE(m_refused, Refusals{BWCaptureRefusal::StillSaving});
        busy.reset();
        QTRY_COMPARE(m_saved, QStringList{u"20240607_video_001.mov"_s});
        QCOMPARE(MovieProbe::framesIn(inAlbum(m_saved[0])), 1);
        QVERIFY(!m_camera->recording());
        QVERIFY(QDir(m_temporary).isEmpty());
    }

    /// Set BW_SEED to repeat a run.
    void recordingsAreNeverMixedUp()
    {
        const uint seed = qEnvironmentVariableIsSet("BW_SEED") ? qEnvironmentVariable("BW_SEED").toUInt()
                                                               : QRandomGenerator::global()->generate();
        qInfo("BW_SEED=%u", seed);
        QRandomGenerator random(seed);
        const auto files = [this] {
            const QStringList names = QDir(m_temporary).entryList({u"*.mov"_s}, QDir::Files);
            return QSet<QString>(names.begin(), names.end());
        };
        QSet<QString> begun; // except those that end before their file can be seen
        {
            Desk desk(*m_capture, {Type::High, Type::Regular});
            QTRY_COMPARE(desk.cameras().size(), 2);
            for (int step = 0; step < 400; ++step) {
                const BWCameraPtr camera = desk.current;
                const auto &hand = desk.hands[random.bounded(2)];
                const int action = random.bounded(20);
                if (action < 3) {
                    const QSet<QString> before = files();
                    m_capture->toggleRecording(camera);
                    begun += files() - before;
                } else if (action < 4 && camera) {
                    const auto &sizes = camera->detectedCamera()->cameraDescription()->availableResolutions;
                    camera->setResolution(sizes[random.bounded(int(sizes.size()))], {});
                } else if (action < 5) {
                    hand->unplug();
                } else if (action < 8) {
                    hand->plugIn();
                } else if (action < 9 && !desk.cameras().isEmpty()) {
                    desk.use(desk.cameras()[random.bounded(int(desk.cameras().size()))]);
                } else if (action < 11) {
                    hand->pushFrames(random.bounded(1, 4));
                } else if (action < 18) {
                    // Waits for the next picture, if one comes.
                    const auto frames = [&] { return camera ? camera->statistics().framesDelivered : 0; };
                    desk.hands[0]->pushFrames(1);
                    desk.hands[1]->pushFrames(1);
                    (void)QTest::qWaitFor([&, before = frames()] { return frames() > before; }, 50);
                } else if (action < 19) {
                    QCoreApplication::processEvents();
                }
            }
        }
        const auto reported = [this] {
            QSet<QString> names;
            for (const BWCaptureResult &result : std::as_const(m_results))
                names.insert(QFileInfo(result.recording.path).fileName());
            return names;
        };
        QTRY_VERIFY_WITH_TIMEOUT(reported().contains(begun) && QDir(m_temporary).isEmpty(), 20000);
        QCOMPARE(reported().size(), m_results.size());
        int vain = 0;
        for (const BWCaptureResult &result : std::as_const(m_results)) {
            const uint64_t frames = result.recording.frames;
            QVERIFY(frames == 0 || begun.contains(QFileInfo(result.recording.path).fileName()));
            QCOMPARE(!result.file.isEmpty(), frames > 0);
            vain += frames == 0 ? 1 : 0;
            if (frames > 0)
                QCOMPARE(uint64_t(MovieProbe::framesIn(result.file.toLocalFile())), frames);
        }
        QCOMPARE(m_albums->currentAlbum()->contentsForType(BWMediaType::Video)->size(), m_results.size() - vain);
        QVERIFY(!m_recording);
        qInfo("%lld recordings, %d of them without a picture, %lld presses refused", qlonglong(m_results.size()), vain,
              qlonglong(m_refused.size()));
    }

private:
    QString inAlbum(const QString &name) const { return m_folder->filePath(u"BrimwellPro/Default Album/"_s + name); }

    /// The camera's own bytes, without what the snapshot says about itself.
    static QByteArray pictureIn(const QString &path)
    {
        QFile file(path);
        QByteArray stored = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        for (qsizetype at = 0;
             (at = stored.indexOf("\xff\xe1")) >= 0;) // none in the picture, where ff 00 stands for ff
            stored.remove(at, 2 + qFromBigEndian<quint16>(stored.constData() + at + 2));
        return stored;
    }

    void done(const BWCaptureResult &result)
    {
        m_results << result;
        if (result.file.isEmpty())
            m_left << result.left;
        else
            m_saved << result.file.fileName();
    }

    /// Waits until the camera has carried out all requests so far.
    void settle()
    {
        auto settled = std::make_shared<std::atomic<bool>>(false);
        m_camera->setResolution(m_camera->defaultResolution(), [settled] { *settled = true; });
        QTRY_VERIFY(*settled);
    }
    /// Blocks the camera's thread until the returned pointer is released.
    std::shared_ptr<void> keepBusy()
    {
        const auto goOn = std::make_shared<QSemaphore>();
        m_camera->setResolution(m_camera->defaultResolution(), [goOn] { goOn->acquire(); });
        return {nullptr, [goOn](void *) { goOn->release(); }};
    }
    /// Once the camera's thread is done with it.
    QByteArray lastFrame()
    {
        settle();
        return m_lastFrame;
    }
    void captureFrame()
    {
        settle();
        m_hand->pushFrames(1);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    const QByteArray m_outerTemporary = qgetenv("TMPDIR");
    QString m_temporary;
    std::unique_ptr<BWSettingsFile> m_defaults;
    std::unique_ptr<BWAlbumManager> m_albums;
    std::unique_ptr<BWCaptureController> m_capture;
    std::unique_ptr<Desk> m_desk;
    std::shared_ptr<BWSimulatedCamera> m_hand;
    BWCameraPtr m_camera;
    QByteArray m_lastFrame;
    BWFrame m_lastCopy;
    QStringList m_saved;
    QList<QUrl> m_left;
    QList<BWCaptureResult> m_results;
    Refusals m_refused;
    std::atomic<bool> m_albumIsShort = false;
    int m_stills = 0;
    bool m_recording = false;
};

QTEST_GUILESS_MAIN(TestCapture)
#include "tst_BWCaptureController.moc"
