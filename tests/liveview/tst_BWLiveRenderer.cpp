// SPDX-License-Identifier: GPL-3.0-or-later
#include "Rows.h"
#include "TestFrames.h"
#include "TestJpeg.h"

#include "Model/LiveView/BWLiveRenderer.h"

#include <algorithm>
#include <atomic>
#include <QSignalSpy>
#include <QTest>
#include <thread>

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

BWFrame jpegFrame(int level, Damage damage = Damage::None)
{
    QImage image(size, QImage::Format_RGB888);
    image.fill(grey(level));
    QByteArray jpeg = TestJpeg::encode(image, {2, 1});
    if (damage == Damage::CutOff)
        jpeg.chop(20);
    if (damage == Damage::Table)
        jpeg[jpeg.indexOf("\xff\xdb") + 3] = 9; // shorter than a table is
    return TestJpeg::frame(jpeg, size);
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
            QTRY_VERIFY_WITH_TIMEOUT(renderer.statistics().shown > 100 && renderer.statistics().dropped > 100, 30000);
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
        const Rows<unsigned> row;
        row("as it is", 100U);
        row("at half size", 50U);
    }
    void tornJpegs()
    {
        const auto [zoom] = Rows<unsigned>::current();
        BWLiveRenderer renderer;
        QSignalSpy ready(&renderer, &BWLiveRenderer::imageReady);
        renderer.setRequest(wholePicture(zoom));
        BWRenderedImage image;
        const auto shownLevel = [&] { return image.image.pixelColor(20, 20).red(); };

        renderer.prepareBuffer(jpegFrame(100));
        QTRY_COMPARE(ready.size(), 1);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(shownLevel() - 100) <= 3);
        renderer.prepareBuffer(jpegFrame(200, Damage::Table));
        QTRY_COMPARE(renderer.statistics().bad, 1U);
        renderer.prepareBuffer(jpegFrame(200, Damage::CutOff));
        QTRY_COMPARE(renderer.statistics().bad, 2U);
        QVERIFY(!renderer.takeImage(image));
        // Looking at it in another way draws the last good picture, not the torn one.
        renderer.setRequest(wholePicture(zoom == 100 ? 150 : 100));
        QTRY_COMPARE(ready.size(), 2);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(shownLevel() - 100) <= 3);
        QCOMPARE(renderer.statistics().shown, 1U);
        renderer.prepareBuffer(jpegFrame(150));
        QTRY_COMPARE(ready.size(), 3);
        QVERIFY(renderer.takeImage(image));
        QVERIFY(qAbs(shownLevel() - 150) <= 3);
    }
};

QTEST_GUILESS_MAIN(TestLiveRenderer)
#include "tst_BWLiveRenderer.moc"
