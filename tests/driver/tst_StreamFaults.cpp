// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWMovie.h"
#include "camera/BWFrameInspector.h"
#include "OpenedCamera.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Format = BWPixelFormat;
using Sequences = std::vector<uint64_t>;

namespace {

BWFrame frameOf(Format format, QSize size, const QList<int> &strides, const QList<int> &bytes, uint64_t sequence = 0)
{
    static const std::array<uint8_t, 100> memory{};
    BWFrameInfo info;
    info.pixelFormat = format;
    info.width = size.width();
    info.height = size.height();
    info.sequence = sequence;
    for (qsizetype i = 0; i < strides.size(); ++i)
        info.planes[std::size_t(i)] = {memory.data(), std::size_t(bytes[i]), strides[i]};
    return BWFrame(info, {});
}

} // namespace

class TestStreamFaults : public QObject {
    Q_OBJECT

    using Type = BWSimulatedCameraOptions::Type;

private Q_SLOTS:
    void badAndLostFramesAreSkippedAndCounted()
    {
        OpenedCamera opened(Type::Ultra, Format::MJPEG);
        QVERIFY(opened.probe->start(2));
        opened.hand->truncateNextFrames(3);
        opened.hand->pushFrames(3);
        QVERIFY(opened.probe->stream(1));
        opened.hand->loseNextFrames(4);
        opened.hand->pushFrames(4);
        QVERIFY(opened.probe->stream(2));
        QCOMPARE(opened.probe->sequences(), (Sequences{0, 1, 5, 10, 11}));
        QCOMPARE(opened.camera->statistics().framesBad, 3u);
        QCOMPARE(opened.camera->statistics().framesLost, 4u);
        QCOMPARE(opened.camera->statistics().framesDelivered, 5u);
    }

    void stalledStreamIsRestarted()
    {
        for (const bool heldByOther : {false, true}) {
            OpenedCamera opened(Type::Ultra);
            opened.camera->setStallTime(30ms);
            QVERIFY(opened.probe->start(2));
            opened.hand->setInUse(heldByOther);
            opened.hand->stall();
            opened.hand->pushFrames(3);
            if (heldByOther) {
                QTRY_VERIFY(opened.camera->statistics().streamRestarts > 0);
                opened.probe->settle();
                QVERIFY(opened.camera->started());
                QCOMPARE(opened.probe->frames().size(), std::size_t(2));
                opened.hand->setInUse(false);
            }
            QVERIFY(opened.probe->waitForFrames(5));
            opened.probe->stop();
            QCOMPARE(opened.probe->sequences(), (Sequences{0, 1, 0, 1, 2}));
            QCOMPARE(opened.camera->statistics().streamRestarts, 1u);
            QCOMPARE(opened.camera->statistics().framesLost, 0u);
        }
    }

    void failedRestartReportsItsReason()
    {
        using Kind = BWStartProblem::Kind;
        OpenedCamera opened(Type::Ultra);
        opened.camera->setStallTime(1h); // it tries again only when something changes
        QList<Kind> reported; // on the capture thread, before what the probe waits for
        opened.camera->setOnCameraStreamProblem(
            [&reported](BWCamera &, const BWStartProblem &problem) { reported << problem.kind; });
        QVERIFY(opened.probe->start(1));
        opened.hand->setStartProblem({Kind::NoBandwidth});
        opened.probe->setResolution({1600, 1200});
        QCOMPARE(reported, QList{Kind::NoBandwidth});
        opened.probe->setResolution({1280, 1024});
        QCOMPARE(reported, QList{Kind::NoBandwidth}); // failed again, already reported
        QVERIFY(opened.camera->started());
        opened.probe->setResolution({640, 480});
        QCOMPARE(reported, (QList{Kind::NoBandwidth, Kind::None}));
        QVERIFY(opened.probe->stream(1));
    }

    void silenceIsNoStallWhileNoFrameIsExpected()
    {
        OpenedCamera opened(Type::Ultra);
        opened.camera->setStallTime(1ms);
        QVERIFY(opened.probe->start());
        for (int i = 0; i < 50; ++i) {
            opened.probe->settle();
            std::this_thread::yield();
        }
        QVERIFY(opened.probe->stream(1));
        QCOMPARE(opened.camera->statistics().streamRestarts, 0u);
    }

    void hangingDeviceBlocksNothing()
    {
        const QTemporaryDir folder;
        const QStringList calls{u"start"_s, u"stop"_s, u"frame"_s, u"3=20"_s};
        QList<std::shared_ptr<DeviceNotes>> notes;
        std::vector<std::unique_ptr<OpenedCamera>> cameras;
        std::atomic<bool> over = false;
        std::atomic<int> late = 0;
        std::atomic<int> reported = 0;
        for (const QString &call : calls) {
            notes << std::make_shared<DeviceNotes>();
            cameras.push_back(std::make_unique<OpenedCamera>(Type::Ultra, Format::MJPEG, notes.last()));
            OpenedCamera &opened = *cameras.back();
            if (call != u"start"_s) {
                QVERIFY(opened.probe->start(1));
                opened.camera->startRecording(folder.filePath(call));
                QVERIFY(opened.probe->stream(2));
                QVERIFY(opened.probe->waitForRecordingChanges(1));
            }
            opened.probe.reset();
            notes.last()->holdUp(call);
            opened.camera->startWithCompletion({});
            opened.camera->setSetting(BWSettingBrightness, 20);
            if (call == u"stop"_s)
                opened.camera->stopWithCompletion({});
            QTRY_VERIFY(notes.last()->isBusy());
            opened.camera->setOnCameraFrame([&](BWCamera &, const BWFrame &) { late += over; });
            opened.camera->setOnCameraRecording([&](BWCamera &, bool recording, const BWRecordingStatus &) {
                reported += recording ? 0 : 1;
                late += over;
            });
            opened.hand->pushFrames(3);
        }
        std::vector<std::thread> ends; // each waits for a while
        for (const auto &opened : cameras)
            ends.emplace_back([&opened] { opened->camera.reset(); });
        for (std::thread &end : ends)
            end.join();
        over = true;
        QCOMPARE(reported, calls.size() - 1);
        QCOMPARE(BWCamera::runningThreads(), calls.size());
        for (const QString &call : calls.mid(1)) // the movies are complete nevertheless
            QCOMPARE(completeMovie(folder.filePath(call)), BWMovieCompletion::Plain);

        for (const auto &each : notes) {
            each->letGo();
            QTRY_COMPARE(each.use_count(), 1); // the thread ends and releases the device
        }
        QCOMPARE(BWCamera::runningThreads(), 0);
        QCOMPARE(late, 0);
    }

    void onlyWholeFramesPass()
    {
        const struct {
            const char *name;
            Format format;
            QSize size;
            QList<int> strides, bytes;
            bool whole;
        } rows[] = {
            {"short", Format::YUYV, {4, 2}, {8}, {15}, false},
            {"stride too small", Format::YUYV, {4, 2}, {6}, {99}, false},
            {"padded stride, last row bare", Format::YUYV, {4, 2}, {16}, {24}, true},
            {"odd width", Format::UYVY, {3, 1}, {8}, {8}, true},
            {"NV12 without colour", Format::NV12, {4, 4}, {4}, {16}, false},
            {"YU12 odd", Format::YU12, {3, 3}, {4, 2, 2}, {12, 4, 4}, true},
            {"nothing", Format::None, {0, 0}, {0}, {0}, false},
        };
        for (const auto &row : rows) {
            BWFrameInspector inspector;
            QVERIFY2(inspector.accept(frameOf(row.format, row.size, row.strides, row.bytes)) == row.whole, row.name);
            QCOMPARE(inspector.statistics().framesBad, row.whole ? 0u : 1u);
        }
    }

    void rejectedFramesDoNotCountAsLost()
    {
        const auto frame = [](uint64_t sequence) { return frameOf(Format::GREY, {2, 2}, {2}, {4}, sequence); };
        BWFrameInspector inspector;
        QVERIFY(inspector.accept(frame(10)));
        inspector.reject({}); // frame 11, but without its number
        inspector.reject(frame(12));
        QVERIFY(inspector.accept(frame(15)));
        QCOMPARE(inspector.statistics().framesBad, 2u);
        QCOMPARE(inspector.statistics().framesLost, 2u);
    }
};

QTEST_GUILESS_MAIN(TestStreamFaults)
#include "tst_StreamFaults.moc"
