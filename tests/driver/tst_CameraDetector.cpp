#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"

#include <atomic>
#include <QTest>
#include <QThread>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

/// A backend that does what the test says.
class PuppetBackend : public BWCameraBackend {
public:
    struct Strings {
        Events events;
        std::atomic<bool> pending = false;
        std::atomic<int> starts = 0;
    };

    PuppetBackend(std::shared_ptr<Strings> strings, QList<BWDetectedCameraPtr> attached)
        : m_strings(std::move(strings)), m_attached(std::move(attached))
    {
    }

    void start(const QList<BWCameraDescriptionPtr> &, Events events) override
    {
        ++m_strings->starts;
        m_strings->events = events;
        for (const BWDetectedCameraPtr &device : m_attached)
            events.found(device);
    }

    bool pendingDevices() const override { return m_strings->pending; }

private:
    const std::shared_ptr<Strings> m_strings;
    const QList<BWDetectedCameraPtr> m_attached;
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
        explicit Setup(const QList<BWDetectedCameraPtr> &attached = {})
        {
            std::vector<std::unique_ptr<BWCameraBackend>> backends;
            backends.push_back(std::make_unique<PuppetBackend>(strings, attached));
            detector =
                std::make_unique<BWCameraDetector>(QList{BWCameraDetector::descriptionForDX20()}, std::move(backends));
            detector->setCameraFoundBlock([this](const BWDetectedCameraPtr &device) { note(u"found"_s, device); });
            detector->setCameraRemovedBlock([this](const BWDetectedCameraPtr &device) { note(u"removed"_s, device); });
            detector->startCamerasDetection();
        }

        void note(const QString &what, const BWDetectedCameraPtr &device)
        {
            rightThread = rightThread && QThread::currentThread() == qApp->thread();
            log.append({what, device});
        }

        std::shared_ptr<PuppetBackend::Strings> strings = std::make_shared<PuppetBackend::Strings>();
        QList<QPair<QString, BWDetectedCameraPtr>> log;
        bool rightThread = true;
        std::unique_ptr<BWCameraDetector> detector;
    };

private Q_SLOTS:
    void eventsOfBackendThreadsKeepTheirOrder()
    {
        const BWDetectedCameraPtr first = makeDevice();
        const BWDetectedCameraPtr second = makeDevice();
        Setup setup({first});
        QVERIFY(setup.log.isEmpty());
        QVERIFY(setup.detector->pendingDevices());
        QTRY_COMPARE(setup.log.size(), 1);
        std::thread([&] {
            setup.strings->events.found(first); // known already
            setup.strings->events.found(second);
        }).join();
        QCOMPARE(setup.log.size(), 1);
        QTRY_COMPARE(setup.log.size(), 2);
        std::thread([&] {
            setup.strings->events.removed(second);
            setup.strings->events.removed(second);
            setup.strings->events.removed(makeDevice()); // never found
            setup.strings->events.removed(first);
        }).join();
        QTRY_COMPARE(setup.log.size(), 4);
        QCoreApplication::processEvents();
        const QList<QPair<QString, BWDetectedCameraPtr>> expected{
            {u"found"_s, first}, {u"found"_s, second}, {u"removed"_s, second}, {u"removed"_s, first}};
        QCOMPARE(setup.log, expected);
        QVERIFY(setup.rightThread);
    }

    void goneBeforeItWasHandedOver()
    {
        const BWDetectedCameraPtr device = makeDevice();
        Setup setup({device});
        setup.strings->events.removed(device);
        QVERIFY(!setup.detector->pendingDevices());
        QCoreApplication::processEvents();
        QVERIFY(setup.log.isEmpty());
    }

    void pendingUntilHandedOver()
    {
        Setup setup;
        QVERIFY(!setup.detector->pendingDevices());
        setup.strings->pending = true;
        QVERIFY(setup.detector->pendingDevices());
        setup.strings->events.found(makeDevice());
        setup.strings->pending = false;
        QVERIFY(setup.detector->pendingDevices());
        QTRY_COMPARE(setup.log.size(), 1);
        QVERIFY(!setup.detector->pendingDevices());
    }

    void nothingAfterTheDetectorIsGone()
    {
        for (int round = 0; round < 50; ++round) {
            Setup setup({makeDevice()});
            std::atomic<bool> stop = false;
            std::thread backend([&] {
                while (!stop) {
                    const BWDetectedCameraPtr device = makeDevice();
                    setup.strings->events.found(device);
                    setup.strings->events.removed(device);
                }
            });
            QCoreApplication::processEvents();
            setup.detector.reset();
            const qsizetype before = setup.log.size();
            QCoreApplication::processEvents();
            stop = true;
            backend.join();
            QCOMPARE(setup.log.size(), before);
        }
    }
};

QTEST_GUILESS_MAIN(TestCameraDetector)
#include "tst_CameraDetector.moc"
