#include "SessionContract.h"

#include "Bench.h"

#include <atomic>
#include <numeric>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

std::vector<uint64_t> countUpTo(uint64_t count)
{
    std::vector<uint64_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

BWResolution otherSize(const BWCamera &camera)
{
    const QList<BWResolution> &sizes = camera.detectedCamera()->cameraDescription()->availableResolutions;
    return camera.defaultResolution() == sizes.at(1) ? sizes.at(0) : sizes.at(1);
}

} // namespace

void SessionContract::foundThoughAttachedBefore()
{
    Bench bench(m_fixture, true);
    QVERIFY2(bench.found.isEmpty(), "found inside startCamerasDetection()");
    QVERIFY(bench.detector.pendingDevices());
    QTRY_COMPARE(bench.found.size(), 1);
    QVERIFY(!bench.detector.pendingDevices());
    QCOMPARE(bench.found.constFirst()->cameraDescription(), m_fixture.description());
}

void SessionContract::foundAndRemovedOnceForEachPlugging()
{
    Bench bench(m_fixture, false);
    for (qsizetype i = 1; i <= 3; ++i) {
        std::thread([this] { m_fixture.plugIn(); }).join();
        QTRY_COMPARE(bench.found.size(), i);
        std::thread([this] { m_fixture.unplug(); }).join();
        QTRY_COMPARE(bench.removed.size(), i);
    }
    QCoreApplication::processEvents();
    QCOMPARE(bench.found.size(), 3);
    QCOMPARE(bench.removed, bench.found);
    QVERIFY(bench.found.at(0) != bench.found.at(1));
    QVERIFY(!bench.calledOnOtherThread);
}

void SessionContract::startAndStopInEveryOrder()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    bench.probe->stop();
    QVERIFY(!bench.camera->started());
    for (int round = 0; round < 3; ++round) {
        QVERIFY(bench.probe->start());
        QVERIFY2(bench.probe->start(), "a started camera answers true");
        QVERIFY(bench.camera->started());
        QVERIFY(bench.stream(2));
        bench.probe->stop();
        QVERIFY(!bench.camera->started());
        bench.probe->stop();
    }
    QCOMPARE(bench.probe->frames().size(), std::size_t(6));
}

void SessionContract::everyPushedFrameArrivesOnce()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    m_fixture.pushFrames(50);
    QVERIFY(bench.probe->waitForFrames(50));
    bench.probe->stop();
    QCOMPARE(bench.probe->sequences(), countUpTo(50));
    const BWCameraStatistics statistics = bench.camera->statistics();
    QCOMPARE(statistics.framesDelivered, 50u);
    QCOMPARE(statistics.framesBad, 0u);
    QCOMPARE(statistics.framesLost, 0u);
    QCOMPARE(statistics.streamRestarts, 0u);
}

void SessionContract::callbacksComeOnTheirThreads()
{
    const QTemporaryDir folder;
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    bench.camera->takeSnapshot();
    bench.camera->startRecording(folder.filePath(u"a.mov"_s));
    bench.probe->settle();
    QVERIFY(bench.stream(1));
    QVERIFY(bench.probe->waitForRecordingChanges(1));
    QVERIFY(bench.probe->waitForSnapshots(1));
    m_fixture.pressButton();
    QVERIFY(bench.probe->waitForButtonPresses(1));
    bench.probe->stop();
    const std::thread::id capture = bench.probe->captureThread();
    QVERIFY2(capture != std::thread::id(), "not all on one thread");
    QVERIFY(capture != std::this_thread::get_id());
    QVERIFY(bench.probe->snapshotThread() != capture);
    QVERIFY(bench.probe->snapshotThread() != std::this_thread::get_id());
}

void SessionContract::operationsCompleteOnce_data()
{
    QTest::addColumn<QString>("state");
    for (const QString &state : {u"new"_s, u"streaming"_s, u"stopped"_s, u"unplugged while streaming"_s, u"removed"_s})
        QTest::newRow(qPrintable(state)) << state;
}

void SessionContract::operationsCompleteOnce()
{
    QFETCH(QString, state);
    const QTemporaryDir folder;
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    if (state != u"new"_s)
        QVERIFY(bench.probe->start());
    if (state == u"stopped"_s)
        bench.probe->stop();
    if (state == u"unplugged while streaming"_s || state == u"removed"_s) {
        m_fixture.unplug();
        QTRY_COMPARE(bench.removed.size(), 1);
    }
    if (state == u"removed"_s) {
        bench.probe->stop();
        bench.manager.removeDetectedCamera(bench.found.constFirst());
        QVERIFY(bench.manager.cameras().isEmpty());
    }
    const bool usable = state == u"new"_s || state == u"streaming"_s || state == u"stopped"_s;

    // All of it at once, twice, sensible or not.
    BWCamera &camera = *bench.camera;
    std::atomic<int> completions{0};
    std::atomic<int> successes{0};
    const auto complete = [&completions] { ++completions; };
    for (int i = 0; i < 2; ++i) {
        camera.startRecording(folder.filePath(u"x.mov"_s));
        camera.startRecording(u"/nonexistent/x.mov"_s);
        camera.stopRecording();
        camera.takeSnapshot();
        camera.setSetting(BWSettingBrightness, 1e9);
        camera.setSetting(6, 1);
        camera.setSetting(BWSettingContrast, qQNaN());
        camera.startWithCompletion([&](bool success) {
            successes += success ? 1 : 0;
            ++completions;
        });
        camera.setResolution(otherSize(camera), complete);
        camera.setResolution({0, -3}, complete);
        camera.takeSnapshot();
        camera.stopWithCompletion(complete);
        camera.stopWithCompletion({});
        camera.startWithCompletion({});
        camera.setResolution({640, 480}, {});
        camera.stopWithCompletion(complete);
        if (auto *bridgeChip = dynamic_cast<BWEmpiaCamera *>(&camera)) {
            bridgeChip->setVideoNorm(77, {});
            bridgeChip->writeValue(1, -5);
            QCOMPARE(bridgeChip->readRegisterWithIdentifier(4711), 0);
        }
    }
    bench.probe->settle();
    QCOMPARE(completions, 2 * 5);
    QCOMPARE(successes, usable ? 2 : 0);
    QVERIFY(!camera.recording());
    QVERIFY(!camera.started());
    QVERIFY(bench.probe->snapshots().isEmpty());
    QCOMPARE(bench.probe->start(), usable);
    if (usable)
        QVERIFY(bench.stream(1));
}

void SessionContract::sizeChangesWhileStreaming()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    QVERIFY(bench.stream(2));
    for (int round = 0; round < 3; ++round) {
        const BWResolution wished = otherSize(*bench.camera);
        bench.probe->setResolution(wished);
        QCOMPARE(bench.camera->defaultResolution(), wished);
        QVERIFY(bench.camera->started());
        QVERIFY(bench.stream(2));
        const BWFrameInfo last = bench.probe->frames().back();
        QCOMPARE(QSize(last.width, last.height), wished.dimensions());
    }
    QCOMPARE(bench.probe->sequences(), (std::vector<uint64_t>{0, 1, 0, 1, 0, 1, 0, 1}));
    QCOMPARE(bench.camera->statistics().framesLost, 0u);
}

void SessionContract::unknownSizeBecomesTheNearest()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    const QList<BWResolution> &sizes = m_fixture.description()->availableResolutions;
    bench.probe->setResolution({30000, 30000});
    QCOMPARE(bench.camera->defaultResolution(), sizes.constLast());
    bench.probe->setResolution({641, 479});
    QCOMPARE(bench.camera->defaultResolution(), BWResolution(640, 480));
}

void SessionContract::settingsAreClampedAndTaken()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    for (const int code : m_fixture.description()->acceptedSettings)
        QVERIFY2(bench.camera->settingForIdentifier(code), qPrintable(QString::number(code)));
    QVERIFY(!bench.camera->settingForIdentifier(6));

    const auto brightness = bench.camera->settingForIdentifier(BWSettingBrightness);
    for (int value = 0; value < 1000; ++value)
        bench.camera->setSetting(BWSettingBrightness, brightness->min() + value);
    bench.probe->settle();
    QCOMPARE(brightness->value(), brightness->max());
    bench.camera->setSetting(BWSettingBrightness, brightness->min() - 1000);
    bench.probe->settle();
    QCOMPARE(brightness->value(), brightness->min());
}

void SessionContract::startFailsWhileInUse()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    m_fixture.setInUse(true);
    QVERIFY(!bench.probe->start());
    QVERIFY(!bench.probe->start());
    QVERIFY(!bench.camera->started());
    m_fixture.setInUse(false);
    QVERIFY(bench.probe->start());
    QVERIFY(bench.stream(1));
}

void SessionContract::unplugWhileStreaming()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    QVERIFY(bench.stream(3));
    m_fixture.unplug();
    QTRY_COMPARE(bench.removed.size(), 1);
    QCOMPARE(bench.removed, bench.found);
    bench.probe->stop();
    QVERIFY(!bench.camera->started());
    QVERIFY(!bench.probe->start());
    QCOMPARE(bench.probe->frames().size(), std::size_t(3));

    m_fixture.plugIn();
    QTRY_COMPARE(bench.found.size(), 2);
    const BWCameraPtr again = bench.manager.addDetectedCamera(bench.found.at(1));
    QVERIFY(again != bench.camera);
    CameraProbe probe(*again);
    QVERIFY(probe.start());
    m_fixture.pushFrames(1);
    QVERIFY(probe.waitForFrames(1));
}

void SessionContract::heldFramesStayValidAndStarveOnlyForAsLong()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    const int many = m_fixture.moreThanAllBuffers();
    bench.probe->holdNextFrames(static_cast<std::size_t>(many));
    m_fixture.pushFrames(many);
    // Between two commands the camera has looked for a frame at least once.
    for (int i = 0; i <= many; ++i)
        bench.probe->settle();
    const std::size_t delivered = bench.probe->frames().size();
    QVERIFY(delivered >= 2 && delivered < static_cast<std::size_t>(many));

    // As soon as one buffer is back the stream goes on, and tells what was missed.
    std::vector<BWFrame> held = bench.probe->takeHeld();
    bench.probe->holdNextFrames(0);
    held.erase(held.begin());
    QVERIFY(bench.stream(1));
    QCOMPARE(bench.probe->sequences().back(), static_cast<uint64_t>(many));
    QCOMPARE(bench.camera->statistics().framesLost, static_cast<uint64_t>(many) - delivered);

    std::vector<QByteArray> bytes;
    const auto copy = [](const BWFrame &frame) {
        return QByteArray(reinterpret_cast<const char *>(frame.plane(0).data), qsizetype(frame.plane(0).size));
    };
    for (const BWFrame &frame : held)
        bytes.push_back(copy(frame));
    bench.probe->setResolution(otherSize(*bench.camera));
    QVERIFY(bench.stream(2));
    bench.probe->stop();
    for (std::size_t i = 0; i < held.size(); ++i)
        QCOMPARE(copy(held[i]), bytes[i]);
    bench.probe.reset();
    bench.camera.reset();
    bench.manager.removeDetectedCamera(bench.found.constFirst());
    QCOMPARE(copy(held.front()), bytes.front());
}

void SessionContract::buttonReachesTheCamera()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    for (int press = 1; press <= 3; ++press) {
        m_fixture.pressButton();
        QVERIFY(bench.probe->waitForButtonPresses(press));
    }
}

void SessionContract::destructionCompletesWhatWasAsked()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    QVERIFY(bench.stream(1));
    bench.probe.reset();
    std::atomic<int> completions{0};
    bench.camera->setResolution(otherSize(*bench.camera), [&] { ++completions; });
    bench.camera->stopWithCompletion([&] { ++completions; });
    bench.manager.removeDetectedCamera(bench.found.constFirst());
    bench.camera.reset();
    QCOMPARE(completions, 2);

    // The last one to let go of a camera may be a completion of its own.
    std::atomic<bool> done = false;
    BWCameraPtr camera = bench.manager.addDetectedCamera(bench.found.constFirst());
    bench.manager.removeDetectedCamera(bench.found.constFirst());
    BWCamera &same = *camera;
    same.startWithCompletion([&done, camera = std::move(camera)](bool) mutable {
        camera.reset();
        done = true;
    });
    QTRY_VERIFY(done);
}

void SessionContract::bridgeChipHasNormAndRegisters()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    auto *bridgeChip = dynamic_cast<BWEmpiaCamera *>(bench.camera.get());
    QCOMPARE(bridgeChip != nullptr, m_fixture.description()->isBridgeChip);
    if (!bridgeChip)
        return;
    bridgeChip->writeValue(300, 0x28);
    QCOMPARE(bridgeChip->readRegisterWithIdentifier(0x28), 44);

    const auto norm = bridgeChip->settingForIdentifier(BWSettingVideoNorm);
    QVERIFY(bench.probe->start());
    bench.probe->setResolution({720, 480});
    for (const int wished : {0, 1, 0}) {
        bench.probe->setVideoNorm(*bridgeChip, wished);
        QCOMPARE(norm->value(), double(wished));
        QVERIFY(bench.stream(1));
        QCOMPARE(bench.camera->defaultResolution(), BWResolution(720, 480));
    }
    bench.probe->setVideoNorm(*bridgeChip, 7);
    QCOMPARE(norm->value(), 0.0);
}
