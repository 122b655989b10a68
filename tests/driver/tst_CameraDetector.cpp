// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"

#include <atomic>
#include <QTest>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

/// A backend that does what the test says.
class PuppetBackend : public BWCameraBackend {
public:
    struct Strings {
        Events events;
        std::atomic<bool> pending = false;
    };

    explicit PuppetBackend(Strings &strings) : m_strings(strings) { }
    void start(const QList<BWCameraDescriptionPtr> &, Events events) override { m_strings.events = events; }
    bool pendingDevices() const override { return m_strings.pending; }

private:
    Strings &m_strings;
};

BWDetectedCameraPtr makeDevice()
{
    return std::make_shared<BWDetectedCamera>(BWCameraDetector::descriptionForDX20(), u"device"_s,
                                              BWDetectedCamera::OpenFunction());
}

} // namespace

class TestCameraDetector : public QObject {
    Q_OBJECT

    struct Setup {
        Setup()
        {
            std::vector<std::unique_ptr<BWCameraBackend>> backends;
            backends.push_back(std::make_unique<PuppetBackend>(strings));
            detector =
                std::make_unique<BWCameraDetector>(QList{BWCameraDetector::descriptionForDX20()}, std::move(backends));
            detector->setCameraFoundBlock([this](const BWDetectedCameraPtr &device) { found.append(device); });
            detector->setCameraRemovedBlock([this](const BWDetectedCameraPtr &device) { removed.append(device); });
            detector->startCamerasDetection();
        }

        PuppetBackend::Strings strings;
        QList<BWDetectedCameraPtr> found;
        QList<BWDetectedCameraPtr> removed;
        std::unique_ptr<BWCameraDetector> detector;
    };

private Q_SLOTS:
    void eventsOfBackendThreadsKeepTheirOrder()
    {
        const BWDetectedCameraPtr first = makeDevice();
        const BWDetectedCameraPtr second = makeDevice();
        Setup setup;
        setup.strings.events.found(first);
        std::thread([&] {
            setup.strings.events.found(first); // known already
            setup.strings.events.found(second);
        }).join();
        QVERIFY2(setup.found.isEmpty(), "called before the event loop");
        QTRY_COMPARE(setup.found, (QList{first, second}));
        std::thread([&] {
            setup.strings.events.removed(second);
            setup.strings.events.removed(second);
            setup.strings.events.removed(makeDevice()); // never found
            setup.strings.events.removed(first);
        }).join();
        QTRY_COMPARE(setup.removed.size(), 2);
        QCoreApplication::processEvents();
        QCOMPARE(setup.removed, (QList{second, first}));
        QCOMPARE(setup.found.size(), 2);
    }

    void pendingUntilHandedOverOrGone()
    {
        Setup setup;
        const BWDetectedCameraPtr device = makeDevice();
        QStringList reported; // how it was when a change was reported
        setup.detector->setDevicesChangedBlock(
            [&] { reported << (setup.detector->pendingDevices() ? u"pending"_s : u"none"_s); });
        QVERIFY(!setup.detector->pendingDevices());
        setup.strings.pending = true;
        std::thread([&] { setup.strings.events.changed(); }).join();
        QTRY_COMPARE(reported, QStringList{u"pending"_s});
        QVERIFY(setup.detector->pendingDevices());
        setup.strings.events.found(device);
        setup.strings.pending = false;
        QVERIFY(setup.detector->pendingDevices());
        QTRY_COMPARE(setup.found.size(), 1);
        QVERIFY(!setup.detector->pendingDevices());
        QCOMPARE(reported.last(), u"none"_s);

        const BWDetectedCameraPtr gone = makeDevice();
        setup.strings.events.found(gone);
        setup.strings.events.removed(gone);
        QVERIFY(!setup.detector->pendingDevices());
        QCoreApplication::processEvents();
        QCOMPARE(setup.found, QList{device});
        QVERIFY(setup.removed.isEmpty());
    }

    void nothingAfterTheDetectorIsGone()
    {
        for (int round = 0; round < 50; ++round) {
            Setup setup;
            std::atomic<bool> stop = false;
            std::thread backend([&] {
                while (!stop) {
                    const BWDetectedCameraPtr device = makeDevice();
                    setup.strings.events.found(device);
                    setup.strings.events.removed(device);
                }
            });
            QCoreApplication::processEvents();
            setup.detector.reset();
            const qsizetype before = setup.found.size() + setup.removed.size();
            QCoreApplication::processEvents();
            stop = true;
            backend.join();
            QCOMPARE(setup.found.size() + setup.removed.size(), before);
        }
    }
};

QTEST_GUILESS_MAIN(TestCameraDetector)
#include "tst_CameraDetector.moc"
