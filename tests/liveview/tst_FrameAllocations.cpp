// SPDX-License-Identifier: GPL-3.0-or-later
// Counts the allocations of a running live image, by thread and by the library that asks for the memory.

#include "AttachedCameras.h"
#include "Rows.h"

#include "Views/MainWindow/BWCenteringClipView.h"

#include <atomic>
#include <dlfcn.h>
#include <map>
#include <pthread.h>
#include <QEventLoop>
#include <QTimer>

namespace {

struct Allocation {
    const void *caller;
    char thread[16];
};

std::array<Allocation, 100'000> allocations;
std::atomic<std::size_t> allocationCount{0};
std::atomic<bool> counting{false};

void *noted(void *block, const void *caller)
{
    const std::size_t index = counting ? allocationCount++ : allocations.size();
    if (index < allocations.size()) {
        allocations[index].caller = caller;
        pthread_getname_np(pthread_self(), allocations[index].thread, sizeof(Allocation::thread));
    }
    return block;
}

QString placeOf(const Allocation &allocation)
{
    Dl_info info{};
    dladdr(allocation.caller, &info);
    const QString library = QString::fromLocal8Bit(info.dli_fname).section(u'/', -1).section(u'.', 0, 0);
    return QStringLiteral("%1, %2").arg(QLatin1String(allocation.thread), library);
}

} // namespace

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_realloc(void *block, std::size_t size);

void *malloc(std::size_t size)
{
    return noted(__libc_malloc(size), __builtin_return_address(0));
}

void *realloc(void *block, std::size_t size)
{
    return noted(__libc_realloc(block, size), __builtin_return_address(0));
}
}

// The standard library's own would hide who calls it.
void *operator new(std::size_t size)
{
    return noted(__libc_malloc(size), __builtin_return_address(0));
}

class TestFrameAllocations : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void runningStream_data()
    {
        const Rows<BWPixelFormat, unsigned> row;
        row("YUYV", BWPixelFormat::YUYV, 100U);
        row("YUYV at half size", BWPixelFormat::YUYV, 50U);
        row("MJPEG", BWPixelFormat::MJPEG, 100U);
        row("MJPEG, scaled and turned", BWPixelFormat::MJPEG, 110U);
    }
    void runningStream()
    {
        const auto [format, zoom] = Rows<BWPixelFormat, unsigned>::current();
        BWLiveViewState state;
        state.setCurrentZoom(zoom);
        state.setCurrentRotation(zoom > 100 ? 90 : 0);
        const AttachedCameras cameras({AttachedCameras::Type::Ultra}, format);
        BWLiveRenderer renderer;
        BWCenteringClipView view(renderer);
        view.setScene(BWScene(BWLiveViewGeometry({640, 480}, state)));
        view.show();
        constexpr int first = 100;
        constexpr int last = 400;
        QEventLoop loop;
        int shown = 0;
        connect(&renderer, &BWLiveRenderer::imageReady, this, [&] {
            ++shown;
            counting = shown >= first && shown < last;
            shown < last ? cameras.hand(0).pushFrames(1) : loop.quit();
        });
        cameras[0]->setOnCameraFrame([&](BWCamera &, const BWFrame &frame) { renderer.prepareBuffer(frame); });
        cameras[0]->startWithCompletion({});
        cameras.hand(0).pushFrames(1);
        QTimer::singleShot(60'000, &loop, &QEventLoop::quit);
        loop.exec();
        cameras[0]->setOnCameraFrame({});
        QCOMPARE(shown, last);

        std::map<QString, double> places;
        for (std::size_t i = allocationCount.exchange(0); i > 0; --i)
            places[placeOf(allocations[i - 1])] += 1.0 / (last - first);
        // What libraries do is theirs: the pools of the JPEG library for each image, also where the simulated camera
        // encodes one, the rows of libyuv that scales and turns, and the regions of Qt that paints.
        for (const auto &[place, count] : places) {
            qInfo().noquote() << place << count;
            const bool byCodec = format == BWPixelFormat::MJPEG && place.endsWith(u"jpeg");
            const bool byScaler = zoom != 100 && place == u"live view, libyuv";
            const bool byQt = place.startsWith(u"tst_") && place.contains(u"libQt6");
            QVERIFY2(byCodec || byScaler || (byQt && count <= 16), qPrintable(place));
        }
    }
};

QTEST_MAIN(TestFrameAllocations)
#include "tst_FrameAllocations.moc"
