#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestLiveViewGeometry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void zoomSteps()
    {
        const auto zoomed = [](unsigned start, void (BWLiveViewState::*step)(), int times) {
            BWLiveViewState state;
            state.setCurrentZoom(start);
            for (int i = 0; i < times; ++i)
                (state.*step)();
            return state.zoomText();
        };
        QCOMPARE(zoomed(100, &BWLiveViewState::zoomIn, 1), u"110%"_s);
        QCOMPARE(zoomed(100, &BWLiveViewState::zoomIn, 15), u"200%"_s);
        QCOMPARE(zoomed(195, &BWLiveViewState::zoomIn, 3), u"205%"_s);
        QCOMPARE(zoomed(100, &BWLiveViewState::zoomOut, 15), u"50%"_s);
        QCOMPARE(zoomed(55, &BWLiveViewState::zoomOut, 3), u"45%"_s);
    }

    void mirrorComesBeforeRotation()
    {
        // With y upwards: right-hand side mirrored to the left, then a quarter turn against the clock takes it down.
        BWLiveViewState state;
        state.setCurrentRotation(90);
        state.setCurrentFlip(1);
        const QPointF moved = BWLiveViewGeometry(QSize(640, 480), state).transform().map(QPointF(10, 0));
        QVERIFY(qAbs(moved.x()) < 1e-9);
        QVERIFY(qAbs(moved.y() + 10) < 1e-9);
        state.setCurrentFlip(7);
        QCOMPARE(state.currentFlip(), BWFlip::None);
    }

    void placeInTheViewport_data()
    {
        const Rows<QSize, QPoint, QPointF, QSize> row;
        // The middle of the scroll area is at (488.5, 266) of the viewport: the picture's lies 42 points below it.
        row("smaller", QSize(640, 480), QPoint(0, 0), QPointF(168.5, 308 - 240), QSize(0, 0));
        row("smaller, which cannot scroll", QSize(640, 480), QPoint(33, 7), QPointF(168.5, 68), QSize(0, 0));
        row("larger", QSize(2592, 1944), QPoint(100, 50), QPointF(-100, -50), QSize(1615, 1328));
        row("larger, too far", QSize(2592, 1944), QPoint(2000, 1900), QPointF(-1615, -1328), QSize(1615, 1328));
        row("larger one way only", QSize(800, 700), QPoint(0, 20), QPointF(88.5, -20), QSize(0, 84));
    }
    void placeInTheViewport()
    {
        const auto [image, scroll, origin, range] = Rows<QSize, QPoint, QPointF, QSize>::current();
        const BWLiveViewGeometry geometry(image, BWLiveViewState());
        const QSize viewport(977, 700 - BWLiveViewGeometry::barHeight);
        QCOMPARE(geometry.imageOrigin(viewport, scroll), origin);
        QCOMPARE(geometry.scrollRange(viewport), range);
    }

    void theMiddleStays()
    {
        const QSize viewport(977, 466);
        const BWLiveViewGeometry large(QSize(2592, 1944), BWLiveViewState());
        const QPointF middle = large.middle(viewport, {400, 1200});
        QCOMPARE(middle, QPointF((400 + 488.5) / 2592, (1200 + 233.0) / 1944));
        BWLiveViewState twice;
        twice.setCurrentZoom(200);
        QCOMPARE(BWLiveViewGeometry(QSize(2592, 1944), twice).scrollForMiddle(middle, viewport),
                 QPoint(2 * 888 + 1 - 488, 2 * 1433 - 233));
        // Where the picture fits that is its own; where it does not, the edge is the end.
        const BWLiveViewGeometry small(QSize(640, 480), BWLiveViewState());
        QCOMPARE(small.scrollForMiddle(middle, viewport), QPoint(0, 14));
        QCOMPARE(large.scrollForMiddle(small.middle(viewport, {0, 14}), viewport).x(), 808);
        QCOMPARE(large.scrollForMiddle({0, 1}, viewport), QPoint(0, 1478));
    }
};

QTEST_GUILESS_MAIN(TestLiveViewGeometry)
#include "tst_BWLiveViewGeometry.moc"
