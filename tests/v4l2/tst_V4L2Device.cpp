// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCamera.h"
#include "Rows.h"

#include <cerrno>
#include <QTest>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = BWStartProblem::Kind;
using Result = BWCaptureDevice::WaitResult;
using State = FakeKernel::State;

class TestV4L2Device : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void failedStart_data()
    {
        const Rows<unsigned long, std::deque<int>, Kind> row;
        row("not allowed", FakeKernel::opening, {EACCES}, Kind::NoPermission);
        row("unplugged", FakeKernel::opening, {ENOENT}, Kind::Gone);
        row("unplugged a moment later", VIDIOC_QUERYCAP, {ENODEV}, Kind::Gone);
        row("held at S_STD", VIDIOC_S_STD, {EBUSY}, Kind::InUse);
        row("held at S_FMT", VIDIOC_S_FMT, {EBUSY}, Kind::InUse);
        row("held at S_PARM", VIDIOC_S_PARM, {EBUSY}, Kind::InUse);
        row("held at REQBUFS", VIDIOC_REQBUFS, {EBUSY}, Kind::InUse);
        row("held at STREAMON", VIDIOC_STREAMON, {EBUSY}, Kind::InUse);
        row("unplugged at QBUF", VIDIOC_QBUF, {ENODEV}, Kind::Gone);
        row("no bandwidth for any format", VIDIOC_STREAMON, {ENOSPC, EIO}, Kind::NoBandwidth);
        row("broken", VIDIOC_STREAMON, {EIO, EIO}, Kind::Failed);
        row("no memory", FakeKernel::mapping, {ENOMEM, ENOMEM}, Kind::Failed);
        row("the number of another camera", 0, {}, Kind::Gone);
    }

    void failedStart()
    {
        const auto [call, errors, problem] = Rows<unsigned long, std::deque<int>, Kind>::current();
        const char *const bus = call ? "usb-1" : "usb-2";
        FakeCamera camera;
        camera.device->setVideoNorm(1);
        camera.kernel.fail(call, errors);
        camera.kernel.change([bus](State &state) { state.bus = bus; });
        QCOMPARE(camera.device->startStreaming().kind, problem);
        camera.kernel.change([](State &state) {
            QCOMPARE(state.opened, 0);
            QCOMPARE(state.mapped, 0);
            state.bus = "usb-1";
        });
        QVERIFY(camera.device->startStreaming().isNone());
        camera.kernel.pushFrame();
        QVERIFY(camera.take() == Result::Frame);
    }

    void normThenFormatThenStream()
    {
        FakeCamera camera;
        camera.device->setVideoNorm(2); // which it does not have
        camera.device->setVideoNorm(0);
        camera.kernel.change([](State &state) { state.log.clear(); });
        camera.kernel.fail(VIDIOC_STREAMON, {ENOSPC});
        QVERIFY(camera.device->startStreaming().isNone());
        const QString norm = u"S_STD %1"_s.arg(V4L2_STD_NTSC, 0, 16);
        QCOMPARE(camera.kernel.change([](State &state) { return state.log.join(u','); }),
                 norm + u",S_FMT MJPEG,S_PARM 30,STREAMOFF,S_FMT YUYV,S_PARM 15,STREAMON"_s);
        camera.kernel.pushFrame();
        QVERIFY(camera.take() == Result::Frame);
        QCOMPARE(camera.frame.pixelFormat(), BWPixelFormat::YUYV);
    }

    void framesAreNumberedAndJudged()
    {
        FakeCamera camera;
        const uint64_t first = 0xfffffffe;
        camera.kernel.change([](State &state) { state.sequence = first; });
        camera.kernel.fail(VIDIOC_STREAMON, {ENOSPC}); // a raw stream
        QVERIFY(camera.device->startStreaming().isNone());
        const std::tuple<uint32_t, uint32_t, uint32_t, Result, uint64_t> rows[] = {
            {0, 0, FakeKernel::frameSize, Result::Frame, first},
            {0, V4L2_BUF_FLAG_ERROR, FakeKernel::frameSize, Result::BadFrame, first + 1},
            {0, 0, FakeKernel::frameSize - 1, Result::BadFrame, first + 2}, // the counter has wrapped
            {3, 0, FakeKernel::frameSize, Result::Frame, first + 6},
            {0, 0, 0, Result::BadFrame, first + 7},
        };
        for (const auto &[skipped, flags, bytes, result, sequence] : rows) {
            camera.kernel.change([by = skipped](State &state) { state.sequence += by; });
            camera.kernel.pushFrame(flags, bytes);
            QVERIFY(camera.take() == result);
            QCOMPARE(camera.frame.sequence(), sequence);
            camera.frame = {};
            camera.kernel.change([](State &state) { QCOMPARE(state.queued.size(), 8u); });
        }
        camera.kernel.fail(VIDIOC_DQBUF, {EINTR});
        camera.kernel.pushFrame();
        QVERIFY(camera.take() == Result::Nothing);
        QVERIFY(camera.take() == Result::Frame);
    }

    void onlyPlausibleTimeStampsCount()
    {
        FakeCamera camera;
        QVERIFY(camera.device->startStreaming().isNone());
        const auto start = std::chrono::floor<std::chrono::microseconds>(std::chrono::steady_clock::now());
        const auto uptime = start.time_since_epoch();
        const std::tuple<uint32_t, std::chrono::microseconds, bool> rows[] = {
            {V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC, uptime - 1s, true},
            {V4L2_BUF_FLAG_TIMESTAMP_UNKNOWN, uptime - 1s, false}, // by whatever clock
            {V4L2_BUF_FLAG_TIMESTAMP_COPY, uptime - 1s, false}, // of what was played into it
            {V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC, uptime + 60s, false},
            {V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC, uptime - 6s, false},
            {V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC, 0s, false},
        };
        for (const auto &[clock, stamp, counts] : rows) {
            camera.kernel.change([at = stamp](State &state) { state.stamp = at; });
            camera.kernel.pushFrame(clock);
            QVERIFY(camera.take() == Result::Frame);
            const auto time = camera.frame.timestamp();
            const bool isNow = time >= start && time <= std::chrono::steady_clock::now();
            QVERIFY2(counts ? time.time_since_epoch() == stamp : isNow, qPrintable(QString::number(stamp.count())));
        }
    }

    void streamWaitsWhileAllBuffersAreHeld()
    {
        FakeCamera camera;
        camera.kernel.change([](State &state) { state.mostBuffers = 3; });
        QVERIFY(camera.device->startStreaming().isNone());
        std::vector<BWFrame> held;
        for (int i = 0; i < 3; ++i) {
            camera.kernel.pushFrame();
            QVERIFY(camera.take() == Result::Frame);
            held.push_back(std::exchange(camera.frame, {}));
        }
        QVERIFY2(!camera.device->expectsFrames(), "silence now is no stall");
        camera.kernel.pushFrame();
        // As kernels report when they have no buffer.
        const int before = camera.kernel.change([](State &state) {
            state.broken = true;
            return state.polls;
        });
        QVERIFY(camera.take(20ms) == Result::Nothing);
        QVERIFY2(camera.kernel.change([](State &state) { return state.polls; }) < before + 10, "spins");
        camera.kernel.change([](State &state) { state.broken = false; });

        std::thread other([&] {
            held.clear();
            camera.kernel.pushFrame();
        });
        const Result result = camera.take(10s);
        other.join();
        QVERIFY(result == Result::Frame);
        QCOMPARE(camera.frame.sequence(), 4u);

        camera.device->stopStreaming();
        camera.kernel.change([](State &state) { QCOMPARE(state.mapped, 1); });
        std::thread([frame = std::exchange(camera.frame, {})] {}).join();
        camera.kernel.change([](State &state) {
            QCOMPARE(state.mapped, 0);
            QCOMPARE(state.opened, 0);
            state.mostBuffers = 8;
        });
        camera.kernel.fail(VIDIOC_REQBUFS, {ENOMEM}); // for eight; there is for four
        camera.kernel.fail(FakeKernel::mapping, {0, 0, 0, ENOMEM});
        QVERIFY(camera.device->startStreaming().isNone());
        camera.kernel.change([](State &state) { QCOMPARE(state.queued.size(), 3u); });
    }

    void onlyAnUnplugCountsAsOne()
    {
        FakeCamera camera;
        QVERIFY(camera.device->startStreaming().isNone());
        camera.kernel.fail(VIDIOC_DQBUF, {EIO, EIO, EIO, EINVAL});
        camera.kernel.change([](State &state) { state.broken = true; });
        QVERIFY(camera.take(250ms) == Result::Nothing);
        QVERIFY2(camera.kernel.change([](State &state) { return state.polls; }) < 20, "spins");
        camera.kernel.fail(VIDIOC_DQBUF, {});
        camera.kernel.change([](State &state) { state.broken = false; });
        camera.kernel.pushFrame();
        QVERIFY2(camera.take(10s) == Result::Frame, "a stream that came back");

        const BWFrame held = camera.frame;
        std::thread other([&] { camera.kernel.change([](State &state) { state.gone = true; }); });
        const Result result = camera.take(10s);
        other.join();
        QVERIFY(result == Result::Gone);
        camera.device->stopStreaming();
        QCOMPARE(camera.device->startStreaming().kind, Kind::Gone);
        QCOMPARE(held.plane(0).data[0], uint8_t(0));
    }

    void interruptionEndsOneWait()
    {
        FakeCamera camera;
        QVERIFY(camera.device->startStreaming().isNone());
        std::thread other([&] { camera.device->interrupt(); });
        const Result result = camera.take(10s);
        other.join();
        QVERIFY(result == Result::Nothing);
        camera.kernel.pushFrame();
        camera.device->interrupt();
        QVERIFY2(camera.take(10s) == Result::Frame, "frames are not kept back");
        QVERIFY2(camera.take(1h) == Result::Nothing, "nor is the interruption lost");
        QCOMPARE(camera.kernel.change([](State &state) { return state.patience; }), 0);
    }
};

QTEST_GUILESS_MAIN(TestV4L2Device)
#include "tst_V4L2Device.moc"
