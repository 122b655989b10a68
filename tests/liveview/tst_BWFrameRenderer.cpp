// SPDX-License-Identifier: GPL-3.0-or-later
#include "Rows.h"
#include "TestFrames.h"
#include "TestJpeg.h"

#include "Model/LiveView/BWFrameRenderer.h"

#include <QTest>
#include <sys/mman.h>
#include <utility>

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

/// What the viewport shows, on a magenta ground.
QImage seen(BWFrameRenderer &renderer, const BWRenderRequest &request, QSize viewport)
{
    const BWRenderedImage rendered = renderer.render(request);
    QImage image(viewport, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    for (int y = 0; y < viewport.height(); ++y)
        for (int x = 0; x < viewport.width(); ++x)
            if (const QPoint from = QPoint(x, y) - rendered.position; rendered.image.rect().contains(from))
                image.setPixel(x, y, rendered.image.pixel(from));
    return image;
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

    void partsAreAsTheWhole_data()
    {
        const Rows<BWFrame> row;
        const QSize size(211, 157);
        const auto jpeg = [&](const TestJpeg::Options &options) {
            return TestJpeg::frame(TestJpeg::encode(TestJpeg::noise(size, 1), options), size);
        };
        row("4:2:0", jpeg({2, 2}));
        row("4:2:2", jpeg({2, 1}));
        row("4:4:0", jpeg({1, 2}));
        row("another size than announced", TestJpeg::frame(TestJpeg::encode(TestJpeg::noise({301, 99}, 1)), size));
        const QImage noise = TestJpeg::noise({212, 158}, 1);
        row("YUYV",
            TestFrames::make(BWPixelFormat::YUYV, noise.size(), [&](int x, int y) { return noise.pixelColor(x, y); }));
        row("NV12", TestFrames::make(BWPixelFormat::NV12, size, [&](int x, int y) { return noise.pixelColor(x, y); }));
    }
    void partsAreAsTheWhole()
    {
        const auto [frame] = Rows<BWFrame>::current();
        const QSize viewport(61, 47);
        BWFrameRenderer renderer;
        for (const unsigned zoom : {50U, 60U, 90U, 100U, 110U, 150U, 200U}) {
            for (int i = 0; i < 16; ++i) {
                const BWLiveViewGeometry geometry(frame.size(), stateOf(zoom, i / 4 * 90, i % 4));
                const QSize all = geometry.footprint().toSize();
                const QPoint last = QPoint(all.width(), all.height()) - QPoint(viewport.width(), viewport.height());
                BWFrameRenderer ofTheWhole;
                const BWRenderRequest wholeRequest(geometry, all, {}, 1.0);
                QVERIFY(ofTheWhole.setFrame(frame, wholeRequest));
                const QImage whole = seen(ofTheWhole, wholeRequest, all);
                bool newFrame = true;
                for (const QPoint scroll : {QPoint(0, 0), QPoint(1, 3), QPoint(17, 16), last / 2, last}) {
                    const BWRenderRequest request(geometry, viewport, scroll, 1.0);
                    if (std::exchange(newFrame, !newFrame)) // the others move the view over the same frame
                        QVERIFY(renderer.setFrame(frame, request));
                    QVERIFY2(seen(renderer, request, viewport) == whole.copy(QRect(scroll, viewport)),
                             qPrintable(QString::asprintf("zoom %u, look %d, %d,%d", zoom, i, scroll.x(), scroll.y())));
                }
            }
        }
    }

    void smallStepsNeedNoDecoding()
    {
        const QSize size(640, 480);
        const QSize viewport(200, 100);
        const BWFrame frame = TestJpeg::frame(TestJpeg::encode(TestJpeg::noise(size, 1)), size);
        const BWLiveViewGeometry geometry(size, {});
        const auto at = [&](int x, int y) { return BWRenderRequest(geometry, viewport, {x, y}, 1.0); };
        BWFrameRenderer renderer;
        for (int i = 0; i < 2; ++i)
            QVERIFY(renderer.setFrame(frame, at(200, 200)));
        QVERIFY(renderer.render(at(200, 200)).image.height() < 120); // only what is seen
        const BWRenderedImage first = renderer.render(at(210, 220));
        QCOMPARE(renderer.render(at(230, 240)).image.constBits(), first.image.constBits());
        QVERIFY(renderer.render(at(430, 340)).image.constBits() != first.image.constBits());
    }

    void tornFrames()
    {
        const QSize viewport(160, 60);
        const QSize size(160, 160);
        const auto jpegOf = [&](unsigned seed) { return TestJpeg::encode(TestJpeg::noise(size, seed), {2, 1}); };
        const auto frameOf = [&](const QByteArray &jpeg) { return TestJpeg::frame(jpeg, size); };
        const auto at = [&](int y) { return BWRenderRequest(BWLiveViewGeometry(size, {}), viewport, {0, y}, 1.0); };
        BWFrameRenderer renderer;
        QVERIFY(renderer.setFrame(frameOf(jpegOf(1)), at(2)));
        const QImage first = seen(renderer, at(0), viewport);
        const QByteArray half = jpegOf(2).first(jpegOf(2).size() / 2);
        QVERIFY(renderer.setFrame(frameOf(half), at(0))); // torn below, in what is read for the next step,
        const QImage second = seen(renderer, at(0), viewport);
        QVERIFY(second != first);
        const QImage moved = seen(renderer, at(40), viewport); // until the view moves there
        QCOMPARE(moved.copy(0, 0, 160, 20), second.copy(0, 40, 160, 20));
        QCOMPARE(moved.pixelColor(80, 59), QColor(128, 128, 128));
        QVERIFY(renderer.setFrame(frameOf(jpegOf(1)), at(0)));
        QVERIFY(!renderer.setFrame(frameOf(half), at(40))); // within
        QVERIFY(!renderer.setFrame(frameOf(half), at(100))); // above
        QVERIFY(!renderer.setFrame(frameOf(jpegOf(3).first(200)), at(0)));
        QCOMPARE(seen(renderer, at(0), viewport), first);
    }

    void frameOfAnotherShape()
    {
        const BWFrame frame = TestJpeg::frame(TestJpeg::encode(TestJpeg::noise({640, 480}, 1)), {40, 20});
        const BWRenderRequest request(BWLiveViewGeometry(frame.size(), {}), {200, 50}, {}, 1.0);
        BWFrameRenderer renderer;
        QVERIFY(renderer.setFrame(frame, request));
        QCOMPARE(renderer.render(request).image.size(), QSize(40, 20));
    }

    void nothingBehindAFrameIsRead()
    {
        constexpr std::size_t page = 4096;
        auto *const bytes = static_cast<uint8_t *>(
            ::mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        QCOMPARE(::mprotect(bytes + page, page, PROT_NONE), 0);
        BWFrameInfo info{BWPixelFormat::XBGR32, 64, 16, {}, {}, {}, {}, 0};
        info.planes[0] = {bytes, page, 256};
        const BWFrame frame(info, [=] { ::munmap(bytes, 2 * page); });
        for (unsigned zoom = 20; zoom <= 200; ++zoom) {
            const BWRenderRequest request(BWLiveViewGeometry(frame.size(), stateOf(zoom, 0, 0)), {9, 5}, {200, 50},
                                          1.0);
            BWFrameRenderer renderer;
            QVERIFY(renderer.setFrame(frame, request));
            QVERIFY(!renderer.render(request).image.isNull());
        }
    }

    void losesTrustInACamera()
    {
        const QSize size(160, 160);
        const QByteArray jpeg = TestJpeg::encode(TestJpeg::noise(size, 1), {2, 1});
        const BWFrame good = TestJpeg::frame(jpeg, size);
        // As if data had been lost in the part that is seen: only the end does not fit.
        const BWFrame bad = TestJpeg::frame(QByteArray(jpeg).insert(jpeg.size() - 2, QByteArray(40, 'x')), size);
        const BWRenderRequest request(BWLiveViewGeometry(size, {}), {160, 60}, {}, 1.0);
        BWFrameRenderer renderer;
        QVERIFY(renderer.setFrame(good, request));
        int taken = 0;
        while (taken < 99 && renderer.setFrame(bad, request))
            ++taken;
        QVERIFY(taken > 0 && taken < 20);
        for (int i = 0; i < 20; ++i)
            QVERIFY(!renderer.setFrame(bad, request) && renderer.setFrame(good, request));
    }

    void halvedDetailIsAveraged()
    {
        // Lines of one pixel would show or vanish if rows or columns were left out.
        for (const bool upright : {true, false}) {
            const auto lines = [&](int x, int y) { return (upright ? x : y) % 2 ? Qt::white : Qt::black; };
            const BWLiveViewGeometry geometry(imageSize, stateOf(50, 0, 0));
            const BWRenderRequest request(geometry, imageSize, {}, 1.0);
            BWFrameRenderer renderer;
            QVERIFY(renderer.setFrame(TestFrames::make(BWPixelFormat::YUYV, imageSize, lines), request));
            const QImage image = renderer.render(request).image;
            QCOMPARE(image.size(), imageSize / 2);
            for (int i = 0; i < image.height(); ++i)
                QVERIFY(distance(image.pixelColor(i, i), QColor(127, 127, 127)) <= 3);
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
