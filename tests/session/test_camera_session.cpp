#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/BWConfigManager.h"
#include "Model/BWSettingsFile.h"
#include "Model/Session/BWCameraSession.h"
#include "Model/Session/BWCameraSessionUi.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using State = BWCameraSession::State;
using Type = BWSimulatedCameraOptions::Type;

namespace {

/// Notes what it is asked, and answers when the test says so.
class RecordingUi : public BWCameraSessionUi {
public:
    void enableCameraMenus() override { calls << u"enableCameraMenus"_s; }
    void updateStateLabel() override { calls << u"updateStateLabel"_s; }
    void updateCameraList(const QList<BWCameraPtr> &list, const BWCameraPtr &current) override
    {
        cameras = list;
        listedCurrent = current;
    }
    void setStartedCamera(const BWCameraPtr &) override { calls << u"setStartedCamera"_s; }
    void showResolutions(const QList<BWResolution> &list, BWResolution current) override
    {
        calls << u"showResolutions %1 %2"_s.arg(list.size()).arg(current.resolutionString());
    }
    void enableGrid(bool available) override { calls << (available ? u"enableGrid yes"_s : u"enableGrid no"_s); }
    void updateImageDisplay() override { calls << u"updateImageDisplay"_s; }
    void bringMainWindowToFront() override { calls << u"bringMainWindowToFront"_s; }
    void resetUIToInitial() override { calls << u"resetUIToInitial"_s; }
    void askForProduct(const BWCameraPtr &, std::function<void(const QString &)> answer) override
    {
        calls << u"askForProduct"_s;
        productAnswer = std::move(answer);
    }
    void showCameraInUse(const BWStartProblem &why, std::optional<BWResolution> offered,
                         std::function<void(std::optional<BWResolution>)> again) override
    {
        problem = why;
        smaller = offered;
        retry = std::move(again);
    }
    void endQuestions() override
    {
        productAnswer = {};
        retry = {};
    }
    void showNoCameraWindow() override { calls << u"showNoCameraWindow"_s; }
    void hideNoCameraWindow() override { }
    void openNoCameraSheet(std::function<void()> end) override
    {
        calls << u"openNoCameraSheet"_s;
        sheetTerminate = std::move(end);
    }
    void endNoCameraSheet() override { }
    void hideAuxiliaryWindows() override { calls << u"hideAuxiliaryWindows"_s; }
    void terminate() override { calls << u"terminate"_s; }

    QStringList calls;
    QList<BWCameraPtr> cameras;
    BWCameraPtr listedCurrent;
    std::function<void(const QString &)> productAnswer;
    BWStartProblem problem;
    std::optional<BWResolution> smaller;
    std::function<void(std::optional<BWResolution>)> retry;
    std::function<void()> sheetTerminate;
};

BWSimulatedCameraOptions cameraOf(Type type, bool pluggedIn = true)
{
    BWSimulatedCameraOptions options;
    options.type = type;
    options.pacing = BWSimulatedCameraOptions::Pacing::Manual;
    options.pluggedIn = pluggedIn;
    return options;
}

/// The session on simulated cameras, with a clock moved by hand.
struct Bench {
    explicit Bench(const QList<BWSimulatedCameraOptions> &cameras)
        : config(defaults, [this] {
              const BWCameraPtr camera = session ? session->currentCamera() : nullptr;
              return camera ? camera->identifierForProducts() : QString();
          })
    {
        auto backend = BWSimulatedBackend::create(cameras, clock);
        hands = backend->cameras();
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(std::move(backend));
        session = std::make_unique<BWCameraSession>(
            manager, config, ui, [this](BWCamera &) { ++prepared; }, clock);
        detector = std::make_unique<BWCameraDetector>(BWCameraDetector::supportedDescriptions(), std::move(backends));
        detector->setCameraFoundBlock([this](const BWDetectedCameraPtr &camera) { session->cameraFound(camera); });
        detector->setCameraRemovedBlock([this](const BWDetectedCameraPtr &camera) { session->cameraRemoved(camera); });
        detector->startCamerasDetection();
        session->waitForCamera();
    }

    QString currentType() const
    {
        return session->currentCamera() ? session->currentCamera()->identifierForProducts() : QString();
    }

    QTemporaryDir folder;
    BWSettingsFile defaults{folder.filePath(u"settings.conf"_s)};
    BWManualClock clock;
    RecordingUi ui;
    BWConfigManager config;
    BWCameraManager manager;
    std::unique_ptr<BWCameraSession> session;
    std::unique_ptr<BWCameraDetector> detector;
    QList<std::shared_ptr<BWSimulatedCamera>> hands;
    int prepared = 0;
};

} // namespace

class TestCameraSession : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bringsACameraUpInOrder_data()
    {
        QTest::addColumn<Type>("type");
        QTest::addColumn<QString>("resolutions");
        QTest::addColumn<bool>("grid");
        QTest::newRow("high, with grid") << Type::High << u"showResolutions 3 640x480"_s << true;
        QTest::newRow("ultra, without") << Type::Ultra << u"showResolutions 7 640x480"_s << false;
        QTest::newRow("wireless, by way of the norm") << Type::Wireless << u"showResolutions 2 640x480"_s << true;
    }
    void bringsACameraUpInOrder()
    {
        QFETCH(Type, type);
        QFETCH(QString, resolutions);
        QFETCH(bool, grid);
        Bench bench({cameraOf(type)});
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        const QStringList expected{u"enableCameraMenus"_s,
                                   u"updateStateLabel"_s,
                                   u"setStartedCamera"_s,
                                   resolutions,
                                   grid ? u"enableGrid yes"_s : u"enableGrid no"_s,
                                   u"updateImageDisplay"_s,
                                   u"bringMainWindowToFront"_s,
                                   u"askForProduct"_s};
        QCOMPARE(bench.ui.calls, expected);
        QVERIFY(bench.session->currentCamera()->started());
        QCOMPARE(bench.ui.listedCurrent, bench.session->currentCamera());
        // The time for the state without a camera passes: nothing comes of it.
        bench.clock.advance(std::chrono::seconds(5));
        QCOMPARE(bench.session->state(), State::Streaming);
    }

    void asksForTheProductUntilItIsKnown()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless)});
        QTRY_VERIFY(bench.ui.productAnswer);
        bench.ui.productAnswer(QString()); // ask me later
        QVERIFY(bench.config.currentProductIdentifierForCameraIdentifier(u"wired_high"_s).isNull());
        QCOMPARE(bench.session->currentProduct()->identifier(), u"dx10"_s); // the type's default meanwhile

        const auto switchTo = [&](int index) {
            bench.ui.calls.clear();
            bench.session->changeCurrentCamera(bench.manager.cameras().at(index));
            QCOMPARE(bench.session->state(), State::Switching);
        };
        switchTo(1);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        switchTo(0);
        QTRY_VERIFY(bench.ui.productAnswer && bench.currentType() == u"wired_high"_s);
        bench.ui.productAnswer(u"mx61"_s);
        QCOMPARE(bench.session->currentProduct()->identifier(), u"mx61"_s);
        switchTo(1);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        switchTo(0);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QVERIFY(!bench.ui.calls.contains(u"askForProduct"_s));
        QVERIFY(bench.ui.calls.contains(u"enableGrid no"_s));
    }

    void noCamera()
    {
        Bench bench({cameraOf(Type::High, false)});
        bench.clock.advance(std::chrono::milliseconds(1499));
        QCOMPARE(bench.session->state(), State::Waiting);
        bench.clock.advance(std::chrono::milliseconds(1));
        QCOMPARE(bench.session->state(), State::NoCamera);
        QCOMPARE(bench.ui.calls,
                 QStringList({u"hideAuxiliaryWindows"_s, u"updateStateLabel"_s, u"showNoCameraWindow"_s}));

        bench.hands[0]->plugIn();
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        bench.ui.calls.clear();
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.session->state(), State::Waiting);
        QVERIFY(!bench.session->currentCamera());
        QVERIFY(bench.ui.calls.contains(u"resetUIToInitial"_s));
        bench.clock.advance(std::chrono::milliseconds(1500));
        QCOMPARE(bench.session->state(), State::NoCamera);
        QCOMPARE(bench.ui.calls.last(), u"openNoCameraSheet"_s); // a camera has been there before
        bench.ui.sheetTerminate();
        QCOMPARE(bench.ui.calls.last(), u"terminate"_s);
        bench.hands[0]->plugIn();
        QTRY_COMPARE(bench.session->state(), State::Streaming);
    }

    void severalCameras()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless), cameraOf(Type::Ultra)});
        QTRY_COMPARE(bench.ui.cameras.size(), 3);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.prepared, 3);
        QCOMPARE(bench.currentType(), u"wired_high"_s);
        bench.session->changeCurrentCamera(bench.session->currentCamera());
        QCOMPARE(bench.session->state(), State::Streaming); // the running one again: nothing
        for (const int index : {1, 0}) // there and back in a hurry
            bench.session->changeCurrentCamera(bench.manager.cameras().at(index));
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.currentType(), u"wired_high"_s);

        // A camera that is not current goes away: only the list changes.
        bench.hands[1]->unplug();
        QTRY_COMPARE(bench.ui.cameras.size(), 2);
        QCOMPARE(bench.session->state(), State::Streaming);
        // The current one goes away: the first of the others takes over at once.
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.currentType(), u"wired_ultra"_s);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.ui.cameras.size(), 1);
    }

    void theChosenCameraGoesAwayWhileSwitching()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless)});
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QTRY_COMPARE(bench.manager.cameras().size(), 2);
        bench.session->changeCurrentCamera(bench.manager.cameras().at(1));
        bench.hands[1]->unplug();
        bench.hands[0]->unplug();
        QTRY_VERIFY(!bench.session->currentCamera() && bench.session->state() == State::Waiting);
        bench.hands[0]->plugIn();
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.currentType(), u"wired_high"_s);
    }

    void cameraInUse()
    {
        Bench bench({cameraOf(Type::High)});
        const BWStartProblem held{BWStartProblem::Kind::InUse, u"guvcview"_s};
        bench.hands[0]->setStartProblem(held);
        QTRY_VERIFY(bench.ui.retry);
        QCOMPARE(bench.session->state(), State::Starting);
        QCOMPARE(bench.ui.problem, held);
        QCOMPARE(bench.session->problem(), held); // as the status line tells
        QVERIFY(!bench.ui.smaller); // which would not help
        for (int i = 0; i < 3; ++i) {
            const auto retry = std::exchange(bench.ui.retry, {});
            retry({});
            QTRY_VERIFY(bench.ui.retry);
        }
        bench.hands[0]->setStartProblem({});
        const auto retry = bench.ui.retry;
        retry({});
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        retry({}); // an old answer
        QCOMPARE(bench.session->state(), State::Streaming);
    }

    void tooLittleBandwidth()
    {
        Bench bench({cameraOf(Type::High)});
        bench.hands[0]->setStartProblem({BWStartProblem::Kind::NoBandwidth});
        QTRY_COMPARE(bench.session->state(), State::Streaming); // the smallest size
        bench.session->currentProduct()->setCurrentResolution({1600, 1200});
        bench.hands[0]->unplug();
        QTRY_VERIFY(!bench.session->currentCamera());
        bench.hands[0]->plugIn();
        for (const BWResolution offered : {BWResolution(1280, 1024), BWResolution(640, 480)}) {
            QTRY_VERIFY(bench.ui.retry);
            QCOMPARE(bench.ui.smaller, std::optional(offered));
            std::exchange(bench.ui.retry, {})(offered);
        }
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.session->currentProduct()->currentResolution(), BWResolution(640, 480));
        QVERIFY(bench.session->problem().isNone());

        bench.ui.calls.clear();
        bench.session->changeResolution({1280, 1024});
        QTRY_COMPARE(bench.session->problem().kind, BWStartProblem::Kind::NoBandwidth);
        QCOMPARE(bench.ui.calls.count(u"updateStateLabel"_s), 1);
        QCOMPARE(bench.session->state(), State::Streaming);
        bench.session->changeResolution({640, 480});
        QTRY_VERIFY(bench.session->problem().isNone());
        QCOMPARE(bench.ui.calls.count(u"updateStateLabel"_s), 2);
    }

    void goneBeforeAnybodyTold()
    {
        Bench bench({cameraOf(Type::High, false)});
        const auto starts = [&bench] { return bench.ui.calls.count(u"enableCameraMenus"_s); };
        bench.hands[0]->setStartProblem({BWStartProblem::Kind::Gone});
        bench.hands[0]->plugIn();
        QTRY_COMPARE((bench.clock.advance(std::chrono::seconds(1)), starts()), 2);
        QVERIFY(!bench.ui.retry); // nobody is asked
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.session->state(), State::Waiting);
        bench.hands[0]->plugIn();
        // It is not taken away this time: somebody has to know in the end.
        QTRY_VERIFY((bench.clock.advance(std::chrono::seconds(1)), bench.ui.retry));
        QCOMPARE(starts(), 6);
    }

    void unpluggedWhileTheAlertIsShown()
    {
        Bench bench({cameraOf(Type::High)});
        bench.hands[0]->setInUse(true);
        QTRY_VERIFY(bench.ui.retry);
        const auto retry = bench.ui.retry;
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.session->state(), State::Waiting);
        QVERIFY(!bench.ui.retry);
        retry({});
        QCOMPARE(bench.session->state(), State::Waiting);
    }

    void resolutionAndQuit()
    {
        Bench bench({cameraOf(Type::High)});
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        bench.ui.calls.clear();
        bench.session->changeResolution({1600, 1200});
        QTRY_COMPARE_WITH_TIMEOUT(bench.ui.calls, QStringList{u"updateImageDisplay"_s}, 20000); // slow under sanitizers
        QCOMPARE(bench.session->currentCamera()->defaultResolution(), BWResolution(1600, 1200));

        int quit = 0;
        bench.session->stopForQuit([&] { ++quit; });
        QCOMPARE(quit, 0); // waits for the camera
        QTRY_COMPARE(quit, 1);
        QVERIFY(!bench.session->currentCamera()->started());
        bench.hands[0]->unplug();
        bench.hands[0]->plugIn();
        QTest::qWait(1); // whatever was posted is taken up
        QCOMPARE(bench.session->state(), State::Quitting);
    }
};

QTEST_GUILESS_MAIN(TestCameraSession)
#include "test_camera_session.moc"
