#include "App/Start/BWAppTexts.h"
#include "AppDelegate.h"
#include "BWManualClock.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Capture/BWCaptureNotice.h"
#include "Model/Import/BWImportTexts.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "Model/Session/BWStartProblemText.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "TestFolder.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"
#include "Views/BWNoCameraProductSheetWindowController.h"
#include "Views/BWNoCameraWindowController.h"
#include "Views/BWStartProblemAlert.h"
#include "Views/Help/BWAboutWindowController.h"
#include "Views/Help/BWSimpleHelpWindowController.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWFrozenMark.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWPictureCaption.h"
#include "Views/MainWindow/BWStatisticsPanel.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Measuring/BWCalibrationDialog.h"
#include "Views/Measuring/BWCalibrationsDialog.h"
#include "Views/Measuring/BWMeasurementResultsPanel.h"
#include "Views/Settings/BWAdvancedSettingsWindowController.h"
#include "Views/Settings/BWSettingsWindowController.h"
#include "Views/Settings/BWSettingViewController.h"
#include "Views/Technician/BWEMPIADebuggerWindowController.h"
#include "Views/Technician/BWGridDebuggerWindowController.h"
#include "Views/Technician/BWSimulatedCamerasWindowController.h"
#include "Views/Utils/BWFilePanels.h"
#include "Views/Utils/BWFlashActionViewController.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"
#include "Views/Utils/BWPreparingView.h"
#include "WindowFit.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Type = BWSimulatedCameraOptions::Type;

namespace {

constexpr int patience = 30000; // milliseconds; the computer may be busy

/// How the desktop may look.
struct Look {
    QString name;
    bool dark = false;
    int scale = 1;
    int pointSize = 10;
    QString style = u"Fusion"_s;
};

const QList<Look> looks{{u"light"_s},           {u"dark"_s, true},          {u"light-2"_s, false, 2},
                        {u"dark-2"_s, true, 2}, {u"large"_s, false, 1, 13}, {u"adwaita"_s, false, 1, 10, u"Adwaita"_s}};

enum class Alert { Warning, Information, Question };

QString language;
Look look;

void dressUp()
{
    if (!QStyleFactory::keys().contains(look.style, Qt::CaseInsensitive))
        qFatal("the style %s is missing; install the test packages of tools/packages.txt", qPrintable(look.style));
    QApplication::setStyle(look.style);
    QApplication::setFont(QFont(u"DejaVu Sans"_s, look.pointSize));
    QPalette palette(QColor(look.dark ? 0x31363b : 0xeff0f1), QColor(look.dark ? 0x2a2e32 : 0xeff0f1));
    palette.setColor(QPalette::Base, look.dark ? QColor(0x1b1e20) : Qt::white);
    palette.setColor(QPalette::Highlight, 0x3daee9);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    QApplication::setPalette(palette);
}

template <typename Window>
Window *visible()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *widget : windows) {
        if (auto *window = qobject_cast<Window *>(widget); window && window->isVisible())
            return window;
    }
    return nullptr;
}

} // namespace

/// Walks through all windows of the real program on simulated cameras, in one language and one look, in the order in
/// which a user could meet them. Every window has to fit, and is drawn into a picture.
class TestBWTour : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QList<BWSimulatedCameraOptions> cameras;
        for (const Type type : {Type::High, Type::Ultra, Type::Regular, Type::Wireless, Type::DX20, Type::High})
            cameras << BWSimulatedCameraOptions{.type = type,
                                                .pacing = BWSimulatedCameraOptions::Pacing::Manual,
                                                .pendingSeconds = 1,
                                                .pluggedIn = false};
        auto backend = BWSimulatedBackend::create(cameras, m_clock);
        m_cameras = backend->cameras();
        AppDelegate::Options options;
        options.simulatedCameras = m_cameras.mid(0, 2);
        options.backends.push_back(std::move(backend));
        options.authorization = std::make_unique<BWNoAuthorizationNeeded>();
        options.openUrl = [](const QUrl &) { return false; };
        options.quit = [this] { m_quit = true; };
        options.technician = true;
        options.clock = &m_clock;
        m_delegate = std::make_unique<AppDelegate>(std::move(options));
        m_alerts = std::make_unique<BWMessageBoxAlertPresenter>(BWRepository::singleton().localizationManager(),
                                                                [this] { return m_delegate->cameraWindow(); });
        BWUIUtils::setAlertPresenter(m_alerts.get());
        m_delegate->applicationDidFinishLaunching();
        QTRY_VERIFY_WITH_TIMEOUT((m_window = m_delegate->cameraWindow()) && m_window->isVisible(), patience);
        m_clock.advance(300ms); // without a picture, the launch is complete by then
    }
    void cleanupTestCase()
    {
        m_delegate->applicationShouldTerminate();
        QTRY_VERIFY_WITH_TIMEOUT(m_quit, patience);
        m_delegate.reset();
        BWUIUtils::setAlertPresenter(nullptr);
    }

    void noCamera()
    {
        see(visible<BWSimulatedCamerasWindowController>(), u"simulated-cameras"_s);
        see(m_window, u"main-waiting"_s);
        const BWMainMenu &menu = m_window->menu();
        QVERIFY(menu.settingsMenuItem->isEnabled() && !menu.advancedSettingsMenuItem->isEnabled());
        m_clock.advance(2s);
        auto *window = visible<BWNoCameraWindowController>();
        see(window, u"no-camera"_s);
        const auto *preparing = window->findChild<BWBusyIndicator *>();
        m_cameras[0]->plugIn();
        QTRY_VERIFY_WITH_TIMEOUT(preparing->isAnimating(), patience); // as soon as the backend reports it
        see(window, u"no-camera-preparing"_s);
        m_cameras[0]->unplug();
        QTRY_VERIFY_WITH_TIMEOUT(!preparing->isAnimating(), patience);
        window->setObstacle(obstacle());
        see(window, u"no-camera-blocked"_s);
    }

    void startProblems_data()
    {
        using Kind = BWStartProblem::Kind;
        const Rows<BWStartProblem, bool> row;
        row("in-use", {Kind::InUse}, false);
        row("in-use-by", {Kind::InUse, u"guvcview"_s}, false);
        row("no-bandwidth", {Kind::NoBandwidth}, false);
        row("no-permission", {Kind::NoPermission}, false);
        row("failed", {Kind::Failed}, false);
        row("in-use-other", {Kind::InUse}, true);
    }
    void startProblems()
    {
        const auto [problem, hasOther] = Rows<BWStartProblem, bool>::current();
        BWCameraSession::StartQuestion question{problem, {}, {}};
        if (problem.kind == BWStartProblem::Kind::NoBandwidth)
            question.smaller = BWResolution(640, 480);
        BWLocalizationManager &texts = BWRepository::singleton().localizationManager();
        const QString other =
            texts.text(u"camera_type"_s, u"ultra_resolution_microscope"_s, u"Ultra Resolution Microscope"_s);
        auto *alert = new BWStartProblemAlert(question, hasOther ? other + u" (2)"_s : QString(), texts, m_window);
        alert->open();
        see(alert, name(u"problem"_s));
        alert->close();
    }

    void products_data()
    {
        QTest::addColumn<int>("camera");
        for (const int i : {1, 2, 3, 4, 0})
            QTest::addRow("%d", i) << i;
    }
    void products()
    {
        QFETCH(int, camera);
        plugIn(camera);
        QTRY_VERIFY_WITH_TIMEOUT(visible<BWNoCameraProductSheetWindowController>(), patience);
        auto *sheet = visible<BWNoCameraProductSheetWindowController>();
        see(sheet, name(u"product"_s));
        if (camera == 0) {
            sheet->onOK();
        } else {
            m_cameras[camera]->unplug();
            QTRY_VERIFY_WITH_TIMEOUT(!m_delegate->currentCamera(), patience);
        }
    }

    void mainWindow()
    {
        showFrames();
        see(m_window, u"main"_s);
        const QSize usual = m_window->size();
        m_window->resize(m_window->minimumSizeHint());
        see(m_window, u"main-narrowest"_s);
        m_window->resize(usual);
        m_window->menu().grid->trigger();
        showFrames();
        see(m_window, u"main-grid"_s);
        m_window->menu().statistics->trigger();
        QTRY_VERIFY(m_window->findChild<BWStatisticsPanel *>()->isVisible()); // by way of the settings
        m_window->menu().freeze->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(m_window->findChild<BWFrozenMark *>()->isVisible(), patience);
        see(m_window, u"main-statistics-frozen"_s);
        m_window->menu().freeze->trigger();
        showFrames();
        m_window->resize(m_window->minimumSizeHint());
        see(m_window, u"main-statistics-narrowest"_s);
        m_window->menu().statistics->trigger();
        m_window->resize(usual);
        const auto menus = m_window->menuBar()->actions();
        int number = 0;
        for (const QAction *action : menus)
            seeMenu(action->menu(), u"menu-%1"_s.arg(++number));
        seeMeasuring();
        m_window->menu().gridDebugger->trigger();
        see(visible<BWGridDebuggerWindowController>(), u"grid-debugger"_s);
        m_window->menu().grid->trigger();
        seePanel(m_window->menu().registerDebugger, u"register-debugger-unread"_s,
                 &BWEMPIADebuggerWindowController::onReadRegisters, u"register-debugger"_s);
    }

    void productInUse()
    {
        const auto actions = m_window->findChildren<QAction *>();
        QVERIFY(std::any_of(actions.begin(), actions.end(), [](const QAction *action) {
            return action->isChecked() && action->data() == QVariant(u"dx10"_s);
        }));
        const auto menus = m_window->controlBar().findChildren<QComboBox *>();
        auto *sizes =
            *std::find_if(menus.begin(), menus.end(), [](auto *menu) { return menu->findText(u"640x480"_s) >= 0; });
        const auto size = [&] { // of the camera, and what the bar shows
            return m_delegate->currentCamera()->defaultResolution().resolutionString() + u' ' + sizes->currentText();
        };
        sizes->setCurrentText(u"1600x1200"_s);
        Q_EMIT sizes->textActivated(sizes->currentText());
        QTRY_COMPARE_WITH_TIMEOUT(size(), u"1600x1200 1600x1200"_s, patience);
        QAction *const panel = m_window->menu().advancedSettingsMenuItem;
        panel->trigger(); // shown, and with the next one hidden
        auto *advanced = visible<BWAdvancedSettingsWindowController>();
        QVERIFY(advanced->controllerForSetting(BWSettingContrast)->setting()); // it is made after the camera's start
        advanced->onRestoreDefaults(); // the size with the values
        panel->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(size(), u"640x480 640x480"_s, patience);
    }

    void captures()
    {
        m_window->menu().albumManagerMenuItem->trigger();
        auto *notice = visible<BWAlbumManagerWindowController>()->findChild<BWThumbnailNotice *>();
        QTRY_VERIFY_WITH_TIMEOUT(!notice->text().isEmpty(), patience);
        see(visible<BWAlbumManagerWindowController>(), u"albums-empty"_s);
        auto *flash = m_window->findChild<BWFlashActionViewController *>();
        for (int i = 0; i < 5; ++i) {
            m_window->menu().snapshot->trigger();
            QTRY_VERIFY_WITH_TIMEOUT((showFrames(), flash->isVisible()), patience);
            m_clock.advance(500ms);
            if (i == 0)
                see(m_window, u"main-snapshot-saved"_s);
            m_clock.advance(5s);
            QTRY_VERIFY_WITH_TIMEOUT(!flash->isVisible(), patience);
        }
        QAction *record = m_window->menu().record;
        const QString recordText = record->text();
        record->trigger();
        for (int i = 0; i < 30; ++i)
            showFrames();
        m_clock.advance(1500ms);
        QTRY_VERIFY_WITH_TIMEOUT((showFrames(), flash->isVisible() && !flash->details().isEmpty()), patience);
        see(m_window, u"main-recording"_s);
        seeMenu(m_window->menuBar()->actions()[1]->menu(), u"menu-recording"_s);
        QVERIFY(record->text() != recordText);
        record->trigger();
        QTRY_VERIFY_WITH_TIMEOUT((showFrames(), !flash->isVisible()), patience);
        QCOMPARE(record->text(), recordText);
        see(m_window, u"main-video-saved"_s);
    }

    void pictures()
    {
        const BWMainMenu &menu = m_window->menu();
        const QSize usual = m_window->size();
        menu.fitToWindow->trigger();
        showFrames();
        see(m_window, u"main-fit"_s);
        QTRY_VERIFY_WITH_TIMEOUT(menu.lastCapture->isEnabled(), patience);
        menu.lastCapture->trigger();
        auto *caption = m_window->findChild<BWPictureCaption *>();
        QTRY_VERIFY_WITH_TIMEOUT(caption->isVisible(), patience);
        see(m_window, u"main-look-back"_s);
        menu.compare->trigger(); // the live image comes back beside it
        auto *strip = m_window->findChild<BWComparisonStrip *>();
        for (const auto &[mode, name] :
             {std::pair(menu.compareSideBySide, u"side-by-side"_s), std::pair(menu.compareOverlay, u"overlay"_s),
              std::pair(menu.compareDivider, u"divider"_s)}) {
            QTRY_VERIFY_WITH_TIMEOUT((showFrames(), strip->isVisible() && mode->isEnabled()), patience);
            mode->trigger();
            showFrames();
            see(m_window, u"main-compare-"_s + name);
        }
        menu.linkPictures->trigger();
        m_window->resize(m_window->minimumSizeHint());
        see(m_window, u"main-compare-narrowest"_s);
        m_window->resize(usual);
        menu.endComparison->trigger();
        QTRY_VERIFY(!strip->isVisible());
        menu.fullScreen->trigger();
        QTRY_VERIFY(m_window->isFullScreen());
        showFrames();
        see(m_window, u"main-full-screen"_s);
        menu.fullScreen->trigger();
        QTRY_VERIFY(!m_window->isFullScreen());
        menu.actualSize->trigger();
        m_window->resize(usual);
    }

    void albums()
    {
        auto *window = visible<BWAlbumManagerWindowController>();
        auto *tabs = window->findChild<QTabWidget *>();
        auto *grid = qobject_cast<BWThumbnailTableView *>(tabs->currentWidget());
        waitForThumbnails(*grid, 5);
        see(window, u"albums"_s);
        seeMenu(grid->rightMenu(), u"albums-menu"_s);
        grid->onSelectAll();
        see(window, u"albums-selected"_s);
        tabs->setCurrentIndex(1);
        waitForThumbnails(*qobject_cast<BWThumbnailTableView *>(tabs->currentWidget()), 1);
        see(window, u"albums-videos"_s);
        tabs->setCurrentIndex(0);

        BWAlbumTexts texts;
        texts.localizeWithManager(BWRepository::singleton().localizationManager());
        auto *footer = window->findChild<BWAlbumFooter *>();
        auto *notice = window->findChild<BWAlbumNotice *>();
        const QString file = grid->elements().first().fileName();
        footer->showProgress(texts.savingProgress.arg(file), 0.4);
        see(window, u"albums-saving"_s);
        footer->endProgress();
        notice->showNotice(texts.saved.arg(file), false);
        see(window, u"albums-saved"_s);
        notice->showNotice(texts.movedToTrash.arg(file), true);
        see(window, u"albums-undo"_s);
        notice->showNotice(texts.stayedOutOfTrash.arg(file), false);
        see(window, u"albums-not-moved"_s);
        notice->showNotice(texts.notBroughtBack.arg(file), false);
        see(window, u"albums-not-back"_s);
        notice->endNotice();

        window->onAddAlbum();
        auto *panel = visible<QFileDialog>();
        see(panel, u"albums-add"_s);
        panel->close();
        const QString folder = BWRepository::singleton().albumManager().currentAlbum()->path().toLocalFile();
        QVERIFY(QDir().rename(folder, folder + u"-moved"_s));
        QTRY_COMPARE_WITH_TIMEOUT(window->findChild<BWThumbnailNotice *>()->text(), texts.unavailable, patience);
        see(window, u"albums-unavailable"_s);
        grid->setEmptyNotice(u"network-server"_s, texts.notAnswering);
        see(window, u"albums-waiting"_s);
        window->close();
    }

    void settings()
    {
        for (int i = 1; i < 6; ++i)
            plugIn(i);
        const BWMainMenu &menu = m_window->menu();
        const auto cameras = [&] { return m_window->findChild<QActionGroup *>()->actions().size(); };
        QTRY_COMPARE_WITH_TIMEOUT(cameras(), 6, patience);
        menu.settingsMenuItem->trigger(); // it is made now
        const auto *window = visible<BWSettingsWindowController>();
        QCOMPARE(window->findChild<QComboBox *>()->count(), 6);
        menu.settingsMenuItem->trigger();
        seePanel<BWSettingsWindowController>(menu.settingsMenuItem, u"settings"_s);
        const auto buttons = window->findChildren<QPushButton *>();
        for (const QPushButton *button : buttons)
            QVERIFY2(!QKeySequence::mnemonic(button->text()).isEmpty(), qPrintable(button->text()));
        const auto labels = window->findChildren<QLabel *>();
        for (const QLabel *label : labels)
            QVERIFY2(!QKeySequence::mnemonic(label->text()).isEmpty(), qPrintable(label->text()));
        seePanel(menu.advancedSettingsMenuItem, u"advanced-settings"_s,
                 &BWAdvancedSettingsWindowController::onSaveAsDefault, u"advanced-settings-saved"_s);
        seePanel<BWAboutWindowController>(menu.aboutMenuItem, u"about"_s);
        seePanel(menu.simpleHelpMenuItem, u"help"_s, &BWSimpleHelpWindowController::onWriteToSupport,
                 u"help-no-program"_s);
    }

    void alerts_data()
    {
        const Rows<QString, QString, Alert> row;
        const auto add = [&row](const char *name, const QString &title, const QString &message,
                                Alert kind = Alert::Warning) { row(name, title, message, kind); };
        BWLocalizationManager &manager = BWRepository::singleton().localizationManager();
        BWAppTexts app;
        app.localizeWithManager(manager);
        add("access-denied", app.cameraAccessDeniedTitle, app.cameraAccessDeniedMessage);
        add("no-albums", app.errorInitializingAlbumsTitle,
            app.errorInitializingAlbumsMessage + u" /home/user/BrimwellPro, /home/user/BrimwellPro/Default Album"_s);
        add("quit-while-saving", app.quitWhileSavingTitle, app.quitWhileSavingMessage, Alert::Question);

        BWAlbumTexts albums;
        albums.localizeWithManager(manager);
        add("not-saved", albums.errorSavingTitle,
            albums.errorSaving.value(BWExportResult::Problem::TargetFull)
                + u"\n\n/home/user/Desktop/microscope.zip\n\n"_s
                + albums.leftArchive.arg(u"/home/user/Desktop/microscope.zip.part"_s));
        add("not-opened", albums.errorOpening.single.title,
            albums.errorOpening.single.message.arg(u"20240607_image_001.jpg"_s));
        add("delete-album", albums.deleteAlbum.title, albums.deleteAlbum.message, Alert::Question);
        add("open-many", albums.openMany.title.arg(21), albums.openMany.message, Alert::Question);
        add("trash-videos", albums.trashVideos.multiple.title, albums.trashVideos.multiple.message, Alert::Question);

        const BWOldSettingsImporter::Result import{
            .cameras = 4, .products = 19, .albums = 3, .unknownCameras = 1, .missingFolders = 12};
        add("imported", manager.text(u"import"_s, u"title"_s, u"Old settings imported"_s),
            BWImportTexts::takenOver(import, u"microscope.plist"_s, manager), Alert::Information);
        add("not-imported", manager.text(u"import"_s, u"refused_title"_s, u"Old settings could not be imported"_s),
            BWImportTexts::refused({BWOldSettingsFile::Problem::Damaged, {}, {}}, u"microscope.plist"_s, manager));

        using End = BWRecordingStatus::End;
        const QUrl movie(u"file:///home/user/BrimwellPro/Default%20Album/2024-05-17_video_001.mov"_s);
        const auto capture = [&](const char *name, const BWCaptureNotice &notice, Alert kind = Alert::Warning) {
            add(name, notice.title, notice.text, kind);
        };
        const auto video = [&](const QUrl &file, const QUrl &left, End end) {
            return BWCaptureNotice::of({BWMediaType::Video, file, left, {.end = end, .framesLeftOut = 12}}, manager);
        };
        capture("recovered", BWCaptureNotice::ofRecovered(movie, manager), Alert::Information);
        capture("disk-full", video(movie, {}, End::DiskFull));
        capture("kept-elsewhere", video({}, QUrl(u"file:///var/tmp/brimwellpro-0f3c.mov"_s), End::CameraGone));
        capture("lost", BWCaptureNotice::of({}, manager));
    }
    void alerts()
    {
        const auto [title, message, kind] = Rows<QString, QString, Alert>::current();
        QTimer::singleShot(0, this, [this] {
            auto *alert = visible<QMessageBox>();
            see(alert, name(u"alert"_s));
            alert->reject();
        });
        if (kind == Alert::Question)
            m_alerts->presentOKCancel(title, message);
        else if (kind == Alert::Information)
            m_alerts->presentInformation(title, message);
        else
            m_alerts->presentOK(title, message);
    }

    void statusLines()
    {
        BWLocalizationManager &manager = BWRepository::singleton().localizationManager();
        for (const auto kind : {BWStartProblem::Kind::NoBandwidth, BWStartProblem::Kind::Failed}) {
            m_window->currentCameraLabel().announce(BWStartProblemText::status({kind}, manager));
            see(m_window, u"main-status-%1"_s.arg(static_cast<int>(kind)));
        }
        BWAppTexts app;
        app.localizeWithManager(manager);
        for (const auto &[text, name] :
             {std::pair(app.settingsNotStored, u"not-stored"_s), std::pair(app.fullScreenHint, u"full-screen"_s),
              std::pair(app.frozen.arg(u"Ctrl+F"_s), u"frozen"_s), std::pair(app.comparing, u"comparing"_s)}) {
            m_window->currentCameraLabel().announce(text);
            see(m_window, u"main-status-"_s + name);
        }
    }

    void unplugged()
    {
        for (const auto &camera : m_cameras)
            camera->unplug();
        QTRY_VERIFY_WITH_TIMEOUT((m_clock.advance(2s), visible<BWNoCameraSheetWindowController>()), patience);
        auto *sheet = visible<BWNoCameraSheetWindowController>();
        see(sheet, u"unplugged"_s);
        see(m_window, u"main-unplugged"_s);
        m_cameras[0]->plugIn();
        m_clock.advance(500ms);
        see(sheet, u"unplugged-preparing"_s);
        sheet->setObstacle(obstacle());
        see(sheet, u"unplugged-blocked"_s);
    }

private:
    void seeMeasuring()
    {
        const BWMeasuringMenu &menu = *m_window->menu().measuring;
        const QSize usual = m_window->size();
        menu.showTools->trigger();
        menu.scaleBar->trigger();
        showFrames();
        auto *layer = m_window->findChild<QWidget *>(u"measuring"_s);
        for (QAction *tool : menu.tools()) {
            tool->trigger();
            const int row = static_cast<int>(menu.tools().indexOf(tool));
            for (const QPoint at : {QPoint(330, 60), QPoint(430, 90), QPoint(370, 130)})
                QTest::mouseClick(layer, Qt::LeftButton, {}, at + QPoint(row % 3 * 130, row / 3 * 100));
            QTest::keyClick(layer, Qt::Key_Return);
        }
        see(m_window, u"main-measuring"_s);
        m_window->resize(m_window->minimumSizeHint());
        see(m_window, u"main-measuring-narrowest"_s);
        m_window->resize(usual);
        menu.results->trigger();
        see(visible<BWMeasurementResultsPanel>(), u"results"_s);
        menu.results->trigger();
        menu.calibrate->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(visible<BWCalibrationDialog>(), patience);
        see(visible<BWCalibrationDialog>(), u"calibration"_s);
        visible<BWCalibrationDialog>()->reject();
        menu.calibrations->trigger();
        see(visible<BWCalibrationsDialog>(), u"calibrations"_s);
        visible<BWCalibrationsDialog>()->reject();
        while (menu.undo->isEnabled())
            menu.undo->trigger();
        menu.scaleBar->trigger();
        menu.showTools->trigger();
    }

    /// Checks a window, and paints it; into WINDOW-LANGUAGE-LOOK.png if BW_TOUR_OUTPUT names a folder.
    void see(QWidget *window, const QString &name)
    {
        QVERIFY2(window, qPrintable(name));
        for (int i = 0; i < 5; ++i) // layouts within layouts
            QCoreApplication::processEvents();
        const QStringList faults = WindowFit::faults(*window);
        for (const QString &fault : faults)
            QTest::qFail(qPrintable(u"%1: %2"_s.arg(name, fault)), __FILE__, __LINE__);
        const QPixmap picture = window->grab();
        const QString folder = qEnvironmentVariable("BW_TOUR_OUTPUT");
        if (folder.isEmpty())
            return;
        const QString file = u"%1/%2-%3-%4.png"_s.arg(folder, name, language, look.name);
        QVERIFY2(QDir().mkpath(folder) && picture.save(file, "PNG", 80), qPrintable(file));
    }

    /// Opened by its menu item, and once more after something has been done in it.
    template <typename Window>
    void seePanel(QAction *item, const QString &name, void (Window::*act)() = nullptr, const QString &after = {})
    {
        item->trigger();
        auto *window = visible<Window>();
        see(window, name);
        if (act) {
            (window->*act)();
            see(window, after);
        }
        window->close();
    }

    void seeMenu(QMenu *menu, const QString &name)
    {
        menu->popup(m_window->mapToGlobal(QPoint(0, 20)));
        see(menu, name);
        menu->close();
    }

    static QString name(const QString &kind) { return u"%1-%2"_s.arg(kind, QLatin1String(QTest::currentDataTag())); }

    /// What keeps cameras from appearing, at its longest.
    static QString obstacle()
    {
        using Kind = BWStartProblem::Kind;
        return BWStartProblemText::obstacle({{u"USB Microscope"_s, {Kind::InUse}}, {u"Webcam"_s, {Kind::NoPermission}}},
                                            BWRepository::singleton().localizationManager());
    }

    void waitForThumbnails(BWThumbnailTableView &grid, int count)
    {
        QTRY_COMPARE_WITH_TIMEOUT(grid.elementCount(), count, patience);
        const int last = count - 1;
        const auto isThere = [&] {
            m_clock.advance(100ms);
            return grid.dataSource()->objectValueForTableColumn(grid, last % 2, last / 2).state
                == BWThumbnailValue::State::Picture;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isThere(), patience);
    }

    void plugIn(int camera)
    {
        m_cameras[camera]->plugIn();
        m_clock.advance(1500ms);
    }

    /// Until one of them is on the screen.
    void showFrames()
    {
        const auto before = m_delegate->renderer().statistics().shown;
        const auto isShown = [&] {
            m_cameras[0]->pushFrames(1);
            return m_delegate->renderer().statistics().shown > before;
        };
        QVERIFY(QTest::qWaitFor(isShown, patience));
    }

    BWManualClock m_clock;
    QList<std::shared_ptr<BWSimulatedCamera>> m_cameras;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<BWMessageBoxAlertPresenter> m_alerts;
    BWMainWindow *m_window = nullptr;
    bool m_quit = false;
};

int main(int argc, char *argv[])
{
    const QString requested = QString::fromLocal8Bit(argc > 2 ? argv[2] : "");
    for (const Look &known : looks) {
        if (known.name == requested)
            look = known;
    }
    if (look.name.isNull())
        qFatal("usage: %s LANGUAGE LOOK [option of Qt Test...]", argv[0]);
    language = QString::fromLocal8Bit(argv[1]);
    const TestFolder home;
    qputenv("TMPDIR", home.path().toUtf8());
    home.file(u"screen.json"_s,
              u"{\"screens\": [{\"name\": \"screen\", \"x\": 0, \"y\": 0, \"logicalDpi\": 96, \"dpr\": 1, "
              "\"width\": %1, \"height\": %2}]}"_s.arg(1280 * look.scale)
                  .arg(800 * look.scale)
                  .toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + home.path(u"screen.json"_s).toUtf8());
    qputenv("QT_SCALE_FACTOR", QByteArray::number(look.scale));
    BWRepository::setOptions({home.path(u"settings.conf"_s), home.path(), {language}, u":/localization.json"_s});
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"BrimwellPro"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    dressUp();
    QIcon::setThemeSearchPaths({u"/usr/share/icons"_s}); // a desktop would do that
    BWIcons::install(application);
    TestBWTour tour;
    return QTest::qExec(&tour, argc - 2, argv + 2);
}

#include "tst_BWTour.moc"
