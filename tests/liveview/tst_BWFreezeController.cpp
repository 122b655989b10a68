// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWFreezeController.h"
#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWSceneController.h"
#include "AttachedCameras.h"
#include "BWManualClock.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "TestJpeg.h"
#include "Views/MainWindow/BWFrozenMark.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"

#include <QAction>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Main = BWSceneController::Main;

/// Freezing in whatever order things happen.
class TestBWFreezeController : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void orders_data()
    {
        // Frames: g(ood), or t(orn) where it is not seen. f: the button; w: wait until a frame is frozen; s: snapshot;
        // l: another camera is chosen; a: a picture of an album; p: patience is over.
        const Rows<QByteArray, Main, int, int> row; // number of the frame in a snapshot; how often the picture changes
        row("frame on the screen", "gfw", Main::Frozen, 1, 1);
        row("before the first frame", "fgw", Main::Frozen, 1, 1);
        row("torn frame", "gtfgw", Main::Frozen, 3, 1);
        row("only torn frames", "gtfp", Main::Live, 0, 0);
        row("live, and a new frame", "gfwfgfw", Main::Frozen, 2, 3);
        row("pressed twice", "gffgfw", Main::Frozen, 2, 1);
        row("pressed three times", "gfffw", Main::Frozen, 1, 1);
        row("other camera", "gfwl", Main::Live, 0, 2);
        row("other camera meanwhile", "gflgfw", Main::Frozen, 2, 1);
        row("album", "gfwa", Main::Album, 0, 2);
        row("album meanwhile, and frozen from there", "gfafgw", Main::Frozen, 2, 3);
        row("snapshot before it is checked", "gfsw", Main::Frozen, 1, 1);
    }
    void orders()
    {
        const auto [steps, main, number, changes] = Rows<QByteArray, Main, int, int>::current();
        const QTemporaryDir folder;
        BWSettingsFile defaults(folder.filePath(u"settings.conf"_s));
        BWConfigManager config(defaults);
        BWProductInUse product(config);
        const AttachedCameras cameras({AttachedCameras::Type::High});
        product.setCamera(cameras[0]);
        BWAlbumManager albums(defaults, folder.path());
        albums.prepare();
        BWLiveRenderer live;
        BWMainWindow window(live);
        window.show();
        BWLiveViewController view(window, live, product);
        for (int i = 0; i < 10; ++i)
            view.zoomIn();
        BWSceneController scene(window, view, live);
        QList<QUrl> files;
        BWCaptureController capture(albums,
                                    {[] {}, [](bool) {}, [&](const BWCaptureResult &result) { files << result.file; }});
        BWManualClock clock;
        BWFreezeController freeze(window, scene, live, capture, clock);
        const QSignalSpy failed(&freeze, &BWFreezeController::failed);

        const QSignalSpy changed(&scene, &BWSceneController::mainChanged);
        QList<QByteArray> frames;
        for (const char step : steps) {
            if (step == 'g' || step == 't') {
                frames << TestJpeg::encode(TestJpeg::noise({640, 480}, unsigned(frames.size())));
                if (step == 't')
                    frames.last().replace(frames.last().size() - 2000, 40, QByteArray("\xff\xd5").repeated(20));
                const std::chrono::seconds time(frames.size());
                live.prepareBuffer(TestJpeg::frame(frames.last(), {640, 480}, time));
                QTRY_VERIFY(scene.main() != Main::Live || live.currentFrame().timestamp().time_since_epoch() == time);
            } else if (step == 'f') {
                freeze.toggle();
            } else if (step == 'w') {
                QTRY_COMPARE(scene.main(), Main::Frozen);
            } else if (step == 's') {
                capture.forceSnapshot(nullptr);
            } else if (step == 'l') {
                freeze.goLive();
            } else if (step == 'a') {
                scene.showAlbumPicture(QImage(64, 48, QImage::Format_RGB32));
            } else {
                clock.advance(2s);
            }
        }
        QCOMPARE(scene.main(), main);
        QCOMPARE(changed.size(), changes);
        QCOMPARE(failed.size(), steps.count('p'));
        QCOMPARE(window.menu().freeze->isChecked(), main == Main::Frozen);
        QCOMPARE(window.findChild<BWFrozenMark *>()->isVisible(), main == Main::Frozen);
        if (!steps.contains('s'))
            capture.forceSnapshot(nullptr);
        bool written = false;
        capture.whenStillsAreWritten([&] { albums.whenAdded([&] { written = true; }); });
        QTRY_VERIFY(written);
        QCOMPARE(files.size(), number > 0 ? 1 : 0);
        if (number > 0)
            QCOMPARE(QImage(files[0].toLocalFile()), QImage::fromData(frames[number - 1]));
    }
};

QTEST_MAIN(TestBWFreezeController)
#include "tst_BWFreezeController.moc"
