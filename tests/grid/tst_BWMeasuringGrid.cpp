// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWMeasuringGrid.h"
#include "Rows.h"
#include "Views/MainWindow/BWCenteringClipView.h"

#include <algorithm>
#include <limits>
#include <QDeadlineTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <vector>

using namespace Qt::StringLiterals;
using Places = QList<double>;

namespace {

BWFrame grey(QSize size)
{
    auto bytes = std::make_shared<std::vector<uint8_t>>(size.width() * size.height(), 96);
    BWFrameInfo info{BWPixelFormat::GREY, size.width(), size.height(), {}, {}, {}, {}, 0};
    info.planes[0] = {bytes->data(), bytes->size(), size.width()};
    return {info, [bytes] {}};
}

Places sorted(Places places)
{
    std::sort(places.begin(), places.end());
    return places;
}

/// What is wrong with a grey picture in the middle of the viewport: each line must be red over its whole length, at the
/// place that the transform gives by its definition, and nothing else may be red.
QString faults(const QImage &viewport, const BWLiveViewGeometry &geometry, const BWMeasuringGrid &grid)
{
    const QImage image = viewport.convertToFormat(QImage::Format_RGB32);
    const QRgb red = QColor(Qt::red).rgb();
    const QSizeF frame = geometry.frameSize();
    const auto at = [&](double x, double y) { // in the upright image, y upwards
        const QPointF turned = geometry.transform().map(QPointF(x - frame.width() / 2, y - frame.height() / 2));
        return image.pixel(qFloor(image.width() / 2.0 + turned.x()), qFloor(image.height() / 2.0 - turned.y()));
    };
    if (qRed(at(frame.width() / 2, frame.height() / 2)) > 120)
        return u"no picture"_s;
    for (const double share : {0.001, 0.3, 0.5, 0.8, 0.999}) {
        for (const double x : grid.vertical())
            if (at(qMin(x + 0.125, frame.width() - 0.5), share * frame.height()) != red) // on the edge: the last pixels
                return u"no line at x = %1"_s.arg(x);
        for (const double y : grid.horizontal())
            if (at(share * frame.width(), y + 0.125) != red)
                return u"no line at y = %1"_s.arg(y);
    }
    qsizetype superfluous = grid.vertical().size() * grid.horizontal().size()
        - qRound64(grid.vertical().size() * frame.height()) - qRound64(grid.horizontal().size() * frame.width());
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        superfluous += std::count(line, line + image.width(), red);
    }
    return superfluous == 0 ? QString() : u"%1 red pixels too many"_s.arg(superfluous);
}

/// The same of what the view shows, as soon as its picture is the one for that layout.
QString faultsOf(const BWCenteringClipView &view, const BWLiveViewGeometry &geometry, const BWMeasuringGrid &grid)
{
    const QDeadlineTimer deadline(5000);
    QString found = u"nothing shown"_s;
    while (!found.isNull() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        found = faults(view.viewport()->grab().toImage(), geometry, grid);
    }
    return found;
}

} // namespace

class TestBWMeasuringGrid : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// The picture on the screen, in every orientation: each line over its whole length, and nothing else is red.
    void linesLieInThePicture_data()
    {
        const Rows<QString, QSize, unsigned, Places, Places> row;
        const auto add = [&row](const QString &product, QSize size, unsigned zoom, const Places &vertical,
                                const Places &horizontal) {
            const QString name = u"%1 %2x%3, %4 %"_s.arg(product).arg(size.width()).arg(size.height()).arg(zoom);
            row(qPrintable(name), product, size, zoom, vertical, horizontal);
        };
        add(u"dx12"_s, {640, 480}, 100, {124.5, 515.5}, {44.5, 435.5});
        add(u"dx12"_s, {720, 480}, 100, {146, 574}, {26, 454});
        add(u"dx10"_s, {640, 480}, 100, {142.5, 497.5}, {62.5, 417.5});
        add(u"dx10"_s, {1280, 1024}, 100, {285, 995}, {157, 867});
        add(u"dx10"_s, {1600, 1200}, 50, {45, 755}, {});
        add(u"dx10"_s, {1600, 1200}, 200, {535, 1245, 1955, 2665}, {135, 845, 1555, 2265});
        // Its edges lie on lines; 256 points are set by hand.
        add(u"square"_s, {1280, 1280}, 100, {256, 512, 768, 1024, 1280}, {256, 512, 768, 1024});
        add(u"square"_s, {1280, 1280}, 200, {128, 384, 640, 896, 1152, 1408, 1664, 1920, 2176, 2432},
            {128, 384, 640, 896, 1152, 1408, 1664, 1920, 2176, 2432});
    }
    void linesLieInThePicture()
    {
        const auto [product, size, zoom, vertical, horizontal] =
            Rows<QString, QSize, unsigned, Places, Places>::current();
        const double distance = product == u"square"_s
            ? 256
            : BWMeasuringGridTable().distance(product, u"%1x%2"_s.arg(size.width()).arg(size.height()));
        const QSizeF frame = QSizeF(size) * zoom / 100.0;
        const BWMeasuringGrid grid(frame, distance);
        QCOMPARE(sorted(grid.vertical()), vertical);
        QCOMPARE(sorted(grid.horizontal()), horizontal);

        BWLiveRenderer renderer;
        BWCenteringClipView view(renderer);
        view.setGridDistance(distance);
        view.show();
        renderer.prepareBuffer(grey(size));
        for (const int rotation : {0, 90, 180, 270}) {
            for (const int flip : {0, 1, 2, 3}) {
                BWLiveViewState state;
                state.setCurrentZoom(zoom);
                state.setCurrentRotation(rotation);
                state.setCurrentFlip(flip);
                const BWLiveViewGeometry geometry(size, state);
                const QSize viewport = geometry.footprint().toSize() + QSize(20, 20); // all of it can be seen
                view.resize(viewport + QSize(0, BWLiveViewGeometry::barHeight));
                view.setScene(BWScene(geometry));
                QCOMPARE(faultsOf(view, geometry, grid), QString());
            }
        }
    }

    void linesFollowTheScreensScale_data()
    {
        const Rows<double, QList<QRect>> row;
        // 100 x 80 points with lines at 30 and 70, 20 and 60 (from below), in the middle of 120 x 100 points; mirrored.
        row("1.5", 1.5, QList<QRect>{{119, 15, 2, 120}, {59, 15, 2, 120}, {15, 104, 150, 2}, {15, 44, 150, 2}});
        row("2", 2.0, QList<QRect>{{159, 20, 2, 160}, {79, 20, 2, 160}, {20, 139, 200, 2}, {20, 59, 200, 2}});
    }
    void linesFollowTheScreensScale()
    {
        const auto [ratio, lines] = Rows<double, QList<QRect>>::current();
        BWLiveViewState state;
        state.setCurrentFlip(1);
        const BWRenderRequest request(BWLiveViewGeometry({100, 80}, state), {120, 100}, {}, ratio);
        QCOMPARE(BWMeasuringGrid({100, 80}, 40).pixels(request), lines);
    }

    /// After a change of the layout the old picture is still there for a moment, and its grid must fit it.
    void gridStaysWithTheShownPicture()
    {
        const QSize size(200, 160);
        BWLiveRenderer renderer;
        BWCenteringClipView view(renderer);
        view.setGridDistance(40);
        view.resize(420, 340 + BWLiveViewGeometry::barHeight);
        view.show();
        BWLiveViewState state;
        const BWLiveViewGeometry before(size, state);
        view.setScene(BWScene(before));
        renderer.prepareBuffer(grey(size));
        const BWMeasuringGrid grid(before.frameSize(), 40);
        QCOMPARE(faultsOf(view, before, grid), QString());

        BWRenderedImage taken; // the view gets none of the pictures to come
        state.setCurrentZoom(200);
        view.setScene(BWScene(BWLiveViewGeometry(size, state)));
        const QDeadlineTimer deadline(10000);
        while (!renderer.takeImage(taken) && !deadline.hasExpired())
            QThread::yieldCurrentThread(); // no event is handled, so nothing is painted
        QCOMPARE(taken.request.frameSize, QSizeF(400, 320));
        QCOMPARE(faults(view.viewport()->grab().toImage(), before, grid), QString());

        // Nor is it squeezed into the layout of another size before the first picture of that size has come; there is no
        // grid meanwhile, whose distance is one for that size.
        view.setScene(BWScene(before));
        QCOMPARE(faultsOf(view, before, grid), QString());
        QSignalSpy drawn(&renderer, &BWLiveRenderer::imageReady);
        view.setScene(BWScene(BWLiveViewGeometry({320, 160}, {})));
        QTRY_VERIFY(!drawn.isEmpty());
        const auto shown = [&view] {
            const QImage image = view.viewport()->grab().toImage();
            const QRgb middle = image.pixel(image.rect().center());
            QRect picture;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    picture |= image.pixel(x, y) == middle ? QRect(x, y, 1, 1) : QRect();
            return picture.size();
        };
        QTRY_COMPARE(faults(view.viewport()->grab().toImage(), before, {}), QString());
        QCOMPARE(shown(), size);
        renderer.prepareBuffer(grey({320, 160}));
        const BWLiveViewGeometry after({320, 160}, {});
        QCOMPARE(faultsOf(view, after, BWMeasuringGrid(after.frameSize(), 40)), QString());
    }

    void unusableDistancesDrawNothing_data()
    {
        const Rows<QSizeF, double> row;
        row("not calibrated", QSizeF(640, 480), 0.0);
        row("too small to add up", QSizeF(640, 480), std::numeric_limits<double>::min());
        row("not a number", QSizeF(640, 480), std::numeric_limits<double>::quiet_NaN());
        row("infinite", QSizeF(640, 480), std::numeric_limits<double>::infinity());
        row("no camera", QSizeF(0, 0), 355.0);
    }
    void unusableDistancesDrawNothing()
    {
        const auto [frame, distance] = Rows<QSizeF, double>::current();
        const BWMeasuringGrid grid(frame, distance);
        QVERIFY(grid.vertical().isEmpty() && grid.horizontal().isEmpty());
    }
};

QTEST_MAIN(TestBWMeasuringGrid)
#include "tst_BWMeasuringGrid.moc"
