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

/// What is wrong with the frame as it is drawn for that request, if each block must be where the geometry tells.
QString faultOf(const BWFrame &frame, const BWLiveViewGeometry &geometry, const BWRenderRequest &request)
{
    BWFrameRenderer renderer;
    if (!renderer.setFrame(frame, request))
        return QStringLiteral("not read");
    const BWRenderedImage rendered = renderer.render(request);
    const QRect covered(rendered.position - request.target, rendered.image.size());
    if (!covered.contains(request.visible))
        return QStringLiteral("not all that is to be seen");
    int checked = 0;
    for (int i = 0; i < blocks.width() * blocks.height(); ++i) {
        const int row = i / blocks.width();
        const int column = i % blocks.width();
        const QPoint place = expectedPlace(geometry, column, row).toPoint();
        if (!request.visible.contains(place))
            continue;
        ++checked;
        const QColor shown = rendered.image.pixelColor(place - covered.topLeft());
        if (distance(shown, blockColor(column, row)) > 4)
            return QStringLiteral("block %1, %2 is %3").arg(column).arg(row).arg(shown.name());
    }
    return checked >= 2 ? QString() : QStringLiteral("nothing to see");
}

} // namespace

class TestFrameRenderer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void orientation()
    {
        for (const BWPixelFormat format : {BWPixelFormat::YUYV, BWPixelFormat::YU12}) {
            const BWFrame frame = TestFrames::make(format, imageSize, patternColor);
            for (const unsigned zoom : {50U, 100U, 110U, 200U}) {
                for (const int rotation : {0, 90, 180, 270}) {
                    for (const int flip : {0, 1, 2, 3}) {
                        const BWLiveViewGeometry geometry(imageSize, stateOf(zoom, rotation, flip));
                        QString fault = faultOf(frame, geometry, {geometry, {500, 500}, {}, 1.0});
                        if (fault.isNull()) // odd offsets: chroma belongs to pairs of pixels
                            fault = faultOf(frame, geometry, {geometry, {61, 47}, {13, 7}, 1.0});
                        QVERIFY2(fault.isNull(),
                                 qPrintable(QStringLiteral("zoom %1, rotation %2, flip %3: %4")
                                                .arg(zoom)
                                                .arg(rotation)
                                                .arg(flip)
                                                .arg(fault)));
                    }
                }
            }
        }
    }

    void colors()
    {
        const QList<QColor> colors{Qt::black, Qt::white, {190, 40, 40}, {40, 180, 60}, {50, 60, 190}, {225, 170, 140}};
        const QSize size(static_cast<int>(colors.size()) * 8, 8);
        const BWRenderRequest request(BWLiveViewGeometry(size, {}), size, {}, 1.0);
        using Format = BWPixelFormat;
        for (const Format format :
             {Format::YUYV, Format::UYVY, Format::NV12, Format::YU12, Format::RGB24, Format::BGR24}) {
            for (const auto matrix : {BWColorMatrix::BT601, BWColorMatrix::BT709}) {
                for (const auto range : {BWColorRange::Limited, BWColorRange::Full}) {
                    BWFrameRenderer renderer;
                    const auto color = [&](int x, int) { return colors[x / 8]; };
                    QVERIFY(renderer.setFrame(TestFrames::make(format, size, color, matrix, range), request));
                    const QImage image = renderer.render(request).image;
                    // libyuv has 8 bits for a coefficient and cuts the one for blue of limited BT.709 from 2.11 to 2.
                    const int tolerance = matrix == BWColorMatrix::BT709 && range == BWColorRange::Limited ? 7 : 4;
                    for (int i = 0; i < colors.size(); ++i) {
                        const QColor shown = image.pixelColor(i * 8 + 4, 4);
                        QVERIFY2(distance(shown, colors[i]) <= tolerance,
                                 qPrintable(QStringLiteral("format %1, matrix %2, range %3: %4 in place of %5")
                                                .arg(int(format))
                                                .arg(int(matrix))
                                                .arg(int(range))
                                                .arg(shown.name(), colors[i].name())));
                    }
                }
            }
        }
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
    }
};

QTEST_GUILESS_MAIN(TestFrameRenderer)
#include "tst_BWFrameRenderer.moc"
