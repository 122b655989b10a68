// SPDX-License-Identifier: GPL-3.0-or-later
#include "AttachedCameras.h"
#include "BWManualClock.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/BWNoCameraProductSheetWindowController.h"
#include "Views/BWNoCameraWindowController.h"
#include "Views/BWStartProblemAlert.h"
#include "Views/Help/BWSimpleHelpWindowController.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringStrip.h"
#include "Views/MainWindow/BWSlidingBars.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Settings/BWAdvancedSettingsWindowController.h"
#include "Views/Settings/BWSettingsWindowController.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWFilePanels.h"
#include "Views/Utils/BWFlashActionViewController.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWLightTabView.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"
#include "Views/Utils/BWNoticeView.h"
#include "Views/Utils/BWPreparingView.h"
#include "WidgetSearch.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// As when a window appears just as the user takes a snapshot.
void pressKeysMeantForASnapshot(const QWidget &window)
{
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return})
        QTest::keyClick(window.focusWidget(), key);
}

} // namespace

class TestBWWindows : public QObject, private BWSettingsWindowControllerDelegate {
    Q_OBJECT

    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    BWManualClock m_clock;

    const QTemporaryDir m_folder;
    BWSettingsFile m_defaults{m_folder.filePath(u"settings.conf"_s)};
    BWConfigManager m_config{m_defaults};
    BWAlbumManager m_albums{m_defaults, m_folder.path()};
    BWProductInUse m_product{m_config};
    const AttachedCameras m_cameras{{AttachedCameras::Type::High}};
    BWDialogFilePanels m_panels;

    void changeCurrentCamera(BWSettingsWindowController &, const BWCameraPtr &) override { }

    using MakeWindow = std::function<QWidget *()>;

private Q_SLOTS:
    void initTestCase()
    {
        QIcon::setThemeSearchPaths({u"/usr/share/icons"_s}); // a desktop would do that
        BWIcons::install(*qApp);
    }

    void showPreparingCamera()
    {
        for (const bool sheet : {false, true}) {
            bool pending = false;
            int asked = 0;
            QString obstacle;
            const BWNoCameraBaseWindowController::Callbacks callbacks{[&] { return ++asked, pending; },
                                                                      [&] { return obstacle; }};
            std::unique_ptr<BWNoCameraBaseWindowController> window;
            if (sheet)
                window = std::make_unique<BWNoCameraSheetWindowController>(callbacks, m_clock);
            else
                window = std::make_unique<BWNoCameraWindowController>(callbacks, m_clock);
            window->localizeWithManager(m_texts);
            const auto *indicator = window->findChild<BWBusyIndicator *>();
            const auto *notice = window->findChild<BWNoticeView *>();
            const QString usual = notice->explanation();
            const QSize size = window->sizeHint();
            const auto after = [&](std::chrono::milliseconds time) { // also while the window is hidden
                m_clock.advance(time);
                return QString::number(asked) + (indicator->isAnimating() ? u" turns"_s : QString())
                    + (indicator->isVisibleTo(window.get()) ? u" shows "_s : u" "_s) + notice->explanation();
            };
            QCOMPARE(after(1h), u"1 "_s + usual); // nothing to wait for: no timer runs
            pending = true;
            window->watchPendingDevices();
            QCOMPARE(after(299ms), u"2 turns shows "_s + usual);
            QCOMPARE(window->sizeHint(), size); // nothing moves
            window->watchPendingDevices(); // does not ask twice as often afterwards
            pending = false;
            QCOMPARE(after(299ms), u"3 turns shows "_s + usual);
            QCOMPARE(after(1h), u"4 "_s + usual);
            obstacle = u"may not be opened"_s;
            window->watchPendingDevices();
            QCOMPARE(after(0ms), u"5 "_s + obstacle);
            obstacle.clear();
            pending = true;
            window->watchPendingDevices();
            QCOMPARE(after(300ms), u"7 turns shows "_s + usual);

            window.reset();
            m_clock.advance(10s);
            QCOMPARE(asked, 7);
        }
    }

    void closingTheWindowEndsTheProgram()
    {
        BWNoCameraWindowController window({}, m_clock);
        window.localizeWithManager(m_texts);
        QSignalSpy spy(&window, &BWNoCameraWindowController::terminateRequested);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        pressKeysMeantForASnapshot(window);
        QTest::keyClick(&window, Qt::Key_Escape);
        QVERIFY(spy.isEmpty() && window.isVisible());
        window.close();
        QCOMPARE(spy.count(), 1);
        QVERIFY(window.isVisible()); // until the program really ends
        QTest::keyClick(buttonNamed(window, u"Quit"_s), Qt::Key_Space);
        QCOMPARE(spy.count(), 2);
        QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
        QTRY_COMPARE(spy.count(), 3);
    }

    /// The focus leaves the list of a pop-up button when that goes, which is after the rules of the bars.
    void endsInFullScreenWithAnOpenListInItsBars()
    {
        auto window = std::make_unique<QMainWindow>();
        auto *const content = new QWidget;
        content->setFocusPolicy(Qt::StrongFocus);
        window->setCentralWidget(content);
        auto *const bars = new BWSlidingBars(*window->menuBar(), content);
        auto *const button = new QComboBox;
        button->addItems({u"one"_s, u"two"_s});
        bars->addControlBar(button);
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        content->setFocus();
        bars->setSliding(true);
        button->setFocus(Qt::TabFocusReason);
        button->showPopup();
        QTRY_VERIFY(button->view()->hasFocus());
        window.reset(); // where the sanitizers look
    }

    void noCameraSheetEnds()
    {
        QWidget window;
        window.show();
        BWNoCameraSheetWindowController sheet({}, m_clock);
        sheet.localizeWithManager(m_texts);
        const std::function<void()> ways[]{[&] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space); },
                                           [&] { QTest::keyClick(&sheet, Qt::Key_Q, Qt::ControlModifier); },
                                           [&] { sheet.close(); }, [&] { sheet.end(); }};
        QList<int> got;
        for (int i = 0; i < 4; ++i) {
            sheet.beginSheet(&window, [&got, i](int code) { got << i << code; });
            QCOMPARE(sheet.windowModality(), Qt::WindowModal);
            QTest::keyClick(&sheet, Qt::Key_Escape);
            QVERIFY(QTest::qWaitForWindowActive(&sheet));
            pressKeysMeantForASnapshot(sheet);
            QVERIFY(sheet.isVisible());
            QTest::keyClick(&sheet, Qt::Key_Tab); // moves the focus to the button; the next sheet must not start there
            ways[i]();
            QTRY_VERIFY(!sheet.isVisible());
            sheet.onTerminate(); // no result from a sheet that is not open
        }
        QCOMPARE(got, QList<int>({0, 1, 1, 1, 2, 1})); // nor does one that is ended from outside
        sheet.beginSheet(&window, [&](int) { sheet.beginSheet(&window, {}); }); // the user decides not to quit
        sheet.close();
        QVERIFY(sheet.isVisible());
    }

    void productSheet_data()
    {
        const Rows<QList<Qt::Key>, int, int> row;
        row("first is preselected", {Qt::Key_Return}, 1, 0);
        row("escape means later", {Qt::Key_Down, Qt::Key_Escape}, 0, 1);
        row("later by keyboard", {Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Space}, 0, 0);
    }
    void productSheet()
    {
        const auto [keys, code, index] = Rows<QList<Qt::Key>, int, int>::current();
        BWSettingsFile defaults(u"/none/settings.conf"_s); // nothing is stored
        const BWConfigManager config(defaults);
        const auto products = config.productsByCameraIdentifier(u"wired_high"_s);
        const AttachedCameras cameras({AttachedCameras::Type::High});

        QWidget window;
        window.show();
        BWNoCameraProductSheetWindowController sheet(
            [&config](const QString &identifier) { return config.productsByCameraIdentifier(identifier); }, m_clock);
        sheet.localizeWithManager(m_texts);
        sheet.setCamera(cameras[0]);
        QCOMPARE(sheet.findChild<QComboBox *>()->count(), products.size());

        QList<int> got;
        sheet.beginSheet(&window, [&got](int result) { got << result; });
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); // pressed before the user could read it
        QVERIFY(got.isEmpty());
        m_clock.advance(1s);
        for (const Qt::Key key : keys)
            QTest::keyClick(QApplication::focusWidget(), key);
        QCOMPARE(got, QList<int>{code});
        QCOMPARE(sheet.selectedProduct(), products[index]);

        sheet.setCamera(cameras[0]); // asked again: the first one once more
        QCOMPARE(sheet.selectedProduct(), products[0]);
    }

    void productSheetOfUnknownType()
    {
        BWNoCameraProductSheetWindowController sheet([](const QString &) { return QList<BWCameraProductPtr>(); });
        sheet.localizeWithManager(m_texts);
        sheet.setCamera(AttachedCameras({AttachedCameras::Type::High})[0]);
        QVERIFY(!sheet.camera()); // the sheet does not keep an unplugged camera alive
        QVERIFY(!sheet.selectedProduct());
        QVERIFY(!buttonNamed(sheet, u"OK"_s)->isEnabled());
    }

    void cursorShowsThatAPressTakesAPicture()
    {
        BWLiveRenderer renderer;
        BWCenteringClipView view(renderer);
        view.resize(400, 300);
        view.show();
        connect(&view, &BWCenteringClipView::mousePressed, &view, &BWCenteringClipView::showCameraCursor);
        QTest::mouseMove(view.viewport());
        QCOMPARE(view.viewport()->cursor().shape(), Qt::ArrowCursor);
        const auto press = [&view] { // ignored until the program has been in front for a moment
            QTest::mousePress(view.viewport(), Qt::LeftButton);
            return view.viewport()->cursor().shape() != Qt::ArrowCursor;
        };
        QTRY_VERIFY(press());
        const QCursor cursor = view.viewport()->cursor();
        QCOMPARE(cursor.hotSpot(), QPoint());
        QVERIFY(cursor.pixmap().toImage().pixelColor(16, 11).alpha() > 0); // the camera is drawn
        QTest::mouseRelease(view.viewport(), Qt::LeftButton);
        QCOMPARE(view.viewport()->cursor().shape(), Qt::ArrowCursor);
    }

    void screenReadersMayQueryHiddenScrollBars()
    {
        BWLiveRenderer renderer;
        BWCenteringClipView view(renderer);
        const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&view);
        QVERIFY(interface->childCount() > 0 && interface->child(0));
        for (int i = 0; i < 4; ++i)
            QVERIFY(!interface->child(interface->childCount() + i));
    }

    void answersForABusyCamera()
    {
        using Answer = BWStartProblemAlert::Answer;
        const struct {
            std::optional<BWResolution> smaller;
            QString other, button; // no button: Escape
            Answer answer;
        } rows[] = {{{}, {}, {}, Answer::TryAgain},
                    {{}, u"Loupe (2)"_s, {}, Answer::UseOther},
                    {{}, u"Loupe (2)"_s, u"OK"_s, Answer::TryAgain},
                    {{}, u"Loupe (2)"_s, u"Use Loupe (2)"_s, Answer::UseOther},
                    {BWResolution(640, 480), u"Loupe (2)"_s, u"Use 640x480"_s, Answer::UseSmaller},
                    {{}, {}, u"&Quit"_s, Answer::Quit}};
        for (const auto &row : rows) {
            auto *alert =
                new BWStartProblemAlert({{BWStartProblem::Kind::InUse}, row.smaller, {}}, row.other, m_texts, nullptr);
            QList<Answer> answers;
            connect(alert, &BWStartProblemAlert::answered, this, [&](Answer answer) { answers << answer; });
            alert->open();
            if (row.button.isNull())
                QTest::keyClick(alert, Qt::Key_Escape);
            else
                buttonNamed(*alert, row.button)->click();
            QCOMPARE(answers, QList{row.answer});
        }
    }

    void alertAnswers()
    {
        BWLocalizationManager texts(QStringLiteral(BW_RESOURCES "/localization.json"), {u"es"_s});
        BWMessageBoxAlertPresenter presenter(texts);
        const QString markup = u"<b>Album</b>"_s;
        for (const auto &[key, buttons, ok] :
             std::initializer_list<std::tuple<Qt::Key, QString, bool>>{{Qt::Key_Return, u"Aceptar|Cancelar"_s, true},
                                                                       {Qt::Key_Escape, u"Aceptar|Cancelar"_s, false},
                                                                       {Qt::Key_Escape, u"Aceptar"_s, true}}) {
            QStringList shown;
            QTimer::singleShot(0, this, [&, key = key] {
                auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
                QVERIFY(box);
                const auto all = box->buttons();
                for (const QAbstractButton *button : all)
                    shown << button->text();
                QTest::keyClick(box, key);
                QCOMPARE(box->informativeText(), markup);
            });
            if (buttons.contains(u'|'))
                QCOMPARE(presenter.presentOKCancel(u"Delete album"_s, markup), ok);
            else
                presenter.presentOK(u"Delete album"_s, markup);
            QCOMPARE(shown.join(u'|'), buttons);
        }
    }

    void coloursFollowThePaletteOfAShownWindow_data()
    {
        const Rows<MakeWindow> row;
        row("camera", [this]() -> QWidget * {
            static BWLiveRenderer renderer;
            auto *window = new BWMainWindow(renderer);
            window->setStrip(new BWMeasuringStrip(*window->menu().measuring, window));
            window->localizeWithManager(m_texts);
            window->currentCameraLabel().setText(u"Live"_s);
            (new BWFlashActionViewController(*window, 200, m_texts, m_clock))
                ->setAction(BWFlashActionViewController::Action::RecordingStarted);
            return window;
        });
        row("albums", []() -> QWidget * {
            auto *tabs = new BWLightTabView;
            tabs->addTab(new BWAlbumFooter, u"Images"_s);
            auto *grid = new BWThumbnailTableView;
            grid->setEmptyNotice(u"network-server"_s, u"Waiting"_s);
            tabs->addTab(grid, u"Videos"_s);
            (new BWAlbumNotice(grid))->showNotice(u"Saved"_s, true);
            tabs->setCurrentIndex(1);
            return tabs;
        });
        row("whole albums", [this]() -> QWidget * {
            auto *window =
                new BWAlbumManagerWindowController(m_albums, m_defaults, {m_panels, {}, {}, {}}, nullptr, m_clock);
            window->localizeWithManager(m_texts);
            return window;
        });
        row("settings", [this]() -> QWidget * {
            auto *window = new BWSettingsWindowController(m_config, m_defaults, {*this, {}}, nullptr);
            window->localizeWithManager(m_texts);
            return window;
        });
        row("camera controls", [this]() -> QWidget * {
            auto *window = new BWAdvancedSettingsWindowController(m_product, m_defaults, nullptr, m_clock);
            window->localizeWithManager(m_texts);
            window->setCurrentCamera(m_cameras[0]);
            return window;
        });
        row("help", []() -> QWidget * { return new BWSimpleHelpWindowController({}, {}, nullptr); });
        row("no camera", [this]() -> QWidget * { return new BWNoCameraWindowController({}, m_clock); });
    }
    void coloursFollowThePaletteOfAShownWindow()
    {
        const auto [make] = Rows<MakeWindow>::current();
        const auto look = [](QWidget &window) {
            QCoreApplication::processEvents();
            return window.grab().toImage();
        };
        const auto open = [&, make = make] {
            std::unique_ptr<QWidget> window(make());
            window->setAttribute(Qt::WA_DontShowOnScreen); // or only one of them would have the keyboard
            const auto parts = window->findChildren<QWidget *>();
            for (QWidget *part : parts)
                part->setVisible(!part->isWindow());
            window->show();
            look(*window);
            return window;
        };
        const auto shown = open();
        for (const auto &[dark, highContrast] : {std::pair(true, false), {false, false}, {true, true}, {false, true}}) {
            QApplication::setPalette(
                BWColors::wanted(QPalette(Qt::lightGray), dark, highContrast).value_or(QPalette()));
            QVERIFY(look(*shown) == look(*open()));
        }
        QApplication::setPalette(QPalette());
    }

    void onlyTheZoomRepeatsWhileItsKeyIsHeld()
    {
        QMainWindow window;
        const BWMainMenu menu(window);
        QList<QAction *> repeating = window.findChildren<QAction *>();
        repeating.removeIf([](const QAction *action) { return action->shortcut().isEmpty() || !action->autoRepeat(); });
        QCOMPARE(repeating,
                 QList<QAction *>({menu.zoomIn, menu.zoomOut, menu.showMoreReference, menu.showLessReference}));
    }
};

QTEST_MAIN(TestBWWindows)
#include "tst_BWWindows.moc"
