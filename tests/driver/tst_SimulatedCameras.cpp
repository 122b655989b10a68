#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "BWManualClock.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Type = BWSimulatedCameraOptions::Type;

class TestSimulatedCameras : public QObject {
    Q_OBJECT

    /// A backend with one camera, watched.
    struct Watched {
        explicit Watched(Type type, double pendingSeconds)
            : backend(BWSimulatedBackend::create({{.type = type, .pendingSeconds = pendingSeconds}}, clock)),
              hand(backend->cameras().constFirst())
        {
            backend->start({BWCameraDetector::descriptionForHighResolutionMicroscope()},
                           {[this](const BWDetectedCameraPtr &device) { found.append(device); },
                            [this](const BWDetectedCameraPtr &device) { removed.append(device); }});
        }

        BWManualClock clock;
        QList<BWDetectedCameraPtr> found;
        QList<BWDetectedCameraPtr> removed;
        std::unique_ptr<BWSimulatedBackend> backend;
        std::shared_ptr<BWSimulatedCamera> hand;
    };

private Q_SLOTS:
    void preparationTakesItsTime()
    {
        Watched watched(Type::High, 2);
        QVERIFY(watched.backend->pendingDevices());
        watched.clock.advance(1900ms);
        QVERIFY(watched.found.isEmpty());

        // A new plugging begins a new preparation; what is left of the old one finds nothing.
        watched.hand->unplug();
        QVERIFY(!watched.backend->pendingDevices());
        watched.hand->plugIn();
        watched.hand->plugIn();
        watched.clock.advance(1900ms);
        QVERIFY(watched.found.isEmpty());
        QVERIFY(watched.backend->pendingDevices());
        watched.clock.advance(100ms);
        QCOMPARE(watched.found.size(), 1);
        QVERIFY(!watched.backend->pendingDevices());
        QVERIFY(watched.removed.isEmpty());
        watched.hand->unplug();
        watched.hand->unplug();
        QCOMPARE(watched.removed, watched.found);
    }

    void resolutionsAreParsedFromWholeTexts()
    {
        for (const QString &text : {u"640x480"_s, u"00640x0480"_s})
            QCOMPARE(BWResolution::fromResolutionString(text), BWResolution(640, 480));
        const BWResolution largest(32768, 32768);
        QCOMPARE(BWResolution::fromResolutionString(largest.resolutionString()), largest);
        for (const QString &text :
             {u""_s, u"640"_s, u"640x"_s, u"x480"_s, u"640X480"_s, u"640x480x2"_s, u"640x480\n"_s, u"+640x480"_s,
              u"0x480"_s, u"32769x1"_s, u"99999999999x1"_s, u"6.4x4"_s, u"\u0661\u0662x480"_s})
            QVERIFY2(!BWResolution::fromResolutionString(text), qPrintable(text));
    }
};

QTEST_GUILESS_MAIN(TestSimulatedCameras)
#include "tst_SimulatedCameras.moc"
