// SPDX-License-Identifier: GPL-3.0-or-later
#include "Contract.h"
#include "Rows.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <QElapsedTimer>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using Sequences = std::vector<uint64_t>;

/// Detection, start and stop, size and controls, frames, unplugging.
class SessionContract : public Contract {
    Q_OBJECT

public:
    using Contract::Contract;

private Q_SLOTS:
    void everyPlugIsReportedOnce()
    {
        Bench &bench = m_bench.emplace(m_fixture, false);
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

    void startAndStopInEveryOrder()
    {
        probe().stop();
        QVERIFY(!camera().started());
        for (int round = 0; round < 3; ++round) {
            QVERIFY(probe().start());
            QVERIFY2(probe().start(), "a started camera answers true");
            QVERIFY(camera().started());
            QVERIFY(probe().stream(2));
            probe().stop();
            QVERIFY(!camera().started());
            probe().stop();
        }
        QVERIFY(isCount(probe().frames().size(), 6));
    }

    void everyPushedFrameArrivesOnce()
    {
        QVERIFY(probe().start());
        m_fixture.pushFrames(50);
        QVERIFY(probe().waitForFrames(50));
        probe().stop();
        const Sequences sequences = probe().sequences();
        const BWCameraStatistics statistics = camera().statistics();
        QVERIFY(isCount(sequences.size(), 50));
        QVERIFY(std::adjacent_find(sequences.begin(), sequences.end(), std::greater_equal()) == sequences.end());
        QCOMPARE(statistics.framesDelivered, sequences.size());
        QCOMPARE(statistics.framesLost, sequences.back() - sequences.front() + 1 - sequences.size());
        QCOMPARE(statistics.framesBad + statistics.streamRestarts, 0u);
        QVERIFY2(!m_fixture.isPushed() || statistics.framesLost == 0, "the camera did not have to wait");
    }

    void callbacksComeOnTheirThreads()
    {
        const QTemporaryDir folder;
        QVERIFY(probe().start());
        camera().takeSnapshot();
        camera().startRecording(folder.filePath(u"a.mov"_s));
        probe().settle();
        QVERIFY(probe().stream(1));
        QVERIFY(probe().waitForRecordingChanges(1));
        QVERIFY(probe().waitForSnapshots(1));
        for (int press = 1; press <= 3 && m_fixture.hasButton(); ++press) {
            m_fixture.pressButton();
            QVERIFY(probe().waitForButtonPresses(press));
        }
        probe().stop();
        const auto capture = probe().captureThreads();
        const auto snapshot = probe().snapshotThreads();
        QVERIFY2(capture.size() == 1, "not all on one thread");
        QVERIFY(capture != snapshot);
        QVERIFY(!capture.contains(std::this_thread::get_id()) && !snapshot.contains(std::this_thread::get_id()));
    }

    void operationsCompleteOnce_data()
    {
        const Rows<QString, bool> row; // the state, and whether the camera can be used in it
        row("new", u"new"_s, true);
        row("streaming", u"streaming"_s, true);
        row("stopped", u"stopped"_s, true);
        row("unplugged while streaming", u"unplugged"_s, false);
        row("removed", u"removed"_s, false);
    }

    void operationsCompleteOnce()
    {
        const auto [state, usable] = Rows<QString, bool>::current();
        const QTemporaryDir folder;
        if (state != u"new"_s)
            QVERIFY(probe().start());
        if (state == u"stopped"_s)
            probe().stop();
        if (!usable) {
            m_fixture.unplug();
            QTRY_COMPARE(m_bench->removed.size(), 1);
        }
        if (state == u"removed"_s) {
            probe().stop();
            m_bench->manager.removeDetectedCamera(m_bench->found.constFirst());
            QVERIFY(m_bench->manager.cameras().isEmpty());
        }

        // Everything at once, twice, sensible or not.
        std::atomic<int> completions{0};
        std::atomic<int> successes{0};
        const auto complete = [&completions] { ++completions; };
        for (int i = 0; i < 2; ++i) {
            camera().startRecording(folder.filePath(u"x.mov"_s));
            camera().startRecording(u"/nonexistent/x.mov"_s);
            camera().stopRecording();
            camera().takeSnapshot();
            camera().setSetting(BWSettingBrightness, 1e9);
            camera().setSetting(6, 1);
            camera().setSetting(BWSettingContrast, qQNaN());
            camera().startWithCompletion([&](bool success) {
                successes += success ? 1 : 0;
                ++completions;
            });
            camera().setResolution(otherSize(), complete);
            camera().setResolution({0, -3}, complete);
            camera().takeSnapshot();
            camera().stopWithCompletion(complete);
            camera().stopWithCompletion({});
            camera().startWithCompletion({});
            camera().setResolution({640, 480}, {});
            camera().stopWithCompletion(complete);
            if (auto *bridgeChip = dynamic_cast<BWEmpiaCamera *>(&camera())) {
                bridgeChip->setVideoNorm(77, {});
                bridgeChip->writeValue(1, -5);
                QCOMPARE(bridgeChip->readRegisterWithIdentifier(4711), 0);
            }
        }
        probe().settle();
        QCOMPARE(completions, 2 * 5);
        QCOMPARE(successes, usable ? 2 : 0);
        QVERIFY(!camera().recording());
        QVERIFY(!camera().started());
        camera().takeSnapshot(); // without a stream
        QCOMPARE(probe().start(), usable);
        if (usable)
            QVERIFY(probe().stream(1));
        probe().stop();
        QVERIFY(probe().snapshots().isEmpty());
    }

    void sizeChangesWhileStreaming()
    {
        QVERIFY(probe().start(2));
        for (int round = 0; round < 3; ++round) {
            const BWResolution requested = otherSize();
            probe().setResolution(requested);
            QCOMPARE(camera().defaultResolution(), requested);
            QVERIFY(camera().started());
            QVERIFY(probe().stream(2));
            const BWFrameInfo last = probe().frames().back();
            QCOMPARE(QSize(last.width, last.height), requested.dimensions());
        }
        const Sequences sequences = probe().sequences();
        QVERIFY(!m_fixture.isPushed() || sequences == (Sequences{0, 1, 0, 1, 0, 1, 0, 1}));
        QVERIFY(!m_fixture.isPushed() || camera().statistics().framesLost == 0);
        probe().setResolution({30000, 30000}); // unknown: the nearest
        QCOMPARE(camera().defaultResolution(), description().availableResolutions.constLast());
        probe().setResolution({641, 479});
        QCOMPARE(camera().defaultResolution(), BWResolution(640, 480));
    }

    void settingsAreClampedAndTaken()
    {
        for (const int code : description().acceptedSettings)
            QVERIFY2(camera().settingForIdentifier(code), qPrintable(QString::number(code)));
        QVERIFY(!camera().settingForIdentifier(6));

        const auto brightness = camera().settingForIdentifier(BWSettingBrightness);
        for (int value = 0; value < 1000; ++value)
            camera().setSetting(BWSettingBrightness, brightness->min() + value);
        probe().settle();
        QCOMPARE(brightness->value(), brightness->max());
        camera().setSetting(BWSettingBrightness, brightness->min() - 1000);
        probe().settle();
        QCOMPARE(brightness->value(), brightness->min());
    }

    void startFailsWhileInUse()
    {
        m_fixture.setInUse(true);
        QVERIFY(!probe().start());
        QVERIFY(!probe().start());
        QVERIFY(!camera().started());
        m_fixture.setInUse(false);
        QVERIFY(probe().start(1));
    }

    void unplugWhileStreaming()
    {
        QVERIFY(probe().start(3));
        m_fixture.unplug();
        QTRY_COMPARE(m_bench->removed.size(), 1);
        QCOMPARE(m_bench->removed, m_bench->found);
        probe().stop();
        QVERIFY(!camera().started());
        QVERIFY(!probe().start());
        QVERIFY(isCount(probe().frames().size(), 3));

        m_fixture.plugIn();
        const BWCameraPtr before = m_bench->camera;
        QVERIFY(m_bench->openCamera(2));
        QVERIFY(m_bench->camera != before);
        QVERIFY(probe().start(1));
    }

    void heldFramesStayValid()
    {
        QVERIFY(probe().start());
        const int many = m_fixture.moreThanAllBuffers();
        probe().holdNextFrames(static_cast<std::size_t>(many));
        m_fixture.pushFrames(many);
        // Between two commands the camera has looked for a frame at least once.
        for (int i = 0; i <= many; ++i)
            probe().settle();
        QVERIFY(probe().waitForHeld(2));
        const std::size_t delivered = probe().frames().size();
        QVERIFY(delivered < static_cast<std::size_t>(many));

        // As soon as one buffer is back the stream goes on, and the gap shows what was missed.
        std::vector<BWFrame> held = probe().takeHeld();
        probe().holdNextFrames(0);
        held.erase(held.begin());
        QVERIFY(probe().stream(1));
        if (m_fixture.isPushed()) {
            QCOMPARE(probe().sequences().back(), static_cast<uint64_t>(many));
            QCOMPARE(camera().statistics().framesLost, static_cast<uint64_t>(many) - delivered);
        }

        const auto contents = [&held] {
            QByteArray bytes;
            for (const BWFrame &frame : held)
                bytes.append(reinterpret_cast<const char *>(frame.plane(0).data), qsizetype(frame.plane(0).size));
            return bytes;
        };
        const QByteArray before = contents();
        probe().setResolution(otherSize());
        QVERIFY(probe().stream(2));
        probe().stop();
        QVERIFY(contents() == before);
        m_bench->probe.reset();
        m_bench->camera.reset();
        m_bench->manager.removeDetectedCamera(m_bench->found.constFirst());
        QVERIFY(contents() == before);
    }

    void destructionCompletesPendingRequests()
    {
        QVERIFY(probe().start(1));
        m_bench->probe.reset();
        const auto completions = std::make_shared<std::atomic<int>>(0);
        camera().setResolution(otherSize(), [completions] { ++*completions; });
        camera().stopWithCompletion([completions] { ++*completions; });
        m_bench->manager.removeDetectedCamera(m_bench->found.constFirst());
        QElapsedTimer time;
        time.start();
        m_bench->camera.reset();
        QVERIFY(*completions == 2 || time.elapsed() >= 2000); // a slow computer takes longer than any device may
        QTRY_COMPARE_WITH_TIMEOUT(*completions, 2, 60000);

        // A completion may hold the last reference to its camera.
        std::atomic<bool> done = false;
        BWCameraPtr last = m_bench->manager.addDetectedCamera(m_bench->found.constFirst());
        m_bench->manager.removeDetectedCamera(m_bench->found.constFirst());
        BWCamera &same = *last;
        same.startWithCompletion([&done, last = std::move(last)](bool) mutable {
            last.reset();
            done = true;
        });
        QTRY_VERIFY_WITH_TIMEOUT(done, 60000);
    }

    void bridgeChipHasNormAndRegisters()
    {
        auto *bridgeChip = dynamic_cast<BWEmpiaCamera *>(&camera());
        QCOMPARE(bridgeChip != nullptr, description().isBridgeChip);
        if (!bridgeChip)
            return;
        bridgeChip->writeValue(300, 0x28);
        QCOMPARE(bridgeChip->readRegisterWithIdentifier(0x28), 44);

        const auto norm = bridgeChip->settingForIdentifier(BWSettingVideoNorm);
        QVERIFY(probe().start());
        probe().setResolution({720, 480});
        for (const int requested : {0, 1, 0, 7}) {
            probe().complete([&](const BWCamera::Completion &done) { bridgeChip->setVideoNorm(requested, done); });
            QCOMPARE(norm->value(), requested == 1 ? 1.0 : 0.0);
            QVERIFY(probe().stream(1));
            QCOMPARE(camera().defaultResolution(), BWResolution(720, 480));
        }
    }
};

int runContract(BackendFixture &fixture, const QStringList &arguments)
{
    SessionContract session(fixture);
    return QTest::qExec(&session, arguments) + QTest::qExec(makeCaptureContract(fixture).get(), arguments);
}

#include "SessionContract.moc"
