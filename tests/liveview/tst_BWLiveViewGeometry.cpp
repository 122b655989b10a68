// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWScene.h"
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

    void whatLiesThereStays()
    {
        const QSize viewport(977, 466);
        const QPointF middle(488.5, 233);
        const BWLiveViewGeometry large(QSize(2592, 1944), BWLiveViewState());
        const QPointF share = large.shareAt(middle, viewport, {400, 1200});
        QCOMPARE(share, QPointF((400 + 488.5) / 2592, (1200 + 233.0) / 1944));
        const QPointF pointer(900, 20);
        const BWLiveViewGeometry twice = at(QSize(2592, 1944), 200);
        QCOMPARE(twice.scrollFor(share, middle, viewport), QPoint(2 * 888 + 1 - 488, 2 * 1433 - 233));
        QCOMPARE(twice.scrollFor(large.shareAt(pointer, viewport, {400, 1200}), pointer, viewport),
                 QPoint(2 * 1300 - 900, 2 * 1220 - 20));
        // A picture that fits cannot move; where it does not, the edge is the end.
        const BWLiveViewGeometry small(QSize(640, 480), BWLiveViewState());
        QCOMPARE(small.scrollFor(share, middle, viewport), QPoint(0, 14));
        QCOMPARE(large.scrollFor(small.shareAt(middle, viewport, {0, 14}), middle, viewport).x(), 808);
        QCOMPARE(large.scrollFor({0, 1}, middle, viewport), QPoint(0, 1478));
    }

    void fitting_data()
    {
        const Rows<QSize, int, QString, QString, QString> row;
        // The percentage, and what a step to either side makes of it.
        row("large", QSize(2592, 1944), 0, u"24%"_s, u"30%"_s, u"24%"_s);
        row("large, turned", QSize(2592, 1944), 90, u"18%"_s, u"20%"_s, u"18%"_s);
        row("a little larger", QSize(640, 480), 0, u"97%"_s, u"100%"_s, u"90%"_s);
        row("exact", QSize(977, 466), 0, u"100%"_s, u"110%"_s, u"90%"_s);
        row("small", QSize(320, 200), 270, u"146%"_s, u"150%"_s, u"140%"_s);
        row("tiny", QSize(32, 20), 0, u"2330%"_s, u"2330%"_s, u"200%"_s);
        row("nothing", QSize(0, 0), 0, u"100%"_s, u"110%"_s, u"90%"_s);
    }
    void fitting()
    {
        const auto [image, rotation, fit, in, out] = Rows<QSize, int, QString, QString, QString>::current();
        const QSize viewport(977, 466);
        BWLiveViewState state;
        state.setCurrentRotation(rotation);
        state.setFitsWindow(true);
        state.adaptTo(image, viewport);
        QCOMPARE(state.zoomText(), fit);
        const BWLiveViewGeometry geometry(image, state);
        QCOMPARE(geometry.scrollRange(viewport), QSize(0, 0));
        if (!image.isEmpty())
            QVERIFY(qMax(geometry.footprint().width() / 977, geometry.footprint().height() / 466) > 0.9999);
        for (const bool larger : {true, false}) {
            BWLiveViewState next = state;
            larger ? next.zoomIn() : next.zoomOut();
            QCOMPARE(next.zoomText(), larger ? in : out);
            QCOMPARE(next.fitsWindow(), next == state);
        }
        state.setFitsWindow(false);
        state.adaptTo(image, {100, 100});
        QCOMPARE(state.zoomText(), fit);
    }

    void fingersZoomBetweenTheLimits()
    {
        BWLiveViewState state;
        state.scaleBy(1.234);
        QCOMPARE(state.zoomText(), u"123%"_s);
        state.scaleBy(9);
        QCOMPARE(state.zoomText(), u"200%"_s);
        state.scaleBy(0.01);
        QCOMPARE(state.zoomText(), u"50%"_s);
        state.setScale(0.2); // as by fitting
        state.scaleBy(0.5);
        QCOMPARE(state.zoomText(), u"20%"_s);
        state.scaleBy(2);
        QCOMPARE(state.zoomText(), u"40%"_s);
    }

    void theReferenceFollows()
    {
        const QSize viewport(1002, 466);
        for (const BWScene::Mode mode : {BWScene::Mode::SideBySide, BWScene::Mode::Overlay, BWScene::Mode::Divider}) {
            BWScene scene(at(QSize(1600, 1200), 50));
            scene.mode = mode;
            scene.referencePicture = BWLiveViewGeometry(QSize(800, 600), BWLiveViewState()); // the same field of view
            QCOMPARE(scene.referencePlace(viewport, {7, 9}), scene.mainPlace(viewport, {7, 9}));
            QCOMPARE(scene.referenceRequest(viewport, {7, 9}, 2).imageSize, QSize(1600, 1200));

            // Moved and made larger, it keeps its place in the picture at another zoom and position.
            const BWPicturePlace main = scene.mainPlace(viewport, {7, 9});
            scene.alignment.align(main, main.movedBy({40, -20}).scaledBy(1.5, main.middle));
            scene.mainPicture = at(QSize(1600, 1200), 100);
            const BWPicturePlace later = scene.mainPlace(viewport, {300, 200});
            const BWPicturePlace reference = scene.referencePlace(viewport, {300, 200});
            QCOMPARE(reference.width, 1.5 * 1600);
            QCOMPARE(reference.middle, later.middle + QPointF(2 * 1.5 * 40, 2 * 1.5 * -20));
        }
    }

private:
    static BWLiveViewGeometry at(QSize image, unsigned percent)
    {
        BWLiveViewState state;
        state.setCurrentZoom(percent);
        return {image, state};
    }
};

QTEST_GUILESS_MAIN(TestLiveViewGeometry)
#include "tst_BWLiveViewGeometry.moc"
