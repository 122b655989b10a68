// SPDX-License-Identifier: GPL-3.0-or-later
#include "MeasuringBench.h"
#include "TouchScreen.h"

#include <qpa/qwindowsysteminterface_p.h>
#include <QStyleHints>

class TestBWMeasuringByHand : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fingersAndPens_data()
    {
        const Rows<QString, QString, QString>
            row; // the tool, what fingers do in pixels of the picture, what is measured
        row("taps", u"length"_s, u"a100,100 a- a200,100 a-"_s, u"length 100,100 200,100"_s);
        row("set where it is lifted", u"length"_s, u"a90,90 a120,130 a100,100 a- a200,100 a-"_s,
            u"length 100,100 200,100"_s);
        row("two on one spot complete", u"path"_s, u"a100,100 a- a200,100 a- a202,100 a-"_s, u"path 100,100 200,100"_s);
        row("a pinch sets nothing", u"count"_s, u"a100,100 b200,200 a90,90+b210,210 a- b-"_s, QString());
        row("nor does a late finger", u"count"_s, u"a100,100 a140,100 b200,200 a- b-"_s, QString());
        row("a finger takes a point", QString(), u"a312,309 a350,350 a-"_s, u"length 338,341 400,300"_s);
        row("and gives it back", QString(), u"a312,309 a350,350 b400,400 a- b-"_s, u"length 300,300 400,300"_s);
        row("beside it, it does not", QString(), u"a312,320 a350,350 a-"_s, u"length 300,300 400,300"_s);
    }
    void fingersAndPens()
    {
        const auto [tool, steps, measured] = Rows<QString, QString, QString>::current();
        Bench bench;
        QGuiApplication::styleHints()->setMouseDoubleClickInterval(60'000); // however slow this machine is
        QGuiApplication::styleHints()->setMousePressAndHoldInterval(60'000);
        QTest::qWait(250); // the program counts as just brought to the front
        bench.pick(u"length"_s);
        for (const double x : {300.3, 400.3}) {
            if (tool.isEmpty())
                bench.click(bench.at(x, 300.3));
        }
        bench.pick(tool);
        const auto inPixel = [&bench](QPointF place) {
            const QPointF at = bench.at(place.x(), place.y());
            return QPointF(qCeil(at.x() - 0.01), qCeil(at.y() - 0.01));
        };
        TouchScreen(bench.layer(), inPixel).touch(steps);
        bench.mouse(QEvent::MouseButtonDblClick, {}); // completes whatever was begun
        QCOMPARE(bench.list(), measured);
    }

    /// Qt makes a mouse of it, as on X11 and Wayland.
    void aPenIsAFineMouse()
    {
        QWindowSystemInterfacePrivate::TabletEvent::setPlatformSynthesizesMouse(false);
        const QPointingDevice pen(u"pen"_s, 7, QInputDevice::DeviceType::Stylus, QPointingDevice::PointerType::Pen,
                                  QInputDevice::Capability::Position | QInputDevice::Capability::Pressure, 1, 2);
        Bench bench;
        const auto to = [&](QPointF place, Qt::MouseButtons buttons) {
            const QPointF at = bench.layer().mapTo(&bench.window, bench.at(place.x(), place.y()));
            const double ratio = bench.window.devicePixelRatioF();
            QWindowSystemInterface::handleTabletEvent(bench.window.windowHandle(), &pen, at * ratio,
                                                      bench.window.mapToGlobal(at) * ratio, buttons, 0.3, 0, 0, 0, 0,
                                                      0);
            QCoreApplication::processEvents();
        };
        bench.pick(u"length"_s);
        const QImage before = bench.screen();
        to({300, 200}, {});
        QTRY_VERIFY(bench.screen() != before); // hovering shows the magnifier
        for (const QPointF place : {QPointF(100.375, 100.625), QPointF(200.125, 150.875)}) {
            to(place, Qt::LeftButton);
            to(place, {});
        }
        const BWPoints points = bench.measuring.measurements().value(0).points;
        QCOMPARE(points.value(0) * pictureSize.width(), QPointF(100.375, 100.625));
        QVERIFY(!bench.window.menu().pictureMenu->isVisible());
        to({250, 250}, Qt::RightButton); // that of its barrel
        QVERIFY(bench.window.menu().pictureMenu->isVisible());
    }
};

QTEST_MAIN(TestBWMeasuringByHand)
#include "tst_BWMeasuringByHand.moc"
