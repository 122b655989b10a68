// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/BWMovieRecorder.h"
#include "media/BWJpeg.h"
#include "OpenedCamera.h"

#include <atomic>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// A disk that writes when the test allows it.
struct SlowDisk {
    QSemaphore mayWrite;
    QSemaphore buffersHeld;
    std::atomic<bool> finished = false;
    std::atomic<int> written = 0;
    const std::vector<uint8_t> picture = std::vector<uint8_t>(4 << 20);

    class Writer : public BWMovieWriter {
    public:
        explicit Writer(SlowDisk &disk) : m_disk(disk) { }
        bool write(const BWFrame &) override
        {
            m_disk.mayWrite.acquire();
            ++m_disk.written;
            return true;
        }
        bool finish() override { return m_disk.finished = true; }
        int64_t bytesWritten() const override { return m_disk.written; }
        bool hasFailed() const override { return false; }
        bool diskIsFull() const override { return false; }
        bool isRemoved() const override { return false; }
        bool isEmpty() const override { return m_disk.written == 0; }

    private:
        SlowDisk &m_disk;
    };

    BWMovieRecorder::OpenWriter opener()
    {
        return [this](const QString &, QString *) { return std::make_unique<Writer>(*this); };
    }

    BWFrame makeFrame()
    {
        buffersHeld.release();
        BWFrameInfo info;
        info.planes[0] = {picture.data(), picture.size(), 0};
        return BWFrame(info, [this] { buffersHeld.acquire(); });
    }
};

} // namespace

class TestCapture : public QObject {
    Q_OBJECT

    using Type = BWSimulatedCameraOptions::Type;

private Q_SLOTS:
    void snapshotIsTheFrameItselfOrEncodedOnce()
    {
        for (const BWPixelFormat format : {BWPixelFormat::MJPEG, BWPixelFormat::YUYV}) {
            OpenedCamera opened(Type::Ultra, format);
            QVERIFY(opened.probe->start());
            QList<QByteArray> expected;
            for (int i = 0; i < 3; ++i) {
                opened.camera->takeSnapshot();
                opened.probe->settle();
                opened.probe->holdNextFrames(1);
                QVERIFY(opened.probe->stream(1));
                const BWFrame frame = opened.probe->takeHeld().front();
                const BWPlane &plane = frame.plane(0);
                expected.append(format == BWPixelFormat::MJPEG
                                    ? QByteArray(reinterpret_cast<const char *>(plane.data), qsizetype(plane.size))
                                    : BWJpeg::encode(frame, 95));
                QVERIFY(opened.probe->waitForSnapshots(i + 1));
            }
            QCOMPARE(opened.probe->snapshots(), expected);
            QVERIFY(expected[0] != expected[1]);
        }
    }

    void tornFrameLeavesTheRequestToTheNext()
    {
        OpenedCamera opened(Type::Ultra, BWPixelFormat::MJPEG);
        QVERIFY(opened.probe->start());
        opened.camera->takeSnapshot();
        opened.probe->settle();
        opened.hand->tearNextFrames(2);
        // A torn frame passes the look at its ends and is shown; only the decoder of the worker finds out.
        QVERIFY(opened.probe->stream(2));
        QTRY_VERIFY_WITH_TIMEOUT(opened.probe->stream(1) && !opened.probe->snapshots().isEmpty(), 20000);
        opened.probe->stop();
        QCOMPARE(opened.probe->snapshots().size(), 1);
        const QByteArray jpeg = opened.probe->snapshots().constFirst();
        QVERIFY(BWJpeg::decodesCleanly(reinterpret_cast<const uint8_t *>(jpeg.constData()), std::size_t(jpeg.size())));
    }

    void stopComesAfterTheLastStill()
    {
        OpenedCamera opened(Type::Ultra);
        QSemaphore arrived;
        QSemaphore isSaved;
        std::atomic<bool> stopped = false;
        opened.camera->setOnCameraSnapshot([&](BWCamera &, const QByteArray &) {
            arrived.release();
            isSaved.acquire();
        });
        QVERIFY(opened.probe->start());
        opened.camera->takeSnapshot();
        opened.probe->settle();
        QVERIFY(opened.probe->stream(1));
        arrived.acquire();
        opened.camera->stopWithCompletion([&] { stopped = true; });
        const bool early = QTest::qWaitFor([&] { return stopped.load(); }, 50);
        isSaved.release();
        QTRY_VERIFY(stopped);
        QVERIFY2(!early, "a program that quits then would lose it");
    }

    void manyRequestsDoNotStarveTheStream()
    {
        OpenedCamera opened(Type::Ultra, BWPixelFormat::YUYV);
        QVERIFY(opened.probe->start());
        const int requests = 40;
        for (int i = 0; i < requests; ++i)
            opened.camera->takeSnapshot();
        opened.probe->settle();
        opened.hand->pushFrames(10);
        QVERIFY(opened.probe->waitForFrames(10));
        QCOMPARE(opened.camera->statistics().framesLost, 0u);
        while (opened.probe->snapshots().size() < requests)
            QVERIFY(opened.probe->stream(1));
    }

    void slowDiskDoesNotHoldUpTheStream()
    {
        SlowDisk disk;
        std::vector<bool> changes;
        BWMovieRecorder recorder([&](bool recording, const BWRecordingStatus &) { changes.push_back(recording); },
                                 disk.opener());
        recorder.begin(recorder.reserve({}));
        for (int i = 0; i < 100; ++i)
            recorder.offer(disk.makeFrame());
        QVERIFY2(disk.buffersHeld.available() <= 3, "a recording must not take all buffers of a device");
        disk.mayWrite.release(100);
        recorder.end();
        recorder.waitUntilComplete();
        QVERIFY(disk.finished);
        QVERIFY2(disk.written >= 18 && disk.written <= 20, "those that are copied take 64 MiB");
        QCOMPARE(recorder.status().framesLeftOut, uint64_t(100 - disk.written));
        QCOMPARE(recorder.status().frames, uint64_t(disk.written));
        QCOMPARE(disk.buffersHeld.available(), 0);
        QCOMPARE(changes, (std::vector<bool>{true, false}));
    }

    void everyRecordingReportsItsOwnEnd()
    {
        SlowDisk disk;
        disk.mayWrite.release(10);
        QStringList reported;
        BWMovieRecorder *next = nullptr;
        BWMovieRecorder recorder(
            [&](bool recording, const BWRecordingStatus &status) {
                reported << u"%1 %2 %3"_s.arg(status.path).arg(recording).arg(status.frames);
                if (next && !recording) // as soon as it can
                    std::exchange(next, nullptr)->reserve(u"second"_s);
            },
            disk.opener());
        next = &recorder;
        recorder.begin(recorder.reserve(u"first"_s));
        recorder.offer(disk.makeFrame());
        QVERIFY(!recorder.end(BWRecordingStatus::End::Asked, u"second"_s));
        QVERIFY(recorder.end(BWRecordingStatus::End::Asked, u"first"_s));
        QTRY_COMPARE(recorder.status().path, u"second"_s);
        QVERIFY(!recorder.end(BWRecordingStatus::End::Asked, u"first"_s));
        QVERIFY(recorder.end()); // before it was begun
        QVERIFY(!recorder.end());
        recorder.waitUntilComplete();
        QCOMPARE(reported, QStringList({u"first 1 1"_s, u"first 0 1"_s, u"second 0 0"_s}));
        QVERIFY(!recorder.isActive());
    }

    void callbacksMayCallTheCamera()
    {
        const QTemporaryDir folder;
        OpenedCamera opened(Type::Regular);
        BWCamera &camera = *opened.camera;
        std::atomic<int> round = 0;
        std::atomic<bool> stopped = false;
        camera.setOnCameraFrame([&](BWCamera &same, const BWFrame &) {
            same.takeSnapshot();
            if (++round == 2)
                same.startRecording(folder.filePath(u"a.mov"_s));
            if (round == 5) {
                same.stopRecording();
                same.stopWithCompletion([&] { stopped = true; });
                same.setOnCameraFrame({});
            }
        });
        QVERIFY(opened.probe->start());
        opened.hand->pushFrames(8);
        QTRY_VERIFY(stopped);
        QCOMPARE(round, 5);
        QVERIFY(!camera.recording());
    }
};

QTEST_GUILESS_MAIN(TestCapture)
#include "tst_Capture.moc"
