// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWGridController.h"
#include "App/LiveView/BWLiveViewController.h"
#include "AttachedCameras.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Technician/BWGridDebuggerWindowController.h"
#include "WidgetSearch.h"

#include <QAction>
#include <QMenu>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr auto type = "wired_high";

/// The grid of a window whose camera is a DX10, at first at 640x480.
struct Bench {
    Bench()
    {
        window.localizeWithManager(texts);
        product.setCamera(camera);
        config.setCurrentProductIdentifier(u"dx10"_s, QLatin1String(type));
        setResolution({640, 480});
        grid.followProduct();
        QObject::connect(&grid, &BWGridController::gridChanged, &grid, [this] { ++labelUpdates; });
    }

    void setResolution(BWResolution resolution)
    {
        std::atomic<bool> done = false;
        camera->setResolution(resolution, [&] { done = true; });
        QTRY_VERIFY(done);
        liveView.updateImageDisplay();
    }
    double shown() const { return window.centeringClipView().gridDistance(); }
    QAbstractButton *button() const { return buttonNamed(window.controlBar(), u"Grid"_s); }

    QTemporaryDir folder;
    BWSettingsFile defaults{folder.filePath(u"settings.conf"_s)};
    const AttachedCameras cameras{{AttachedCameras::Type::High}};
    const BWCameraPtr camera = cameras[0];
    BWConfigManager config{defaults};
    BWProductInUse product{config};
    BWLocalizationManager texts{QString(), {u"en"_s}};
    BWLiveRenderer renderer;
    BWMainWindow window{renderer};
    BWLiveViewController liveView{window, renderer, product};
    int labelUpdates = 0;
    BWGridController grid{window, liveView, product, texts};
    BWGridDebuggerWindowController &debugger = *window.findChild<BWGridDebuggerWindowController *>();
    QSlider &slider = *debugger.findChild<QSlider *>();
};

} // namespace

class TestBWGridController : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void buttonAndMenuToggleTheGrid()
    {
        Bench bench;
        QVERIFY(!bench.button()->isHidden());
        QVERIFY(!bench.grid.useGrid()); // being there does not turn it on
        QCOMPARE(bench.shown(), 0.0);
        const int before = bench.labelUpdates;

        bench.window.menu().grid->setEnabled(true); // as it is while a camera streams
        bench.button()->click();
        QVERIFY(bench.grid.useGrid() && bench.window.menu().grid->isChecked() && bench.button()->isChecked());
        QCOMPARE(bench.labelUpdates, before + 1);
        QCOMPARE(bench.shown(), 355.0);
        bench.liveView.zoomIn();
        QCOMPARE(bench.shown(), 355.0); // points are not zoomed
        bench.setResolution({1280, 1024});
        QCOMPARE(bench.shown(), 710.0);
        bench.grid.followProduct(); // a change of the settings
        QVERIFY(bench.grid.useGrid());

        bench.window.menu().grid->trigger();
        QVERIFY(!bench.grid.useGrid() && !bench.window.menu().grid->isChecked() && !bench.button()->isChecked());
        QCOMPARE(bench.shown(), 0.0);
    }

    void otherProductRemovesTheGrid()
    {
        Bench bench;
        bench.grid.onGrid();
        bench.grid.showGridDebugger();
        QVERIFY(bench.debugger.isVisibleTo(&bench.window));
        const int before = bench.labelUpdates;
        bench.config.setCurrentProductIdentifier(u"mx61"_s, QLatin1String(type));
        bench.grid.followProduct();
        bench.liveView.updateImageDisplay();
        QVERIFY(bench.button()->isHidden() && !bench.window.menu().grid->isVisible());
        QVERIFY(bench.debugger.isHidden());
        QCOMPARE(bench.labelUpdates, before + 1);
        QCOMPARE(bench.shown(), 0.0);
        bench.config.setCurrentProductIdentifier(u"dx10"_s, QLatin1String(type));
        bench.grid.followProduct(); // it has to be turned on again
        QVERIFY(!bench.grid.useGrid() && !bench.button()->isChecked());
    }

    void debuggerTunesTheGrid()
    {
        Bench bench;
        bench.grid.onGrid();
        bench.grid.showGridDebugger();
        QVERIFY(hasLabel(bench.debugger, u"Digital Dermatoscope DX10"_s) && hasLabel(bench.debugger, u"640x480"_s));
        QVERIFY(hasLabel(bench.debugger, u"355.0"_s));
        bench.slider.setValue(bench.slider.value() + 1); // one press of an arrow key
        QVERIFY(hasLabel(bench.debugger, u"355.1"_s));
        QCOMPARE(bench.shown(), 355.1);
        QCOMPARE(bench.grid.gridDistance(), 355.1);

        bench.setResolution({1280, 1024});
        bench.grid.reloadGridDebugger();
        QVERIFY(hasLabel(bench.debugger, u"1280x1024"_s) && hasLabel(bench.debugger, u"710.0"_s));
        bench.setResolution({640, 480});
        bench.grid.reloadGridDebugger();
        QVERIFY(hasLabel(bench.debugger, u"355.1"_s)); // remembered
        QCOMPARE(bench.shown(), 355.1); // and a reload changes nothing

        bench.grid.onGrid();
        QVERIFY(bench.debugger.isHidden());
        QCOMPARE(bench.shown(), 0.0);
        bench.grid.updateGridForCurrentProduct(100); // is shown even so
        QCOMPARE(bench.shown(), 100.0);
    }

    void toolsMenuIsHiddenFromUsers()
    {
        Bench bench;
        bench.window.show();
        QVERIFY(QTest::qWaitForWindowActive(&bench.window));
        const auto *tools = qobject_cast<QMenu *>(bench.window.menu().gridDebugger->parent());
        QVERIFY(!tools->menuAction()->isVisible());
        QTest::keyClick(&bench.window, Qt::Key_T, Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier);
        QVERIFY(tools->menuAction()->isVisible());
    }
};

QTEST_MAIN(TestBWGridController)
#include "tst_BWGridController.moc"
