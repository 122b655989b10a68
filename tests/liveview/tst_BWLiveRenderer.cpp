#include "Rows.h"
#include "TestFrames.h"

#include "Model/LiveView/BWLiveRenderer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <QSignalSpy>
#include <QTest>
#include <thread>
#include <turbojpeg.h>

namespace {

const QSize size(64, 48);

QColor grey(int level)
{
    return {level, level, level};
}

BWFrame greyFrame(int level, std::atomic<int> &alive)
{
    const BWFrame frame = TestFrames::make(BWPixelFormat::YUYV, size, [level](int, int) { return grey(level); });
    ++alive;
    return {frame.info(), [frame, &alive] { --alive; }};
}

enum class Damage { None, CutOff, Table };

BWFrame jpegFrame(int level, int subsampling, Damage damage = Damage::None)
{
    const std::vector<uint8_t> pixels(static_cast<std::size_t>(size.width() * size.height() * 3),
                                      static_cast<uint8_t>(level));
    unsigned char *jpeg = nullptr;
    unsigned long length = 0;
    tjhandle handle = tjInitCompress();
    tjCompress2(handle, pixels.data(), size.width(), 0, size.height(), TJPF_RGB, &jpeg, &length, subsampling, 90, 0);
    tjDestroy(handle);
    auto bytes = std::make_shared<std::vector<uint8_t>>(jpeg, jpeg + length);
    tjFree(jpeg);
    if (damage == Damage::CutOff)
        bytes->resize(bytes->size() - 20);
    if (damage == Damage::Table) {
        constexpr std::array<uint8_t, 2> quantization{0xff, 0xdb};
        const auto marker = std::search(bytes->begin(), bytes->end(), quantization.begin(), quantization.end());
        *(marker + 3) = 9; // shorter than a table is
    }
    BWFrameInfo info{BWPixelFormat::MJPEG, size.width(), size.height(), {}, {}, {}, {}, 0};
    info.planes[0] = {bytes->data(), bytes->size(), 0};
    return {info, [bytes] {}};
}

BWRenderRequest wholePicture(unsigned zoom = 100)
{
    BWLiveViewState state;
    state.setCurrentZoom(zoom);
    return {BWLiveViewGeometry(size, state), QSize(400, 300), {}, 1.0};
}

} // namespace

class TestLiveRenderer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void newestFrameWins()
    {
        BWLiveRenderer renderer;
        QSignalSpy ready(&renderer, &BWLiveRenderer::imageReady);
        std::atomic<int> alive = 0;
        for (const int level : {20, 50})
            renderer.prepareBuffer(greyFrame(level, alive));
        QCOMPARE(renderer.statistics().dropped, 1U); // nothing is made for a hidden view
        renderer.setRequest(wholePicture());
        QTRY_COMPARE(ready.size(), 1);
        // Nobody has looked at the first picture: of what comes now only the newest is kept.
        for (const int level : {80, 110, 140})
            renderer.prepareBuffer(greyFrame(level, alive));
        QCOMPARE(renderer.statistics().dropped, 3U);
        QCOMPARE(alive.load(), 2);

        BWRenderedImage image;
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(image.image.pixelColor(10, 10).red() - 50) <= 2);
        QTRY_COMPARE(ready.size(), 2);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(image.image.pixelColor(10, 10).red() - 140) <= 2);
        QVERIFY(!renderer.takeImage(image));
        QCOMPARE(renderer.statistics().shown, 2U);
        QTRY_COMPARE(alive.load(), 1);
        renderer.clear();
        QTRY_COMPARE(alive.load(), 0);
    }

    void neverMoreThanThreeFrames()
    {
        BWLiveRenderer renderer;
        renderer.setRequest(wholePicture());
        BWRenderedImage image;
        const QObject screen; // what is still on its way to it goes with it
        connect(&renderer, &BWLiveRenderer::imageReady, &screen, [&] { renderer.takeImage(image); });
        std::atomic<int> alive = 0;
        std::atomic<int> most = 0;
        {
            const std::jthread camera([&](const std::stop_token &stop) {
                while (!stop.stop_requested()) {
                    renderer.prepareBuffer(greyFrame(100, alive));
                    most = std::max(most.load(), alive.load());
                }
            });
            QTRY_VERIFY(renderer.statistics().shown > 100 && renderer.statistics().dropped > 100);
        }
        QVERIFY2(most <= 3, qPrintable(QString::number(most))); // one waits, one is worked on, one shows
    }

    void nothingIsMadeWhileNobodyLooks()
    {
        BWLiveRenderer renderer;
        QSignalSpy ready(&renderer, &BWLiveRenderer::imageReady);
        renderer.setRequest(wholePicture());
        std::atomic<int> alive = 0;
        renderer.prepareBuffer(greyFrame(20, alive));
        QTRY_COMPARE(ready.size(), 1);
        renderer.prepareBuffer(greyFrame(50, alive)); // waits until the first one is taken
        renderer.setSeen(false);
        QCOMPARE(alive.load(), 1);
        for (const int level : {80, 110})
            renderer.prepareBuffer(greyFrame(level, alive));
        BWRenderedImage image;
        QVERIFY(!renderer.takeImage(image));
        renderer.clear(); // the thread has nothing left to do when the last frame is gone
        QTRY_COMPARE(alive.load(), 0);
        const BWLiveViewStatistics counts = renderer.statistics();
        QCOMPARE((QList{counts.received, counts.decoded, counts.shown, counts.dropped}), (QList<uint64_t>{4, 1, 0, 0}));

        renderer.setRequest(wholePicture(150));
        renderer.setSeen(true);
        renderer.prepareBuffer(greyFrame(140, alive));
        QTRY_COMPARE(ready.size(), 2);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(image.image.pixelColor(10, 10).red() - 140) <= 2);
    }

    void tornJpegs_data()
    {
        const Rows<int, unsigned> row;
        row("4:2:0", int(TJSAMP_420), 100U);
        row("4:2:2", int(TJSAMP_422), 100U);
        row("4:4:4", int(TJSAMP_444), 100U);
        row("grey", int(TJSAMP_GRAY), 100U);
        row("4:4:0, converted by the decoder", int(TJSAMP_440), 100U);
        row("4:2:2 at half size", int(TJSAMP_422), 50U);
    }
    void tornJpegs()
    {
        const auto [subsampling, zoom] = Rows<int, unsigned>::current();
        BWLiveRenderer renderer;
        QSignalSpy ready(&renderer, &BWLiveRenderer::imageReady);
        renderer.setRequest(wholePicture(zoom));
        BWRenderedImage image;
        const auto shownLevel = [&] { return image.image.pixelColor(20, 20).red(); };

        renderer.prepareBuffer(jpegFrame(100, subsampling));
        QTRY_COMPARE(ready.size(), 1);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(shownLevel() - 100) <= 3);
        renderer.prepareBuffer(jpegFrame(200, subsampling, Damage::Table));
        QTRY_COMPARE(renderer.statistics().bad, 1U);
        renderer.prepareBuffer(jpegFrame(200, subsampling, Damage::CutOff));
        QTRY_COMPARE(renderer.statistics().bad, 2U);
        QVERIFY(!renderer.takeImage(image));
        // Looking at it in another way draws the last good picture, not the torn one.
        renderer.setRequest(wholePicture(zoom == 100 ? 150 : 100));
        QTRY_COMPARE(ready.size(), 2);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(shownLevel() - 100) <= 3);
        QCOMPARE(renderer.statistics().shown, 1U);
        renderer.prepareBuffer(jpegFrame(150, subsampling));
        QTRY_COMPARE(ready.size(), 3);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(shownLevel() - 150) <= 3);
    }
};

QTEST_GUILESS_MAIN(TestLiveRenderer)
#include "tst_BWLiveRenderer.moc"
