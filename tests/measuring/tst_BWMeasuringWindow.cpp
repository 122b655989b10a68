#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWMeasuringController.h"
#include "App/LiveView/BWSceneController.h"
#include "AttachedCameras.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringLayer.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWMeasuringStrip.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Measuring/BWCalibrationDialog.h"
#include "Views/Utils/BWFilePanels.h"
#include "WidgetSearch.h"

#include <cmath>
#include <QAction>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr auto type = "wired_high";
constexpr QSize pictureSize(640, 480);
const QList<QPoint> marks{{290, 200}, {365, 262}}; // pixels of the picture

QImage picture()
{
    QImage image(pictureSize, QImage::Format_RGB32);
    image.fill(QColor(128, 128, 128));
    QPainter painter(&image);
    for (const QPoint &mark : marks)
        painter.fillRect(QRect(mark - QPoint(4, 4), QSize(9, 9)), QColor(255, 0, 255));
    return image;
}

/// A window that measures, with a picture of an album in it.
struct Bench {
    Bench()
    {
        window.localizeWithManager(texts);
        config.setCurrentProductIdentifier(u"dx10"_s, QLatin1String(type));
        window.resize(977, 550);
        window.show();
        show(u"a.jpg"_s);
        measuring.setOpen(true);
        QApplication::setActiveWindow(&window);
    }

    void show(const QString &file)
    {
        scene.showAlbumPicture(picture(), file);
        waitForPicture();
    }
    void waitForPicture()
    {
        const auto laidOut = [this] {
            return view.scene()
                .mainRequest(view.viewport()->size(), view.scrollPosition(), view.devicePixelRatioF())
                .pictureToViewport();
        };
        QTRY_VERIFY((view.viewport()->repaint(), view.pictureToViewport() == laidOut()));
    }
    void pick(const QString &kind) const
    {
        for (QAction *tool : window.menu().measuring->tools()) {
            if (tool->data().toString() == kind)
                tool->trigger();
        }
    }
    BWMeasuringLayer &layer() const { return *window.findChild<BWMeasuringLayer *>(); }
    BWMeasuringStrip &strip() const { return *window.findChild<BWMeasuringStrip *>(); }
    QString said() const { return strip().announcement().replace(QChar::Nbsp, u' '); }

    /// Where that place of the picture, in pixels, lies in the layer.
    QPointF at(double x, double y) const { return view.pictureToViewport()->map(QPointF(x, y) / pictureSize.width()); }
    void mouse(QEvent::Type what, QPointF where, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {}) const
    {
        const bool isUp = what == QEvent::MouseButtonRelease;
        const bool isMove = what == QEvent::MouseMove;
        QMouseEvent event(what, where, layer().mapToGlobal(where), isMove ? Qt::NoButton : button,
                          isUp ? Qt::NoButton : Qt::MouseButtons(button), modifiers);
        QApplication::sendEvent(&layer(), &event);
    }
    void click(QPointF where, Qt::KeyboardModifiers modifiers = {}) const
    {
        mouse(QEvent::MouseButtonPress, where, Qt::LeftButton, modifiers);
        mouse(QEvent::MouseButtonRelease, where, Qt::LeftButton, modifiers);
    }
    /// Clicks there, in pixels of the picture; twice at the last place if the kind takes any number of points.
    void measure(const QString &kind, const QList<QPoint> &points) const
    {
        pick(kind);
        for (const QPoint &point : points)
            click(at(point.x(), point.y()));
        if (BWMeasurementKind::find(kind)->mostPoints == BWMeasurementKind::anyNumber)
            mouse(QEvent::MouseButtonDblClick, at(points.last().x(), points.last().y()));
    }
    /// A frozen picture of the camera, which is a DX10.
    void freeze(QSize size)
    {
        product.setCamera(cameras[0]);
        product.reload();
        scene.showFrozen(BWSceneController::frameOf(picture().scaled(size)));
        waitForPicture();
    }
    /// Of each measurement: kind and points, in whole pixels of the picture.
    QString list() const
    {
        QStringList all;
        for (const BWMeasurement &one : measuring.measurements()) {
            QString text = one.kind + one.text;
            for (const QPointF &point : one.points)
                text += u" %1,%2"_s.arg(std::floor(point.x() * pictureSize.width() + 1e-6))
                            .arg(std::floor(point.y() * pictureSize.width() + 1e-6));
            all << text;
        }
        return all.join(u"; "_s);
    }

    QTemporaryDir folder;
    BWSettingsFile defaults{folder.filePath(u"settings.conf"_s)};
    const AttachedCameras cameras{{AttachedCameras::Type::High}};
    BWConfigManager config{defaults};
    BWProductInUse product{config};
    BWLocalizationManager texts{QString(), {u"en"_s}};
    BWLiveRenderer renderer;
    BWMainWindow window{renderer};
    BWCenteringClipView &view = window.centeringClipView();
    BWLiveViewController liveView{window, renderer, product};
    BWSceneController scene{window, liveView, renderer};
    BWDialogFilePanels panels;
    BWStatusLine statusLine{window.currentCameraLabel()};
    BWMeasuringController measuring{
        BWMeasuringController::Parts{window, liveView, scene, product, statusLine, config, texts, panels, defaults}};
};

/// The middle of a mark on the screen, in points: the weighted middle of its colour, near where it should be.
QPointF seenMark(const QImage &screen, QPointF near)
{
    const double ratio = screen.devicePixelRatio();
    constexpr int around = 22;
    QPointF sum;
    double weights = 0;
    const QPoint middle = (near * ratio).toPoint();
    for (int y = middle.y() - around; y <= middle.y() + around; ++y) {
        for (int x = middle.x() - around; x <= middle.x() + around; ++x) {
            const QColor color = screen.pixelColor(x, y);
            const double weight = std::max(0, (color.red() + color.blue()) / 2 - color.green());
            sum += weight * QPointF(x + 0.5, y + 0.5);
            weights += weight;
        }
    }
    return sum / weights / ratio;
}

} // namespace

class TestBWMeasuringWindow : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// A person clicks on the screen's pixel where a mark is seen: at most half a pixel of the picture or of the screen off.
    void clicksMeanWhatIsSeen_data()
    {
        QTest::addColumn<int>("zoom");
        for (const int zoom : {50, 100, 130, 200, 0})
            QTest::addRow("%d", zoom) << zoom;
    }
    void clicksMeanWhatIsSeen()
    {
        QFETCH(int, zoom);
        Bench bench;
        for (int i = 0; i < 15; ++i)
            zoom > 100 ? bench.liveView.zoomIn() : bench.liveView.zoomOut();
        while (zoom > 0 && int(bench.liveView.state().currentZoom()) != zoom)
            zoom > 100 ? bench.liveView.zoomOut() : bench.liveView.zoomIn();
        if (zoom == 0)
            bench.liveView.fitToWindow();
        bench.pick(u"length"_s);
        for (int look = 0; look < 16; ++look) {
            bench.liveView.onRotate(QString::number(look % 4 * 90));
            bench.liveView.onFlip(look / 4);
            bench.waitForPicture();
            const double ratio = bench.view.devicePixelRatioF();
            const double perPixel =
                std::hypot(bench.at(1, 0).x() - bench.at(0, 0).x(), bench.at(1, 0).y() - bench.at(0, 0).y());
            const QImage screen = bench.view.viewport()->grab().toImage();
            for (const QPoint &mark : marks) {
                const QPointF seen = seenMark(screen, bench.at(mark.x() + 0.5, mark.y() + 0.5)) * ratio;
                bench.click(QPointF(std::floor(seen.x()), std::floor(seen.y())) / ratio);
            }
            const BWPoints points = bench.measuring.measurements().last().points;
            for (int i = 0; i < 2; ++i) {
                const QPointF off = points[i] * pictureSize.width() - marks[i] - QPointF(0.5, 0.5);
                constexpr double slack = 0.02; // of finding a mark's middle
                const double allowed = std::max(0.5, 0.5 / perPixel / ratio) + slack;
                QVERIFY2(std::max(std::abs(off.x()), std::abs(off.y())) <= allowed,
                         qPrintable(u"look %1: off by %2, %3"_s.arg(look).arg(off.x()).arg(off.y())));
            }
            bench.window.menu().measuring->undo->trigger();
            QEvent leave(QEvent::Leave); // what lies over the marks now would disturb the next look
            QApplication::sendEvent(&bench.layer(), &leave);
        }
    }

    void everyToolMeasures_data()
    {
        const Rows<QString, QList<QPoint>, QString> row;
        row("length", u"length"_s, {{100, 100}, {200, 100}}, u"Length 1: 100.0 px"_s);
        row("path", u"path"_s, {{100, 120}, {200, 120}, {200, 220}}, u"Path 1: 200.0 px"_s);
        row("angle", u"angle"_s, {{300, 100}, {200, 100}, {200, 200}}, u"Angle 1: 90.0°"_s);
        row("circle", u"circle"_s, {{300, 200}, {400, 300}, {300, 400}}, u"Circle through three points 1: 200.0 px"_s);
        row("radius", u"radius"_s, {{300, 300}, {400, 300}}, u"Circle by its radius 1: 200"_s);
        row("polygon", u"polygon"_s, {{300, 200}, {400, 200}, {400, 300}, {300, 300}}, u"Polygon 1: 10000 px²"_s);
        row("count", u"count"_s, {{10, 20}, {40, 20}}, u"Count 1: 2"_s);
    }
    void everyToolMeasures()
    {
        const auto [kind, points, said] = Rows<QString, QList<QPoint>, QString>::current();
        Bench bench;
        bench.measure(kind, points);
        QVERIFY2(bench.said().startsWith(said), qPrintable(bench.said()));
        QCOMPARE(bench.measuring.measurements().size(), 1);
    }

    void otherWaysToPlace()
    {
        Bench bench;
        bench.pick(u"length"_s);
        bench.mouse(QEvent::MouseButtonPress, bench.at(100, 100)); // from end to end in one go
        bench.mouse(QEvent::MouseMove, bench.at(190, 230));
        bench.mouse(QEvent::MouseButtonRelease, bench.at(200, 100));
        bench.click(bench.at(100, 110));
        bench.click(bench.at(200, 113), Qt::ShiftModifier); // nearly level
        for (const bool accepts : {false, true}) {
            bench.measure(u"arrow"_s, {{50, 300}, {80, 320}});
            auto *field = bench.layer().findChild<QLineEdit *>();
            QTest::keyClicks(field, u"edge"_s);
            QTest::keyClick(field, accepts ? Qt::Key_Return : Qt::Key_Escape);
            QTRY_VERIFY(!bench.layer().findChild<QLineEdit *>());
        }
        QCOMPARE(bench.list(), u"length 100,100 200,100; length 100,110 200,110; arrowedge 50,300 80,320"_s);
    }

    void keysDoWhatTheMouseDoes()
    {
        Bench bench;
        bench.liveView.onRotate(u"90"_s); // arrow keys follow the screen
        bench.waitForPicture();
        bench.pick(u"length"_s);
        bench.mouse(QEvent::MouseMove, bench.at(100.5, 100.5));
        const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
            QTest::keyClick(&bench.layer(), key, modifiers);
        };
        press(Qt::Key_Space);
        press(Qt::Key_Down, Qt::ShiftModifier);
        press(Qt::Key_Left);
        press(Qt::Key_Return);
        QCOMPARE(bench.list(), u"length 100,100 90,99"_s);
        press(Qt::Key_Escape); // to the tool that selects
        QVERIFY(bench.window.menu().measuring->kind().isEmpty());
        press(Qt::Key_Tab);
        press(Qt::Key_Tab);
        QCOMPARE(bench.said().section(u',', 1), u" point 2 of 2"_s);
        press(Qt::Key_Up);
        QCOMPARE(bench.list(), u"length 100,100 91,99"_s);
        press(Qt::Key_Tab); // behind the last point the keyboard goes on
        QVERIFY(!bench.layer().hasFocus());
        bench.layer().setFocus();
        press(Qt::Key_Escape);
        QVERIFY(bench.strip().isAncestorOf(QApplication::focusWidget()));
        QTest::keyClick(&bench.window, Qt::Key_Z, Qt::ControlModifier);
        QTest::keyClick(&bench.window, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(bench.list(), QString());
        QTest::keyClick(&bench.window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        bench.click(bench.at(100, 100));
        QTest::keyClick(&bench.layer(), Qt::Key_Delete);
        QCOMPARE(bench.list(), QString());
    }

    void oddOrders()
    {
        Bench bench;
        bench.pick(u"length"_s);
        bench.click(bench.at(100, 100));
        bench.measure(u"radius"_s, {{200, 200}, {250, 200}}); // while placing: a new beginning
        QCOMPARE(bench.list(), u"radius 200,200 250,200"_s);
        bench.pick({});
        bench.mouse(QEvent::MouseButtonPress, bench.at(200, 200));
        bench.mouse(QEvent::MouseMove, bench.at(300, 300));
        bench.window.menu().measuring->undo->trigger(); // while dragging: takes the drag back, and no more
        bench.mouse(QEvent::MouseMove, bench.at(310, 300));
        bench.mouse(QEvent::MouseButtonRelease, bench.at(310, 300));
        QCOMPARE(bench.list(), u"radius 200,200 250,200"_s);
        bench.mouse(QEvent::MouseButtonPress, bench.at(200, 200));
        bench.mouse(QEvent::MouseMove, bench.at(300, 300));
        bench.measuring.setOpen(false);
        bench.mouse(QEvent::MouseMove, bench.at(310, 300));
        bench.mouse(QEvent::MouseButtonRelease, bench.at(310, 300));
        QCOMPARE(bench.list(), u"radius 200,200 250,200"_s);
        QVERIFY(bench.layer().isVisible() && bench.layer().testAttribute(Qt::WA_TransparentForMouseEvents));
        // The picture goes while a point is placed.
        bench.measuring.setOpen(true);
        bench.pick(u"length"_s);
        bench.click(bench.at(100, 100));
        const QPointF second = bench.at(200, 100);
        bench.scene.showLive(); // there is no camera
        bench.view.clear(bench.renderer);
        bench.mouse(QEvent::MouseMove, second);
        bench.click(second);
        QTest::keyClick(&bench.layer(), Qt::Key_Left);
        bench.show(u"a.jpg"_s);
        QCOMPARE(bench.list(), u"radius 200,200 250,200"_s);
    }

    void clicksTakeNoPictureWhileMeasuring()
    {
        Bench bench;
        bench.view.setLeftButtonClicks([] { return true; });
        const QSignalSpy pressed(&bench.view, &BWCenteringClipView::mousePressed);
        const auto click = [&] {
            QTest::qWait(250); // the program counts as just brought to the front
            const QPoint at = bench.view.viewport()->mapTo(&bench.window, QPoint(100, 100));
            QTest::mouseClick(bench.window.windowHandle(), Qt::LeftButton, {}, at);
            return pressed.count();
        };
        QCOMPARE(click(), 0);
        bench.measuring.setOpen(false);
        QCOMPARE(click(), 1);
    }

    void everyPictureHasItsOwn()
    {
        Bench bench;
        bench.measure(u"length"_s, {{100, 100}, {150, 100}});
        bench.show(u"b.jpg"_s);
        QCOMPARE(bench.list(), QString());
        bench.measure(u"length"_s, {{200, 100}, {250, 100}});
        bench.show(u"a.jpg"_s);
        QCOMPARE(bench.list(), u"length 100,100 150,100"_s);
        bench.freeze({640, 480});
        QCOMPARE(bench.list(), QString());
        bench.measure(u"length"_s, {{300, 100}, {350, 100}});
        bench.freeze({1600, 1200}); // of the same shape
        QCOMPARE(bench.list(), u"length 300,100 350,100"_s);
        bench.freeze({1280, 720});
        QCOMPARE(bench.list(), QString());
        bench.show(u"b.jpg"_s);
        QCOMPARE(bench.list(), u"length 200,100 250,100"_s);
    }

    void scaleIsChosenPerProduct()
    {
        Bench bench;
        bench.freeze({640, 480});
        auto &scales = *bench.strip().findChild<QComboBox *>();
        QCOMPARE(titles(scales), u"No scale: pixels|5 × 5 mm||Calibrate..."_s);
        QCOMPARE(scales.currentText(), u"5 × 5 mm"_s);
        bench.measure(u"length"_s, {{100, 100}, {455, 100}});
        QCOMPARE(bench.said(), u"Length 1: 5.00 mm"_s);
        bench.product.setCamera({}); // what is frozen keeps its scale
        bench.liveView.updateImageDisplay();
        QVERIFY(bench.measuring.scale().isCalibrated() && !bench.list().isEmpty());
        bench.product.setCamera(bench.cameras[0]);

        bench.config.setCurrentProductIdentifier(u"mx61"_s, QLatin1String(type));
        bench.product.reload();
        QCOMPARE(scales.currentText(), u"No scale: pixels"_s);
        QVERIFY(bench.window.currentCameraLabel().text().contains(u"pixels"_s)); // never silently
        bench.window.menu().measuring->calibrate->trigger();
        auto *dialog = bench.window.findChild<BWCalibrationDialog *>();
        const auto fields = dialog->findChildren<QLineEdit *>();
        fields.first()->setText(u"7.1 mm"_s);
        fields.last()->setText(u"50x"_s);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save)->click();
        QCOMPARE(scales.currentText(), u"50x"_s);
        QCOMPARE(bench.measuring.scale().millimetresPerWidth(), 7.1 * 640 / 355);
        BWCalibrations stored;
        QVERIFY(stored.fromJson(BWConfigManager(bench.defaults).calibrations()));
        QCOMPARE(stored.chosen(u"mx61"_s).name, u"50x"_s);

        bench.config.setCurrentProductIdentifier(u"dx10"_s, QLatin1String(type));
        bench.product.reload();
        QCOMPARE(scales.currentText(), u"5 × 5 mm"_s);
        scales.setCurrentIndex(0);
        Q_EMIT scales.activated(0);
        QVERIFY(!bench.measuring.scale().isCalibrated());
    }
};

QTEST_MAIN(TestBWMeasuringWindow)
#include "tst_BWMeasuringWindow.moc"
