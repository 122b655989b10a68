#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "BWManualClock.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/BWNoCameraProductSheetWindowController.h"
#include "Views/BWNoCameraWindowController.h"
#include "Views/BWStartProblemAlert.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Technician/BWSimulatedCamerasWindowController.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"
#include "Views/Utils/BWNoticeView.h"
#include "Views/Utils/BWPreparingView.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// What a screen reader would have to leave unnamed.
QStringList namelessWidgets(const QWidget &window)
{
    QStringList nameless;
    const auto widgets = window.findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
        if (widget->focusPolicy() != Qt::NoFocus && (!interface || interface->text(QAccessible::Name).isEmpty()))
            nameless << QString::fromLatin1(widget->metaObject()->className());
    }
    return nameless;
}

QAbstractButton *buttonNamed(const QWidget &window, const QString &text)
{
    const auto buttons = window.findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->text() == text || button->accessibleName() == text)
            return button;
    }
    return nullptr;
}

/// As when a window comes up just then.
void pressKeysMeantForASnapshot(const QWidget &window)
{
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return})
        QTest::keyClick(window.focusWidget(), key);
}

} // namespace

class TestBWWindows : public QObject {
    Q_OBJECT

    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    BWManualClock m_clock;

private Q_SLOTS:
    void pollShowsPreparingCamera_data()
    {
        QTest::addColumn<bool>("sheet");
        QTest::newRow("window") << false;
        QTest::newRow("sheet") << true;
    }
    void pollShowsPreparingCamera()
    {
        QFETCH(bool, sheet);
        bool pending = false;
        int asked = 0;
        QString obstacle;
        const BWNoCameraBaseWindowController::Callbacks callbacks{[&] {
                                                                      ++asked;
                                                                      return pending;
                                                                  },
                                                                  [&] { return obstacle; }};
        std::unique_ptr<BWNoCameraBaseWindowController> window;
        if (sheet)
            window = std::make_unique<BWNoCameraSheetWindowController>(callbacks, m_clock);
        else
            window = std::make_unique<BWNoCameraWindowController>(callbacks, m_clock);
        window->localizeWithManager(m_texts);
        const auto *indicator = window->findChild<BWBusyIndicator *>();
        QCOMPARE(asked, 1);
        QVERIFY(!indicator->isAnimating());

        const QSize size = window->sizeHint();
        pending = true;
        m_clock.advance(299ms); // also while the window is hidden
        QCOMPARE(asked, 1);
        m_clock.advance(1ms);
        QCOMPARE(asked, 2);
        QVERIFY(indicator->isAnimating() && indicator->isVisibleTo(window.get()));
        QCOMPARE(window->sizeHint(), size); // nothing moves

        pending = false;
        m_clock.advance(600ms);
        QCOMPARE(asked, 4);
        QVERIFY(!indicator->isAnimating() && !indicator->isVisibleTo(window.get()));

        const QString usual = window->findChild<BWNoticeView *>()->explanation();
        obstacle = u"may not be opened"_s;
        m_clock.advance(300ms);
        QCOMPARE(window->findChild<BWNoticeView *>()->explanation(), obstacle);
        obstacle.clear();
        m_clock.advance(300ms);
        QCOMPARE(window->findChild<BWNoticeView *>()->explanation(), usual);

        window.reset();
        m_clock.advance(10s);
        QCOMPARE(asked, 6);
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
            QTest::keyClick(&sheet, Qt::Key_Tab); // leads to the button; the next sheet does not begin there
            ways[i]();
            QTRY_VERIFY(!sheet.isVisible());
            sheet.onTerminate(); // a sheet that is not open has no result
        }
        QCOMPARE(got, QList<int>({0, 1, 1, 1, 2, 1})); // ended from outside it has none, either
        sheet.beginSheet(&window, [&](int) { sheet.beginSheet(&window, {}); }); // the user does not quit after all
        sheet.close();
        QVERIFY(sheet.isVisible());
    }

    void productSheet_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("index");
        QTest::newRow("first is preselected") << QList<int>{Qt::Key_Return} << 1 << 0;
        QTest::newRow("second") << QList<int>{Qt::Key_Down, Qt::Key_Return} << 1 << 1;
        QTest::newRow("escape means later") << QList<int>{Qt::Key_Down, Qt::Key_Escape} << 0 << 1;
        QTest::newRow("later by keyboard") << QList<int>{Qt::Key_Tab, Qt::Key_Space} << 0 << 0;
    }
    void productSheet()
    {
        QFETCH(QList<int>, keys);
        QFETCH(int, code);
        QFETCH(int, index);
        BWSettingsFile defaults(u"/none/settings.conf"_s); // nothing is stored
        const BWConfigManager config(defaults);
        const auto products = config.productsByCameraIdentifier(u"wired_high"_s);
        const BWCameraPtr camera = highResolutionCamera();

        QWidget window;
        window.show();
        BWNoCameraProductSheetWindowController sheet(
            [&config](const QString &identifier) { return config.productsByCameraIdentifier(identifier); }, m_clock);
        sheet.localizeWithManager(m_texts);
        sheet.setCamera(camera);
        QCOMPARE(sheet.camera(), camera);
        const auto *popup = sheet.findChild<QComboBox *>();
        QCOMPARE(popup->count(), 5);
        for (int i = 0; i < popup->count(); ++i)
            QCOMPARE(popup->itemText(i), products[i]->name());

        QList<int> got;
        sheet.beginSheet(&window, [&got](int result) { got << result; });
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); // pressed before it was there to be read
        QVERIFY(got.isEmpty());
        m_clock.advance(1s);
        for (const int key : keys)
            QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
        QCOMPARE(got, QList<int>{code});
        QCOMPARE(sheet.selectedProduct(), products[index]);

        sheet.setCamera(camera); // asked again: the first one once more
        QCOMPARE(sheet.selectedProduct(), products[0]);
        QCOMPARE(namelessWidgets(sheet), QStringList());
    }

    void productSheetOfUnknownType()
    {
        BWNoCameraProductSheetWindowController sheet([](const QString &) { return QList<BWCameraProductPtr>(); });
        sheet.localizeWithManager(m_texts);
        sheet.setCamera(highResolutionCamera());
        QVERIFY(!sheet.camera()); // the sheet does not keep an unplugged camera alive
        QVERIFY(!sheet.selectedProduct());
        QVERIFY(!buttonNamed(sheet, u"OK"_s)->isEnabled());
    }

    void theCursorTellsThatAPressTakesAPicture()
    {
        BWLiveRenderer renderer;
        BWCenteringClipView view(renderer);
        view.resize(400, 300);
        view.show();
        connect(&view, &BWCenteringClipView::mousePressed, &view, &BWCenteringClipView::showCameraCursor);
        QTest::mouseMove(view.viewport());
        QCOMPARE(view.viewport()->cursor().shape(), Qt::ArrowCursor);
        const auto press = [&view] { // which counts when the program has been in front for a moment
            QTest::mousePress(view.viewport(), Qt::LeftButton);
            return view.viewport()->cursor().shape() != Qt::ArrowCursor;
        };
        QTRY_VERIFY(press());
        const QCursor cursor = view.viewport()->cursor();
        QCOMPARE(cursor.hotSpot(), QPoint());
        QCOMPARE(cursor.pixmap().size(), QSize(32, 32) * view.devicePixelRatio());
        QVERIFY(cursor.pixmap().toImage().pixelColor(16, 11).alpha() > 0); // the camera is drawn
        QTest::mouseRelease(view.viewport(), Qt::LeftButton);
        QCOMPARE(view.viewport()->cursor().shape(), Qt::ArrowCursor);
    }

    void screenReadersMayAskForScrollBarsThatHaveGone()
    {
        BWLiveRenderer renderer;
        BWCenteringClipView view(renderer);
        const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&view);
        QVERIFY(interface->childCount() > 0 && interface->child(0));
        for (int i = 0; i < 4; ++i)
            QVERIFY(!interface->child(interface->childCount() + i));
    }

    void simulatedCamerasAreHandled()
    {
        BWSimulatedCameraOptions second;
        second.type = BWSimulatedCameraOptions::Type::DX20;
        second.pluggedIn = false;
        const auto backend = BWSimulatedBackend::create({{}, second}, m_clock);
        const auto cameras = backend->cameras();
        BWSimulatedCamerasWindowController window(cameras);
        window.localizeWithManager(m_texts);
        window.show();
        QCOMPARE(namelessWidgets(window), QStringList());
        const auto button = [&](int camera, const QString &text) {
            return buttonNamed(window, u"%1: %2"_s.arg(cameras[camera]->title(), text));
        };
        button(0, u"Unplug"_s)->click();
        QVERIFY(!cameras[0]->isPluggedIn() && !button(0, u"Press Button"_s)->isEnabled());
        button(1, u"Plug In"_s)->click();
        QVERIFY(cameras[1]->isPluggedIn());
        QComboBox *start = window.findChildren<QComboBox *>()[1];
        QTest::keyClick(start, Qt::Key_Down);
        QCOMPARE(cameras[1]->startProblem(), BWStartProblem{BWStartProblem::Kind::InUse});
        QVERIFY(cameras[0]->startProblem().isNone());
        window.hide();
        cameras[1]->setStartProblem({}); // behind the window's back
        window.show();
        QCOMPARE(start->currentIndex(), 0);
    }

    void waysOutOfABusyCamera()
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

    void alertAnswers_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("buttons");
        QTest::addColumn<bool>("ok");
        QTest::newRow("return is OK") << int(Qt::Key_Return) << u"Ist gut|Abbrechen"_s << true;
        QTest::newRow("escape is Cancel") << int(Qt::Key_Escape) << u"Ist gut|Abbrechen"_s << false;
        QTest::newRow("escape dismisses") << int(Qt::Key_Escape) << u"Ist gut"_s << true;
    }
    void alertAnswers()
    {
        QFETCH(int, key);
        QFETCH(QString, buttons);
        QFETCH(bool, ok);
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write(R"([{"parent": "general", "identifier": "option_ok", "localizations": {"de": "Ist gut"}},
                       {"parent": "general", "identifier": "option_cancel", "localizations": {"de": "Abbrechen"}}])");
        file.close();
        BWLocalizationManager texts(file.fileName(), {u"de-CH"_s});
        BWMessageBoxAlertPresenter presenter(texts);

        const QString markup = u"<b>Album</b>"_s;
        QStringList shown;
        QTimer::singleShot(0, this, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            const auto all = box->buttons();
            for (const QAbstractButton *button : all)
                shown << button->text();
            QTest::keyClick(box, static_cast<Qt::Key>(key));
            QCOMPARE(box->informativeText(), markup);
        });
        if (buttons.contains(u'|'))
            QCOMPARE(presenter.presentOKCancel(u"Delete album"_s, markup), ok);
        else
            presenter.presentOK(u"Delete album"_s, markup);
        QCOMPARE(shown.join(u'|'), buttons);
    }

    void onlyTheZoomRepeatsWhileItsKeyIsHeld()
    {
        QMainWindow window;
        const BWMainMenu menu(window);
        QList<QAction *> repeating = window.findChildren<QAction *>();
        repeating.removeIf([](const QAction *action) { return action->shortcut().isEmpty() || !action->autoRepeat(); });
        QCOMPARE(repeating, QList<QAction *>({menu.zoomIn, menu.zoomOut}));
    }

    void everyMenuItemHasAnAccessKeyOfItsOwn()
    {
        for (const QString &language : {u"en"_s, u"de"_s, u"es"_s, u"fr"_s, u"ja"_s}) {
            BWLocalizationManager texts(QStringLiteral(BW_RESOURCES "/localization.json"), {language});
            QMainWindow window;
            BWMainMenu menu(window);
            menu.localizeWithManager(texts);
            QList<QList<QAction *>> menus{window.menuBar()->actions()};
            for (const QAction *action : window.menuBar()->actions())
                menus << action->menu()->actions();
            for (const bool recording : {false, true}) {
                menu.showRecording(recording);
                for (const QList<QAction *> &actions : std::as_const(menus)) {
                    QStringList keys;
                    for (const QAction *action : actions) {
                        if (action->isSeparator())
                            continue;
                        const QString key = QKeySequence::mnemonic(action->text()).toString();
                        QVERIFY2(!key.isEmpty() && !keys.contains(key), qPrintable(language + u' ' + action->text()));
                        keys << key;
                    }
                }
            }
        }
    }

    void theRecordItemTellsWhatItWouldDo()
    {
        BWLiveRenderer renderer;
        BWMainWindow window(renderer);
        window.localizeWithManager(m_texts);
        const QString before = window.menu().record->text();
        window.controlBar().showRecording(true);
        QCOMPARE(window.menu().record->text(), u"Stop &recording"_s);
        window.localizeWithManager(m_texts);
        QCOMPARE(window.menu().record->text(), u"Stop &recording"_s);
        window.controlBar().showRecording(false);
        QCOMPARE(window.menu().record->text(), before);
        window.menu().showCameras({u"A & B"_s}, 0); // a name is no place for an access key
        const auto actions = window.findChildren<QAction *>();
        QVERIFY(std::any_of(actions.begin(), actions.end(),
                            [](const QAction *action) { return action->text() == u"A && B"_s; }));
    }

    void onlyTheControlsWaitForACamera()
    {
        QMainWindow window;
        BWMainMenu menu(window);
        const auto canBeOpened = [&](const QAction *item) {
            const auto menus = window.menuBar()->actions();
            return std::any_of(menus.begin(), menus.end(), [item](const QAction *action) {
                return action->isEnabled() && action->menu()->actions().contains(item) && item->isEnabled();
            });
        };
        QVERIFY(canBeOpened(menu.albumManagerMenuItem) && canBeOpened(menu.settingsMenuItem));
        QVERIFY(!canBeOpened(menu.advancedSettingsMenuItem));
        menu.enablePanels();
        QVERIFY(canBeOpened(menu.advancedSettingsMenuItem));
    }

private:
    static BWCameraPtr highResolutionCamera()
    {
        BWSimulatedCameraOptions options;
        options.type = BWSimulatedCameraOptions::Type::High;
        options.pacing = BWSimulatedCameraOptions::Pacing::Manual;
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(BWSimulatedBackend::create({options}));
        BWCameraDetector detector({BWCameraDetector::descriptionForHighResolutionMicroscope()}, std::move(backends));
        BWCameraPtr camera;
        detector.setCameraFoundBlock(
            [&camera](const BWDetectedCameraPtr &detected) { camera = std::make_shared<BWCamera>(detected); });
        detector.startCamerasDetection();
        [&] { QTRY_VERIFY(camera); }();
        return camera;
    }
};

QTEST_MAIN(TestBWWindows)
#include "tst_BWWindows.moc"
