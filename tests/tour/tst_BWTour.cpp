// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWAppTexts.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Capture/BWCaptureNotice.h"
#include "Model/Capture/BWSeriesTexts.h"
#include "Model/Import/BWImportTexts.h"
#include "Model/Session/BWStartProblemText.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "TestFolder.h"
#include "Tour.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWMovieDialogs.h"
#include "Views/Albums/BWRenameDialog.h"
#include "Views/Albums/BWThumbnailMenu.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"
#include "Views/BWNoCameraProductSheetWindowController.h"
#include "Views/BWNoCameraWindowController.h"
#include "Views/BWStartProblemAlert.h"
#include "Views/Capture/BWSeriesDialog.h"
#include "Views/Help/BWAboutWindowController.h"
#include "Views/Help/BWSimpleHelpWindowController.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWOfferStrip.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Settings/BWAdvancedSettingsWindowController.h"
#include "Views/Settings/BWSettingsWindowController.h"
#include "Views/Settings/BWSettingViewController.h"
#include "Views/Technician/BWEMPIADebuggerWindowController.h"
#include "Views/Technician/BWGridDebuggerWindowController.h"
#include "Views/Technician/BWSimulatedCamerasWindowController.h"
#include "Views/Utils/BWFilePanels.h"
#include "Views/Utils/BWFlashActionViewController.h"
#include "Views/Utils/BWPreparingView.h"

#include <algorithm>
#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

enum class Alert { Warning, Information, Question };

BWLocalizationManager &allTexts()
{
    return BWRepository::singleton().localizationManager();
}

/// With the name of the row of the table.
QString name(const QString &kind)
{
    return u"%1-%2"_s.arg(kind, QLatin1String(QTest::currentDataTag()));
}

/// What keeps cameras from appearing, at its longest.
QString obstacle()
{
    using Kind = BWStartProblem::Kind;
    return BWStartProblemText::obstacle({{u"USB Microscope"_s, {Kind::InUse}}, {u"Webcam"_s, {Kind::NoPermission}}},
                                        allTexts());
}

} // namespace

/// Walks through all windows of the real program on simulated cameras, in one language and one look, in the order in
/// which a user could meet them. Every window has to fit, and is drawn into a picture.
class TestBWTour : public QObject, private Tour {
    Q_OBJECT

public:
    using Tour::Tour;

private Q_SLOTS:
    void initTestCase() { begin(); }
    void cleanup() { reportFaults(); }
    void cleanupTestCase() { end(); }

    void noCamera()
    {
        see(visible<BWSimulatedCamerasWindowController>(), u"simulated-cameras"_s);
        see(window, u"main-waiting"_s);
        const BWMainMenu &menu = window->menu();
        QVERIFY(menu.settingsMenuItem->isEnabled() && !menu.advancedSettingsMenuItem->isEnabled());
        clock.advance(2s);
        auto *waiting = visible<BWNoCameraWindowController>();
        see(waiting, u"no-camera"_s);
        const auto *preparing = waiting->findChild<BWBusyIndicator *>();
        cameras[0]->plugIn();
        QTRY_VERIFY_WITH_TIMEOUT(preparing->isAnimating(), patience); // as soon as the backend reports it
        see(waiting, u"no-camera-preparing"_s);
        cameras[0]->unplug();
        QTRY_VERIFY_WITH_TIMEOUT(!preparing->isAnimating(), patience);
        waiting->setObstacle(obstacle());
        see(waiting, u"no-camera-blocked"_s);
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
        BWLocalizationManager &texts = allTexts();
        const QString other =
            texts.text(u"camera_type"_s, u"ultra_resolution_microscope"_s, u"Ultra Resolution Microscope"_s);
        auto *alert = new BWStartProblemAlert(question, hasOther ? other + u" (2)"_s : QString(), texts, window);
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
            cameras[camera]->unplug();
            QTRY_VERIFY_WITH_TIMEOUT(!delegate->currentCamera(), patience);
        }
    }

    void cameraWindow()
    {
        seePlain();
        const auto menus = window->menuBar()->actions();
        int number = 0;
        for (const QAction *action : menus)
            seeMenu(action->menu(), u"menu-%1"_s.arg(++number));
        seeMeasuring();
        window->menu().grid->trigger();
        window->menu().gridDebugger->trigger();
        see(visible<BWGridDebuggerWindowController>(), u"grid-debugger"_s);
        window->menu().grid->trigger();
        seePanel(window->menu().registerDebugger, u"register-debugger-unread"_s,
                 &BWEMPIADebuggerWindowController::onReadRegisters, u"register-debugger"_s);
    }

    void productInUse()
    {
        const auto actions = window->findChildren<QAction *>();
        QVERIFY(std::any_of(actions.begin(), actions.end(), [](const QAction *action) {
            return action->isChecked() && action->data() == QVariant(u"dx10"_s);
        }));
        const auto menus = window->controlBar().findChildren<QComboBox *>();
        auto *sizes =
            *std::find_if(menus.begin(), menus.end(), [](auto *menu) { return menu->findText(u"640x480"_s) >= 0; });
        const auto size = [&] { // of the camera, and what the bar shows
            return delegate->currentCamera()->defaultResolution().resolutionString() + u' ' + sizes->currentText();
        };
        sizes->setCurrentText(u"1600x1200"_s);
        Q_EMIT sizes->textActivated(sizes->currentText());
        QTRY_COMPARE_WITH_TIMEOUT(size(), u"1600x1200 1600x1200"_s, patience);
        QAction *const panel = window->menu().advancedSettingsMenuItem;
        panel->trigger(); // shown, and with the next one hidden
        auto *advanced = visible<BWAdvancedSettingsWindowController>();
        QVERIFY(advanced->controllerForSetting(BWSettingContrast)->setting()); // it is made after the camera's start
        advanced->onRestoreDefaults(); // the size with the values
        panel->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(size(), u"640x480 640x480"_s, patience);
    }

    void captures()
    {
        window->menu().albumManagerMenuItem->trigger();
        auto *notice = visible<BWAlbumManagerWindowController>()->findChild<BWThumbnailNotice *>();
        QTRY_VERIFY_WITH_TIMEOUT(!notice->text().isEmpty(), patience);
        see(visible<BWAlbumManagerWindowController>(), u"albums-empty"_s);
        auto *flash = window->findChild<BWFlashActionViewController *>();
        for (int i = 0; i < 5; ++i) {
            window->menu().snapshot->trigger();
            QTRY_VERIFY_WITH_TIMEOUT((showFrames(), flash->isVisible()), patience);
            clock.advance(500ms);
            if (i == 0)
                see(window, u"main-snapshot-saved"_s);
            clock.advance(5s);
            QTRY_VERIFY_WITH_TIMEOUT(!flash->isVisible(), patience);
        }
        QAction *record = window->menu().record;
        const QString recordText = record->text();
        record->trigger();
        for (int i = 0; i < 30; ++i)
            showFrames();
        clock.advance(1500ms);
        QTRY_VERIFY_WITH_TIMEOUT((showFrames(), flash->isVisible() && !flash->details().isEmpty()), patience);
        see(window, u"main-recording"_s);
        setFullScreen(true);
        see(window, u"main-full-screen-recording"_s);
        setFullScreen(false);
        seeMenu(window->menuBar()->actions()[1]->menu(), u"menu-recording"_s);
        QVERIFY(record->text() != recordText);
        record->trigger();
        QTRY_VERIFY_WITH_TIMEOUT((showFrames(), !flash->isVisible()), patience);
        QCOMPARE(record->text(), recordText);
        see(window, u"main-video-saved"_s);
    }

    void pictures()
    {
        seeLookBack();
        seeComparing();
        seeFullScreen();
    }

    void series()
    {
        QAction *const item = window->menu().series;
        const QString text = item->text();
        item->trigger();
        QDialog *const dialog = visible<BWSeriesDialog>();
        see(dialog, u"series"_s);
        dialog->accept();
        QTRY_VERIFY_WITH_TIMEOUT((showFrames(), window->currentCameraLabel().accessibleName().contains(u'1')),
                                 patience);
        clock.advance(5s); // the pill has said what came before
        see(window, u"main-series"_s);
        QVERIFY(item->text() != text);
        item->trigger();
        see(window, u"main-series-stopped"_s);
        QCOMPARE(item->text(), text);
        clock.advance(10s);
        window->offerStrip().show();
        see(window, u"main-series-movie"_s);
        window->offerStrip().end();
    }

    void albums()
    {
        auto *album = visible<BWAlbumManagerWindowController>();
        auto *tabs = album->findChild<QTabWidget *>();
        auto *grid = qobject_cast<BWThumbnailTableView *>(tabs->currentWidget());
        waitForThumbnails(*grid, 6);
        see(album, u"albums"_s);
        seeMenu(grid->rightMenu(), u"albums-menu"_s);
        grid->modelDelegate()->renameIndexOfModel(*grid, 0);
        auto *rename = visible<BWRenameDialog>();
        see(rename, u"albums-rename"_s);
        QTest::keyClicks(rename->findChild<QLineEdit *>(), u"a/b"_s);
        see(rename, u"albums-rename-refused"_s);
        rename->reject();
        grid->onSelectAll();
        see(album, u"albums-selected"_s);
        tabs->setCurrentIndex(1);
        waitForThumbnails(*qobject_cast<BWThumbnailTableView *>(tabs->currentWidget()), 1);
        see(album, u"albums-videos"_s);
        BWThumbnailTableViewDelegate &model = *grid->modelDelegate();
        model.makeMovieOfIndexesOfModel(*qobject_cast<BWThumbnailTableView *>(tabs->currentWidget()), {0});
        auto *smaller = visible<BWSmallerMovieDialog>();
        see(smaller, u"albums-smaller-movie"_s);
        smaller->close();
        tabs->setCurrentIndex(0);
        model.makeMovieOfIndexesOfModel(*grid, {0, 1});
        auto *joined = visible<BWPicturesMovieDialog>();
        see(joined, u"albums-movie-of-pictures"_s);
        joined->close();

        BWAlbumTexts texts;
        texts.localizeWithManager(allTexts());
        auto *footer = album->findChild<BWAlbumFooter *>();
        auto *notice = album->findChild<BWAlbumNotice *>();
        const QString file = grid->elements().first().fileName();
        footer->showProgress(texts.savingProgress.arg(file) + u'\n' + texts.movies.minutesLeft.arg(12), 0.4);
        see(album, u"albums-saving"_s);
        footer->endProgress();
        for (const auto &[name, text] :
             {std::pair(u"saved"_s, texts.saved), std::pair(u"undo"_s, texts.movedToTrash),
              std::pair(u"not-moved"_s, texts.stayedOutOfTrash), std::pair(u"not-back"_s, texts.notBroughtBack)}) {
            notice->showNotice(text.arg(file), text == texts.movedToTrash);
            see(album, u"albums-"_s + name);
        }
        notice->endNotice();

        album->onAddAlbum();
        auto *panel = visible<QFileDialog>();
        see(panel, u"albums-add"_s);
        panel->close();
        const QString folder = BWRepository::singleton().albumManager().currentAlbum()->path().toLocalFile();
        QVERIFY(QDir().rename(folder, folder + u"-moved"_s));
        QTRY_COMPARE_WITH_TIMEOUT(album->findChild<BWThumbnailNotice *>()->text(), texts.unavailable, patience);
        see(album, u"albums-unavailable"_s);
        grid->setEmptyNotice(u"network-server"_s, texts.notAnswering);
        see(album, u"albums-waiting"_s);
        album->close();
    }

    void settings()
    {
        for (int i = 1; i < 6; ++i)
            plugIn(i);
        const BWMainMenu &menu = window->menu();
        const auto cameraCount = [&] { return window->findChild<QActionGroup *>()->actions().size(); };
        QTRY_COMPARE_WITH_TIMEOUT(cameraCount(), 6, patience);
        menu.settingsMenuItem->trigger(); // it is made now
        const auto *panel = visible<BWSettingsWindowController>();
        QCOMPARE(panel->findChild<QComboBox *>()->count(), 6);
        menu.settingsMenuItem->trigger();
        seePanel<BWSettingsWindowController>(menu.settingsMenuItem, u"settings"_s);
        const auto buttons = panel->findChildren<QPushButton *>();
        for (const QPushButton *button : buttons)
            QVERIFY2(!QKeySequence::mnemonic(button->text()).isEmpty(), qPrintable(button->text()));
        const auto labels = panel->findChildren<QLabel *>();
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
        BWLocalizationManager &manager = allTexts();
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
        const auto album = std::make_shared<BWAlbum>(QUrl(u"file:///home/user/BrimwellPro/Healing"_s));
        capture("series-ended", BWSeriesTexts::ofEnd({{}, BWSeries::Reason::AlbumGone, 8640, 12, album, {}}, manager));
        capture("series-unfinished", BWSeriesTexts::ofUnfinished({{}, album->path(), {}, 8640, 12, {}}, manager),
                Alert::Question);
        capture("series-quit", BWSeriesTexts::ofQuitting(manager), Alert::Question);
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
            alertPresenter->presentOKCancel(title, message);
        else if (kind == Alert::Information)
            alertPresenter->presentInformation(title, message);
        else
            alertPresenter->presentOK(title, message);
    }

    void statusLines()
    {
        BWLocalizationManager &manager = allTexts();
        for (const auto kind : {BWStartProblem::Kind::NoBandwidth, BWStartProblem::Kind::Failed}) {
            window->currentCameraLabel().announce(BWStartProblemText::status({kind}, manager));
            see(window, u"main-status-%1"_s.arg(static_cast<int>(kind)));
        }
        BWAppTexts app;
        app.localizeWithManager(manager);
        window->currentCameraLabel().announce(app.settingsNotStored);
        see(window, u"main-status-not-stored"_s);
    }

    void unplugged()
    {
        for (const auto &camera : cameras)
            camera->unplug();
        QTRY_VERIFY_WITH_TIMEOUT((clock.advance(2s), visible<BWNoCameraSheetWindowController>()), patience);
        auto *sheet = visible<BWNoCameraSheetWindowController>();
        see(sheet, u"unplugged"_s);
        see(window, u"main-unplugged"_s);
        cameras[0]->plugIn();
        clock.advance(500ms);
        see(sheet, u"unplugged-preparing"_s);
        sheet->setObstacle(obstacle());
        see(sheet, u"unplugged-blocked"_s);
        sheet->setObstacle({});
        window->menu().showSeries(true);
        see(sheet, u"unplugged-series"_s);
        window->menu().showSeries(false);
    }
};

int main(int argc, char *argv[])
{
    const QString language = QString::fromLocal8Bit(argc > 2 ? argv[1] : "");
    const auto look = std::find_if(Look::all().begin(), Look::all().end(),
                                   [&](const Look &known) { return argc > 2 && known.name == QLatin1String(argv[2]); });
    if (look == Look::all().end())
        qFatal("usage: %s LANGUAGE LOOK [option of Qt Test...]", argv[0]);
    const TestFolder home;
    qputenv("TMPDIR", home.path().toUtf8());
    look->setUpScreen(home);
    BWRepository::setOptions({home.path(u"settings.conf"_s), home.path(), {language}, u":/localization.json"_s});
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"BrimwellPro"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (allTexts().isRightToLeft())
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    look->dressUp();
    TestBWTour tour(language, *look);
    return QTest::qExec(&tour, argc - 2, argv + 2);
}

#include "tst_BWTour.moc"
