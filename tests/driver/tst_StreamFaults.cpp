#include "BWFrameInspector.h"
#include "OpenedCamera.h"
#include "simulated/BWFrameSchedule.h"

#include <QTest>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(BWPixelFormat)

class TestStreamFaults : public QObject {
    Q_OBJECT

    using Type = BWSimulatedCameraOptions::Type;

private Q_SLOTS:
    void truncatedFramesAreSkippedAndCounted()
    {
        OpenedCamera opened(Type::Ultra, BWPixelFormat::MJPEG);
        QVERIFY(opened.probe->start());
        QVERIFY(opened.stream(2));
        opened.hand->truncateNextFrames(3);
        opened.hand->pushFrames(3);
        QVERIFY(opened.stream(1));
        QCOMPARE(opened.probe->sequences(), (std::vector<uint64_t>{0, 1, 5}));
        QCOMPARE(opened.camera->statistics().framesBad, 3u);
        QCOMPARE(opened.camera->statistics().framesLost, 0u);
        QCOMPARE(opened.camera->statistics().framesDelivered, 3u);
    }

    void lostFramesAreCounted()
    {
        OpenedCamera opened(Type::Regular);
        QVERIFY(opened.probe->start());
        QVERIFY(opened.stream(1));
        opened.hand->loseNextFrames(4);
        opened.hand->pushFrames(4);
        QVERIFY(opened.stream(2));
        QCOMPARE(opened.probe->sequences(), (std::vector<uint64_t>{0, 5, 6}));
        QCOMPARE(opened.camera->statistics().framesLost, 4u);
        QCOMPARE(opened.camera->statistics().framesBad, 0u);
    }

    void stalledStreamIsRestarted_data()
    {
        QTest::addColumn<bool>("heldByOther");
        QTest::newRow("at once") << false;
        QTest::newRow("as soon as it can be had") << true;
    }

    void stalledStreamIsRestarted()
    {
        QFETCH(bool, heldByOther);
        OpenedCamera opened(Type::Ultra);
        opened.setStallTime(30ms);
        QVERIFY(opened.probe->start());
        QVERIFY(opened.stream(2));
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
        QCOMPARE(opened.probe->sequences(), (std::vector<uint64_t>{0, 1, 0, 1, 2}));
        QCOMPARE(opened.camera->statistics().streamRestarts, 1u);
        QCOMPARE(opened.camera->statistics().framesLost, 0u);
    }

    void silenceIsNoStallWhileNoFrameIsAskedFor()
    {
        OpenedCamera opened(Type::Ultra);
        opened.setStallTime(1ms);
        QVERIFY(opened.probe->start());
        for (int i = 0; i < 50; ++i) {
            opened.probe->settle();
            std::this_thread::yield();
        }
        QVERIFY(opened.stream(1));
        QCOMPARE(opened.camera->statistics().streamRestarts, 0u);
    }

    void unplugDuringAStall()
    {
        OpenedCamera opened(Type::Ultra);
        opened.setStallTime(1h);
        QVERIFY(opened.probe->start());
        opened.hand->stall();
        opened.hand->pushFrames(1);
        opened.hand->unplug();
        opened.probe->stop();
        QVERIFY(!opened.probe->start());
    }

    void realTimeStreamRuns()
    {
        OpenedCamera opened(Type::Regular, {}, BWSimulatedCameraOptions::Pacing::RealTime);
        QVERIFY(opened.probe->start());
        QVERIFY(opened.probe->waitForFrames(6));
        opened.probe->stop();
        const std::vector<BWFrameInfo> frames = opened.probe->frames();
        // Frames may have been lost on a busy machine; those that came keep to the grid of 30 a second.
        const auto time = frames.back().timestamp - frames.front().timestamp;
        const auto count = static_cast<int64_t>(frames.back().sequence - frames.front().sequence);
        QVERIFY(count >= 5);
        QVERIFY(std::chrono::abs(time - std::chrono::nanoseconds(count * 1'000'000'000 / 30)) < 1us);
    }

    void scheduleDoesNotDrift()
    {
        BWFrameSchedule schedule;
        const BWFrameSchedule::Time start{1000h};
        schedule.start(start, 30000.0 / 1001.0);
        for (int i = 0; i < 30000 * 60; ++i)
            schedule.advance();
        const auto error = schedule.due() - start - 1001s * 60 - std::chrono::microseconds(33367);
        QVERIFY(std::chrono::abs(error) < 1us);

        schedule.start(start, 10);
        QCOMPARE(schedule.skipOverdue(start, 2), 0u);
        QCOMPARE(schedule.skipOverdue(start + 350ms, 2), 0u);
        QCOMPARE(schedule.skipOverdue(start + 1050ms, 2), 7u);
        QCOMPARE(schedule.due(), start + 800ms);
    }

    void wholeFramesPass_data()
    {
        QTest::addColumn<BWPixelFormat>("format");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QList<int>>("strides");
        QTest::addColumn<QList<int>>("bytes");
        QTest::addColumn<bool>("whole");
        using Format = BWPixelFormat;
        const auto row = [](const char *name, Format format, QSize size, QList<int> strides, QList<int> bytes,
                            bool whole) { QTest::newRow(name) << format << size << strides << bytes << whole; };
        row("YUYV", Format::YUYV, {4, 2}, {8}, {16}, true);
        row("YUYV short", Format::YUYV, {4, 2}, {8}, {15}, false);
        row("YUYV stride too small", Format::YUYV, {4, 2}, {6}, {99}, false);
        row("padded stride, last row bare", Format::YUYV, {4, 2}, {16}, {24}, true);
        row("odd width", Format::UYVY, {3, 1}, {8}, {8}, true);
        row("NV12", Format::NV12, {4, 4}, {4, 4}, {16, 8}, true);
        row("NV12 without colour", Format::NV12, {4, 4}, {4}, {16}, false);
        row("YU12 odd", Format::YU12, {3, 3}, {4, 2, 2}, {12, 4, 4}, true);
        row("RGB24 short", Format::RGB24, {4, 4}, {12}, {47}, false);
        row("GREY", Format::GREY, {4, 4}, {4}, {16}, true);
        row("empty", Format::YUYV, {0, 0}, {0}, {0}, false);
        row("no format", Format::None, {4, 4}, {4}, {16}, false);
        row("empty MJPEG", Format::MJPEG, {4, 4}, {0}, {0}, false);
    }

    void wholeFramesPass()
    {
        QFETCH(BWPixelFormat, format);
        QFETCH(QSize, size);
        QFETCH(QList<int>, strides);
        QFETCH(QList<int>, bytes);
        QFETCH(bool, whole);
        const std::vector<uint8_t> memory(100);
        BWFrameInfo info;
        info.pixelFormat = format;
        info.width = size.width();
        info.height = size.height();
        for (qsizetype i = 0; i < strides.size(); ++i)
            info.planes[std::size_t(i)] = {memory.data(), std::size_t(bytes[i]), strides[i]};
        BWFrameInspector inspector;
        QCOMPARE(inspector.accept(BWFrame(info, {})), whole);
        QCOMPARE(inspector.statistics().framesBad, whole ? 0u : 1u);
    }

    void flaggedFramesAreNotLostAsWell()
    {
        const uint8_t pixels[4]{};
        const auto frame = [&pixels](uint64_t sequence) {
            BWFrameInfo info;
            info.pixelFormat = BWPixelFormat::GREY;
            info.width = 2;
            info.height = 2;
            info.planes[0] = {pixels, 4, 2};
            info.sequence = sequence;
            return BWFrame(info, {});
        };
        BWFrameInspector inspector;
        QVERIFY(inspector.accept(frame(10)));
        inspector.reject({}); // frame 11, but nobody knows
        inspector.reject(frame(12));
        QVERIFY(inspector.accept(frame(15)));
        QCOMPARE(inspector.statistics().framesBad, 2u);
        QCOMPARE(inspector.statistics().framesLost, 2u);
    }
};

QTEST_GUILESS_MAIN(TestStreamFaults)
#include "tst_StreamFaults.moc"
