// SPDX-License-Identifier: GPL-3.0-or-later
#include "NotingCamera.h"
#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;
using Type = NotingCamera::Type;

namespace {

struct Bench : ProductBench {
    explicit Bench(const NotingCamera &camera) { start(camera); }

    void start(const NotingCamera &camera)
    {
        product.setCamera(camera.camera);
        product.cameraStarted();
    }
    void choose(const QString &identifier)
    {
        config.setCurrentProductIdentifier(identifier, product.camera()->identifierForProducts());
        QCoreApplication::processEvents(); // not before all listeners have been notified
    }
};

} // namespace

class TestBWProductInUse : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void startIsPrepared()
    {
        const NotingCamera camera(Type::Wireless);
        camera.notes->allCalls = true;
        Bench bench(camera);
        bench.product.product()->setCurrentResolution({720, 480});
        bench.product.product()->setValue(0, BWSettingVideoNorm);
        camera.received();
        std::promise<void> done;
        bench.product.prepareStart([&done] { done.set_value(); });
        done.get_future().wait();
        QCOMPARE(camera.notes->take(), u"size 720x480 norm 0 size 720x480"_s);
        QCOMPARE(camera.camera->defaultResolution(), BWResolution(720, 480));
    }

    void loading_data()
    {
        const Rows<Type, QString, QString> row;
        const QString ultra = u"0=0 1=32 4=3 9=0 2=64 3=0 5=100 12=157 7=4600 8=1 11=1"_s;
        const QString wireless = u"0=63 1=28 4=10 2=56 3=130"_s;
        row("a camera has started", Type::Ultra, u"start"_s, ultra);
        row("started, the norm is left alone", Type::Wireless, u"start"_s, wireless);
        row("another product", Type::Ultra, u"mx24"_s,
            u"0=12 1=50 4=4 9=0 2=60 3=35 5=90 12=625 7=3750 8=1 11=0 12=625"_s);
        row("another product, the norm too", Type::Wireless, u"dx17_18"_s, u"0=63 1=32 4=11 2=56 3=100 norm 1"_s);
        row("the same product", Type::Ultra, u"mx62"_s, QString());
        row("a product that does not exist: the default one", Type::Ultra, u"mx99"_s, QString());
        row("factory values, the norm too", Type::Wireless, u"restore"_s, wireless + u" norm 1"_s);
        row("imported values, the norm too", Type::Wireless, u"import"_s, wireless + u" norm 1"_s);
    }
    void loading()
    {
        const auto [type, what, received] = Rows<Type, QString, QString>::current();
        const NotingCamera camera(type);
        Bench bench(camera);
        QVERIFY(camera.received().startsWith(u"0="_s));
        if (what == u"start"_s)
            bench.start(camera);
        else if (what == u"restore"_s)
            bench.product.restoreDefaults();
        else if (what == u"import"_s)
            bench.product.reloadImported();
        else
            bench.choose(what);
        QCOMPARE(camera.received(), received);
    }

    void controlWithoutProductValueIsLeftAlone()
    {
        const NotingCamera camera(Type::High);
        Bench bench(camera);
        // Cameras of that kind may have more controls than its products know.
        const NotingCamera richer(Type::Ultra);
        bench.product.setCamera(richer.camera);
        bench.product.loadProductWithVideoNorm(true);
        QCOMPARE(richer.received(), u"0=0 1=15 4=6 2=15 3=64 5=78 7=2800 8=1"_s);
        QCOMPARE(richer.camera->settingForIdentifier(BWSettingExposureAbsolute)->value(), 157);
    }

    void startingCameraIsLeftAlone()
    {
        const NotingCamera going(Type::Ultra);
        const NotingCamera coming(Type::Wireless);
        Bench bench(going);
        bench.product.setCamera(coming.camera);
        bench.product.updateSetting(*going.camera->settingForIdentifier(BWSettingBrightness), 20);
        QCOMPARE(bench.product.product()->valueForSetting(BWSettingBrightness), 20.0);
        QVERIFY(bench.product.restoreDefaults());
        QCOMPARE(coming.received(), QString());
    }

    void valuesAreStoredOnRequest()
    {
        const NotingCamera camera(Type::Wireless);
        Bench bench(camera);
        const QString key = bench.product.product()->settingsName();
        bench.product.updateSetting(*camera.camera->settingForIdentifier(BWSettingBrightness), 77);
        bench.product.updateResolution({720, 480});
        QCOMPARE(bench.defaults.string(key), QString());
        QVERIFY(bench.product.save());
        QCOMPARE(bench.defaults.string(key),
                 uR"({"0":63,"1":28,"13":1,"2":56,"3":77,"4":10,"resolution":"720x480"})"_s);
        QVERIFY(bench.product.restoreDefaults());
        QCOMPARE(bench.defaults.string(key),
                 uR"({"0":63,"1":28,"13":1,"2":56,"3":130,"4":10,"resolution":"640x480"})"_s);
    }

    void cameraFollowsTheProductsResolution()
    {
        const NotingCamera camera(Type::High);
        Bench bench(camera);
        camera.start();
        int changes = 0;
        connect(&bench.product, &BWProductInUse::resolutionChanged, this, [&changes] { ++changes; });
        const auto size = [&] { return camera.camera->defaultResolution(); };

        bench.product.changeResolution({1600, 1200});
        QTRY_COMPARE_WITH_TIMEOUT(changes, 1, 30000);
        QCOMPARE(size(), BWResolution(1600, 1200));
        QCOMPARE(bench.product.product()->currentResolution(), BWResolution(1600, 1200));
        bench.product.restoreDefaults();
        QTRY_COMPARE(changes, 2);
        QCOMPARE(size(), BWResolution(640, 480));

        // Several products in quick succession, as with the arrow keys in the menu.
        bench.config.productByIdentifier(u"mx61"_s)->setCurrentResolution({1280, 1024});
        for (const QString &product : {u"mx61"_s, u"dx10"_s, u"mx61"_s})
            bench.choose(product);
        camera.start(); // streams already; waits for everything before
        QCOMPARE(size(), BWResolution(1280, 1024));

        // It would end a recording.
        QVERIFY(camera.camera->startRecording(bench.folder.filePath(u"a.mov"_s)));
        bench.product.restoreDefaults();
        bench.product.cameraStops();
        bench.product.changeResolution({1600, 1200});
        camera.stop();
        QCOMPARE(size(), BWResolution(1280, 1024));
    }

    void slowCameraBlocksNothing()
    {
        const NotingCamera slow(Type::High);
        Bench bench(slow);
        slow.received();
        const auto send = [&](int setting, double value) {
            bench.product.updateSetting(*slow.camera->settingForIdentifier(setting), value);
        };
        slow.notes->holdUp();
        send(BWSettingBrightness, 1);
        QTRY_VERIFY(slow.notes->isBusy());
        for (int value = 2; value <= 20; ++value) {
            send(BWSettingBrightness, value);
            send(BWSettingContrast, value);
            send(BWSettingHue, -value);
        }
        slow.notes->letGo();
        QCOMPARE(slow.received(), u"3=1 3=20 1=20 0=-20"_s);
    }
};

QTEST_GUILESS_MAIN(TestBWProductInUse)
#include "tst_BWProductInUse.moc"
