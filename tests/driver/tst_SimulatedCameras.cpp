#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "simulated/BWSimulatedControls.h"
#include "simulated/BWSimulatedProfile.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Options = BWSimulatedCameraOptions;
using Type = Options::Type;

Q_DECLARE_METATYPE(BWSimulatedCameraOptions::Type)

namespace {

Options preparedFor(double seconds, Type type = Type::High)
{
    Options options;
    options.type = type;
    options.pendingSeconds = seconds;
    return options;
}

} // namespace

class TestSimulatedCameras : public QObject {
    Q_OBJECT

    /// A backend with one camera, watched.
    struct Watched {
        explicit Watched(
            const Options &options,
            QList<BWCameraDescriptionPtr> descriptions = {BWCameraDetector::descriptionForHighResolutionMicroscope()})
            : backend(BWSimulatedBackend::create({options}, clock)), hand(backend->cameras().constFirst())
        {
            backend->start(descriptions,
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
        Watched watched(preparedFor(2));
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

    void onlyWatchedTypesAreFound()
    {
        Watched watched(preparedFor(1, Type::Wireless));
        watched.clock.advance(2s);
        QVERIFY(!watched.backend->pendingDevices());
        QVERIFY(watched.found.isEmpty());
    }

    void handOutlivesTheBackend()
    {
        Watched watched(preparedFor(1));
        watched.backend.reset();
        watched.clock.advance(2s);
        watched.hand->unplug();
        watched.hand->plugIn();
        watched.hand->pushFrames(3);
        QVERIFY(watched.hand->isPluggedIn());
        QVERIFY(watched.found.isEmpty());
    }

    void titlesCountPerType()
    {
        const auto backend =
            BWSimulatedBackend::create({preparedFor(0), preparedFor(0, Type::Wireless), preparedFor(0)});
        QStringList titles;
        for (const auto &camera : backend->cameras())
            titles.append(camera->title());
        QCOMPARE(titles.join(u", "_s),
                 u"High Resolution Microscope 1, Wireless Microscope 1, High Resolution Microscope 2"_s);
    }

    void factoryValuesFit_data()
    {
        QTest::addColumn<Type>("type");
        QTest::addColumn<QList<int>>("values");
        QTest::addColumn<bool>("isDefault");
        // In the order of the type's accepted settings.
        QTest::newRow("ultra A") << Type::Ultra << QList<int>{0, 32, 64, 0, 3, 100, 4600, 1, 0, 1, 1, 157} << true;
        QTest::newRow("dx20") << Type::DX20 << QList<int>{0, 32, 64, 0, 3, 100, 4600, 1, 0, 1, 1, 157} << true;
        QTest::newRow("ultra B") << Type::Ultra << QList<int>{12, 50, 60, 35, 4, 90, 3750, 1, 0, 1, 0, 625} << false;
        QTest::newRow("high") << Type::High << QList<int>{0, 15, 15, 160, 13, 78, 128, 1} << true;
        QTest::newRow("regular A") << Type::Regular << QList<int>{0, 13, 15, 152, 15, 64, 120, 0} << true;
        QTest::newRow("regular B") << Type::Regular << QList<int>{0, 8, 16, 120, 12, 92, 128, 1} << false;
        QTest::newRow("regular C") << Type::Regular << QList<int>{0, 13, 15, 167, 15, 75, 90, 0} << false;
        QTest::newRow("wireless A") << Type::Wireless << QList<int>{63, 28, 56, 130, 10, 1} << true;
        QTest::newRow("wireless B") << Type::Wireless << QList<int>{63, 32, 56, 100, 11, 1} << false;
    }

    void factoryValuesFit()
    {
        QFETCH(Type, type);
        QFETCH(QList<int>, values);
        QFETCH(bool, isDefault);
        const BWSimulatedProfile &profile = BWSimulatedProfile::forType(type);
        BWSimulatedControls controls(profile.controls);
        QVERIFY(controls.picture().isNeutral());
        // Automatic modes last, they would hold their controls.
        const QList<int> &codes = profile.description->acceptedSettings;
        QCOMPARE(codes.size(), values.size());
        QCOMPARE(profile.controls.size(), std::size_t(codes.size()));
        controls.set(BWSettingAutoWhite, 0);
        controls.set(BWSettingAutoExposure, 0);
        for (const bool automatic : {false, true}) {
            for (qsizetype i = 0; i < codes.size(); ++i) {
                if ((codes[i] == BWSettingAutoWhite || codes[i] == BWSettingAutoExposure) == automatic)
                    QCOMPARE(controls.set(codes[i], values[i]), double(values[i]));
            }
        }
        QCOMPARE(controls.picture().isNeutral(), isDefault);
    }

    void controlsReachTheirEnds()
    {
        for (const Type type : {Type::Ultra, Type::High, Type::Wireless}) {
            BWSimulatedControls controls(BWSimulatedProfile::forType(type).controls);
            controls.set(BWSettingBrightness, -1e9);
            QCOMPARE(controls.picture().brightness, -1.0);
            controls.set(BWSettingBrightness, 1e9);
            QCOMPARE(controls.picture().brightness, 1.0);
            QCOMPARE(controls.set(6, 5), 0.0);
        }
        BWSimulatedControls ultra(BWSimulatedProfile::forType(Type::Ultra).controls);
        ultra.set(BWSettingAutoWhite, 0);
        QCOMPARE(ultra.set(BWSettingWhiteBalance, 4604), 4600.0);
    }

    void fasterFormatWins_data()
    {
        QTest::addColumn<Type>("type");
        QTest::addColumn<BWResolution>("size");
        QTest::addColumn<int>("norm");
        QTest::addColumn<bool>("raw");
        QTest::addColumn<double>("rate");
        QTest::newRow("tie goes to raw") << Type::DX20 << BWResolution(640, 480) << 1 << true << 30.0;
        QTest::newRow("mjpeg") << Type::DX20 << BWResolution(1920, 1080) << 1 << false << 30.0;
        QTest::newRow("5 MP") << Type::DX20 << BWResolution(2592, 1944) << 1 << false << 15.0;
        QTest::newRow("PAL") << Type::Wireless << BWResolution(720, 480) << 1 << true << 25.0;
        QTest::newRow("NTSC") << Type::Wireless << BWResolution(640, 480) << 0 << true << 30000 / 1001.0;
        for (const Type type : {Type::Regular, Type::High, Type::Ultra, Type::DX20}) {
            for (const BWResolution &size : BWSimulatedProfile::forType(type).description->availableResolutions) {
                if (size.width() > 640 && size.width() < 2048)
                    QTest::addRow("%d %s", int(type), qPrintable(size.resolutionString()))
                        << type << size << 1 << false << 30.0;
            }
        }
    }

    void fasterFormatWins()
    {
        QFETCH(Type, type);
        QFETCH(BWResolution, size);
        QFETCH(int, norm);
        QFETCH(bool, raw);
        QFETCH(double, rate);
        const BWSimulatedProfile &profile = BWSimulatedProfile::forType(type);
        const BWSimulatedProfile::Mode mode = profile.mode(size, std::nullopt, norm);
        QCOMPARE(mode.format == BWPixelFormat::YUYV, raw);
        QCOMPARE(mode.framesPerSecond, rate);
        const BWSimulatedProfile::Mode wished = profile.mode(size, BWPixelFormat::MJPEG, norm);
        QCOMPARE(wished.format == BWPixelFormat::MJPEG, type != Type::Wireless);
    }
};

QTEST_GUILESS_MAIN(TestSimulatedCameras)
#include "tst_SimulatedCameras.moc"
