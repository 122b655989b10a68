#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/BWConfigManager.h"
#include "Model/BWLocalizationManager.h"
#include "Model/BWSettingsFile.h"
#include "Views/BWNoCameraProductSheetWindowController.h"
#include "Views/BWNoCameraSheetWindowController.h"
#include "Views/BWNoCameraWindowController.h"
#include "Views/BWSimulatedCamerasWindowController.h"
#include "Views/Utils/BWBusyIndicator.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// What a screen reader would have to leave unnamed.
QStringList namelessWidgets(const QWidget &window)
{
    QStringList nameless;
    const auto widgets = window.findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        if (widget->focusPolicy() == Qt::NoFocus)
            continue;
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
        if (!interface || interface->text(QAccessible::Name).isEmpty())
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

} // namespace

class TestBWNoCameraWindows : public QObject {
    Q_OBJECT

    BWLocalizationManager m_texts{QString(), {u"en"_s}};

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
        BWManualClock clock;
        bool pending = false;
        int asked = 0;
        const auto pendingDevices = [&] {
            ++asked;
            return pending;
        };
        std::unique_ptr<BWNoCameraBaseWindowController> window;
        if (sheet)
            window = std::make_unique<BWNoCameraSheetWindowController>(pendingDevices, clock);
        else
            window = std::make_unique<BWNoCameraWindowController>(pendingDevices, clock);
        window->localizeWithManager(m_texts);
        const auto *indicator = window->findChild<BWBusyIndicator *>();
        QCOMPARE(asked, 1);
        QVERIFY(!indicator->isAnimating());

        const QSize size = window->sizeHint();
        pending = true;
        clock.advance(299ms); // also while the window is hidden
        QCOMPARE(asked, 1);
        clock.advance(1ms);
        QCOMPARE(asked, 2);
        QVERIFY(indicator->isAnimating());
        QVERIFY(indicator->isVisibleTo(window.get()));
        QCOMPARE(window->sizeHint(), size); // nothing moves

        pending = false;
        clock.advance(600ms);
        QCOMPARE(asked, 4);
        QVERIFY(!indicator->isAnimating());
        QVERIFY(!indicator->isVisibleTo(window.get()));

        window.reset();
        clock.advance(10s);
        QCOMPARE(asked, 4);
    }

    void closingTheWindowEndsTheProgram()
    {
        BWManualClock clock;
        BWNoCameraWindowController window({}, clock);
        window.localizeWithManager(m_texts);
        QSignalSpy spy(&window, &BWNoCameraWindowController::terminateRequested);
        connect(&window, &BWNoCameraWindowController::terminateRequested, &window, &QWidget::close); // as quitting does
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(spy.count(), 0);
        QVERIFY(window.isVisible());
        window.close();
        QCOMPARE(spy.count(), 1);
        window.show();
        QTest::keyClick(buttonNamed(window, u"Quit"_s), Qt::Key_Space);
        QCOMPARE(spy.count(), 2);
    }

    void noCameraSheetEnds_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QList<int>>("codes");
        QTest::newRow("button") << u"button"_s << QList<int>{1};
        QTest::newRow("closed") << u"close"_s << QList<int>{1};
        QTest::newRow("from outside") << u"end"_s << QList<int>{};
    }
    void noCameraSheetEnds()
    {
        QFETCH(QString, how);
        QFETCH(QList<int>, codes);
        BWManualClock clock;
        QWidget window;
        window.show();
        BWNoCameraSheetWindowController sheet({}, clock);
        sheet.localizeWithManager(m_texts);
        QList<int> got;
        sheet.beginSheet(&window, [&got](int code) { got << code; });
        QCOMPARE(sheet.windowModality(), Qt::WindowModal);
        QTest::keyClick(&sheet, Qt::Key_Escape);
        QVERIFY(sheet.isVisible() && got.isEmpty());
        if (how == "button"_L1)
            QTest::keyClick(buttonNamed(sheet, u"Quit"_s), Qt::Key_Space);
        else if (how == "close"_L1)
            sheet.close();
        else
            sheet.end();
        QVERIFY(!sheet.isVisible());
        QCOMPARE(got, codes);
        sheet.onTerminate(); // a sheet that is not open has no result
        QCOMPARE(got, codes);
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
        QTemporaryDir folder;
        BWSettingsFile defaults(folder.filePath(u"settings.ini"_s));
        const BWConfigManager config(defaults);
        const BWCameraPtr camera = simulatedCamera(BWSimulatedCameraOptions::Type::High);
        QVERIFY(camera);

        QWidget window;
        window.show();
        BWNoCameraProductSheetWindowController sheet(
            [&config](const QString &identifier) { return config.productsByCameraIdentifier(identifier); });
        sheet.localizeWithManager(m_texts);
        sheet.setCamera(camera);
        QCOMPARE(sheet.camera(), camera);

        const auto *popup = sheet.findChild<QComboBox *>();
        const QList<BWCameraProductPtr> products = config.productsByCameraIdentifier(u"wired_high"_s);
        QVERIFY(products.size() > 1);
        QCOMPARE(popup->count(), products.size());
        for (int i = 0; i < products.size(); ++i)
            QCOMPARE(popup->itemText(i), products[i]->name());

        QList<int> got;
        sheet.beginSheet(&window, [&got](int result) { got << result; });
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
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
        sheet.setCamera(simulatedCamera(BWSimulatedCameraOptions::Type::Wireless));
        QVERIFY(!sheet.camera()); // the sheet does not keep an unplugged camera alive
        QVERIFY(!sheet.selectedProduct());
        QVERIFY(!buttonNamed(sheet, u"OK"_s)->isEnabled());
    }

    void simulatedCamerasAreHandled()
    {
        BWManualClock clock;
        BWSimulatedCameraOptions second;
        second.type = BWSimulatedCameraOptions::Type::DX20;
        second.pluggedIn = false;
        const auto backend = BWSimulatedBackend::create({{}, second}, clock);
        const auto cameras = backend->cameras();
        BWSimulatedCamerasWindowController window(cameras);
        window.localizeWithManager(m_texts);
        QWidget mainWindow;
        mainWindow.show();
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(namelessWidgets(window), QStringList());
        BWNoCameraSheetWindowController sheet({}, clock);
        sheet.beginSheet(&mainWindow, {}); // does not block the window that can end it

        const auto press = [&window, &cameras](int camera, const QString &text) {
            const auto *button = buttonNamed(window, u"%1: %2"_s.arg(cameras[camera]->title(), text));
            const QPoint inside = button->mapTo(&window, QPoint(8, button->height() / 2));
            QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, inside);
        };
        press(0, u"Unplug"_s);
        QVERIFY(!cameras[0]->isPluggedIn());
        QVERIFY(!buttonNamed(window, cameras[0]->title() + u": Press Button"_s)->isEnabled());
        press(0, u"Plug In"_s);
        QVERIFY(cameras[0]->isPluggedIn());
        press(1, u"Plug In"_s);
        QVERIFY(cameras[1]->isPluggedIn());
        press(1, u"In use by another program"_s);
        QVERIFY(cameras[1]->inUse() && !cameras[0]->inUse());

        window.hide();
        cameras[1]->setInUse(false); // behind the window's back
        window.show();
        QVERIFY(!buttonNamed(window, cameras[1]->title() + u": In use by another program"_s)->isChecked());
    }

private:
    static BWCameraPtr simulatedCamera(BWSimulatedCameraOptions::Type type)
    {
        BWSimulatedCameraOptions options;
        options.type = type;
        options.pacing = BWSimulatedCameraOptions::Pacing::Manual;
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(BWSimulatedBackend::create({options}));
        BWCameraDetector detector({BWCameraDetector::descriptionForHighResolutionMicroscope(),
                                   BWCameraDetector::descriptionForReceptorWirelessMicroscope()},
                                  std::move(backends));
        BWCameraPtr camera;
        detector.setCameraFoundBlock(
            [&camera](const BWDetectedCameraPtr &detected) { camera = std::make_shared<BWCamera>(detected); });
        detector.startCamerasDetection();
        [&] { QTRY_VERIFY(camera); }();
        return camera;
    }
};

QTEST_MAIN(TestBWNoCameraWindows)
#include "tst_BWNoCameraWindows.moc"
