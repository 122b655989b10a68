#include "TestFrames.h"

#include "Model/LiveView/BWFrameRenderer.h"

#include <QTest>

namespace {

constexpr int block = 16;
const QSize blocks(12, 8);
const QSize imageSize(blocks.width() * block, blocks.height() * block);

/// A different colour for each block, none of them extreme, and no symmetry.
QColor blockColor(int column, int row)
{
    return {40 + column * 16, 60 + row * 20, 200 - column * 7 - row * 9};
}

QColor patternColor(int x, int y)
{
    return blockColor(x / block, y / block);
}

int distance(const QColor &a, const QColor &b)
{
    return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
}

BWLiveViewState stateOf(unsigned zoom, int rotation, int flip)
{
    BWLiveViewState state;
    state.setCurrentZoom(zoom);
    state.setCurrentRotation(rotation);
    state.setCurrentFlip(flip);
    return state;
}

/// Where the middle of a block lies in the whole turned image, by the transform as it is defined (y upwards).
QPointF expectedPlace(const BWLiveViewGeometry &geometry, int column, int row)
{
    const double factor = geometry.state().currentZoom() / 100.0;
    const QPointF fromMiddle(((column + 0.5) * block - imageSize.width() / 2.0) * factor,
                             -((row + 0.5) * block - imageSize.height() / 2.0) * factor);
    const QPointF turned = geometry.transform().map(fromMiddle);
    const QSizeF footprint = geometry.footprint();
    return {footprint.width() / 2 + turned.x(), footprint.height() / 2 - turned.y()};
}

} // namespace

class TestFrameRenderer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void orientation_data()
    {
        QTest::addColumn<unsigned>("zoom");
        QTest::addColumn<int>("rotation");
        QTest::addColumn<int>("flip");
        QTest::addColumn<QSize>("viewport");
        QTest::addColumn<QPoint>("scroll");
        QTest::addColumn<BWPixelFormat>("format");
        const auto add = [](BWPixelFormat format, unsigned zoom, int rotation, int flip) {
            const auto name = QStringLiteral("%1, zoom %2, rotation %3, flip %4, ")
                                  .arg(format == BWPixelFormat::YUYV ? QStringLiteral("YUYV") : QStringLiteral("YU12"))
                                  .arg(zoom)
                                  .arg(rotation)
                                  .arg(flip);
            QTest::newRow(qPrintable(name + QStringLiteral("all")))
                << zoom << rotation << flip << QSize(500, 500) << QPoint() << format;
            // Odd offsets: chroma belongs to pairs of pixels.
            QTest::newRow(qPrintable(name + QStringLiteral("part")))
                << zoom << rotation << flip << QSize(61, 47) << QPoint(13, 7) << format;
        };
        for (const BWPixelFormat format : {BWPixelFormat::YUYV, BWPixelFormat::YU12})
            for (const unsigned zoom : {50U, 100U, 110U, 200U})
                for (const int rotation : {0, 90, 180, 270})
                    for (const int flip : {0, 1, 2, 3})
                        add(format, zoom, rotation, flip);
    }
    void orientation()
    {
        QFETCH(unsigned, zoom);
        QFETCH(int, rotation);
        QFETCH(int, flip);
        QFETCH(QSize, viewport);
        QFETCH(QPoint, scroll);
        QFETCH(BWPixelFormat, format);
        const BWLiveViewGeometry geometry(imageSize, stateOf(zoom, rotation, flip));
        const BWRenderRequest request(geometry, viewport, scroll, 1.0);
        BWFrameRenderer renderer;
        QVERIFY(renderer.setFrame(TestFrames::make(format, imageSize, patternColor), request));
        const BWRenderedImage rendered = renderer.render(request);
        QVERIFY(!rendered.image.isNull());
        const QRect covered(rendered.position - request.target, rendered.image.size());
        QVERIFY(covered.contains(request.visible));
        int checked = 0;
        for (int row = 0; row < blocks.height(); ++row) {
            for (int column = 0; column < blocks.width(); ++column) {
                const QPoint place = expectedPlace(geometry, column, row).toPoint();
                if (!request.visible.contains(place))
                    continue;
                ++checked;
                const QColor shown = rendered.image.pixelColor(place - covered.topLeft());
                QVERIFY2(distance(shown, blockColor(column, row)) <= 4,
                         qPrintable(QStringLiteral("block %1, %2: %3 in place of %4")
                                        .arg(column)
                                        .arg(row)
                                        .arg(shown.name(), blockColor(column, row).name())));
            }
        }
        QVERIFY(checked >= 2);
    }

    void colors_data()
    {
        QTest::addColumn<BWPixelFormat>("format");
        QTest::addColumn<BWColorMatrix>("matrix");
        QTest::addColumn<BWColorRange>("range");
        struct Named {
            const char *name;
            BWPixelFormat format;
        };
        for (const Named &named : {Named{"YUYV", BWPixelFormat::YUYV}, Named{"UYVY", BWPixelFormat::UYVY},
                                   Named{"NV12", BWPixelFormat::NV12}, Named{"YU12", BWPixelFormat::YU12},
                                   Named{"RGB24", BWPixelFormat::RGB24}, Named{"BGR24", BWPixelFormat::BGR24}}) {
            for (const auto matrix : {BWColorMatrix::BT601, BWColorMatrix::BT709}) {
                for (const auto range : {BWColorRange::Limited, BWColorRange::Full}) {
                    const auto name =
                        QStringLiteral("%1 BT.%2 %3")
                            .arg(QLatin1String(named.name))
                            .arg(matrix == BWColorMatrix::BT601 ? 601 : 709)
                            .arg(range == BWColorRange::Full ? QStringLiteral("full") : QStringLiteral("limited"));
                    QTest::newRow(qPrintable(name)) << named.format << matrix << range;
                }
            }
        }
    }
    void colors()
    {
        QFETCH(BWPixelFormat, format);
        QFETCH(BWColorMatrix, matrix);
        QFETCH(BWColorRange, range);
        const QList<QColor> colors{Qt::black, Qt::white, {190, 40, 40}, {40, 180, 60}, {50, 60, 190}, {225, 170, 140}};
        const QSize size(static_cast<int>(colors.size()) * 8, 8);
        const BWRenderRequest request(BWLiveViewGeometry(size, {}), size, {}, 1.0);
        BWFrameRenderer renderer;
        const auto color = [&](int x, int) { return colors[x / 8]; };
        QVERIFY(renderer.setFrame(TestFrames::make(format, size, color, matrix, range), request));
        const QImage image = renderer.render(request).image;
        // libyuv has 8 bits for a coefficient and cuts the one for blue of limited BT.709 from 2.11 to 2.
        const int tolerance = matrix == BWColorMatrix::BT709 && range == BWColorRange::Limited ? 7 : 4;
        for (int i = 0; i < colors.size(); ++i) {
            const QColor shown = image.pixelColor(i * 8 + 4, 4);
            QVERIFY2(distance(shown, colors[i]) <= tolerance,
                     qPrintable(shown.name() + QStringLiteral(" in place of ") + colors[i].name()));
        }
    }

    /// As one that comes before or after a change of the camera's size.
    void aFrameOfAnotherSizeIsDrawnByALayoutOfItsOwn()
    {
        const QSize other(imageSize.width(), imageSize.height() / 2);
        const BWLiveViewGeometry expected(imageSize, stateOf(100, 90, 1));
        const BWRenderRequest request(BWLiveViewGeometry(other, expected.state()), QSize(500, 500), {}, 2.0);
        BWFrameRenderer renderer;
        QVERIFY(renderer.setFrame(TestFrames::make(BWPixelFormat::YUYV, imageSize, patternColor), request));
        const BWRenderedImage rendered = renderer.render(request);
        QCOMPARE(rendered.request, BWRenderRequest(expected, QSize(500, 500), {}, 2.0));
        QCOMPARE(QRect(rendered.position, rendered.image.size()),
                 QRect(QPoint(500, 500) - QPoint(imageSize.height(), imageSize.width()), 2 * imageSize.transposed()));
        const QPoint place = (expectedPlace(expected, 2, 3) * 2).toPoint();
        QVERIFY(distance(rendered.image.pixelColor(place), blockColor(2, 3)) <= 4);
    }

    void keepsTheLastGoodFrame()
    {
        const BWRenderRequest request(BWLiveViewGeometry(imageSize, {}), imageSize, {}, 1.0);
        BWFrameRenderer renderer;
        const BWFrame good = TestFrames::make(BWPixelFormat::YUYV, imageSize, patternColor);
        QVERIFY(renderer.setFrame(good, request));
        const QImage before = renderer.render(request).image.copy();

        BWFrameInfo info = good.info();
        info.planes[0].size -= 100; // a short read
        QVERIFY(!renderer.setFrame(BWFrame(info, [good] {}), request));
        QCOMPARE(renderer.render(request).image, before);

        BWFrameInfo noise{BWPixelFormat::MJPEG, 192, 128, {}, {}, {}, {}, 1};
        const std::vector<uint8_t> garbage(2000, 0x5a);
        noise.planes[0] = {garbage.data(), garbage.size(), 0};
        QVERIFY(!renderer.setFrame(BWFrame(noise, [] {}), request));
        QCOMPARE(renderer.render(request).image, before);
    }
};

QTEST_GUILESS_MAIN(TestFrameRenderer)
#include "test_frame_renderer.moc"
