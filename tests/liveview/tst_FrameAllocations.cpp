// Counts the allocations of a running live image, by thread and by the library that asks for the memory.

#include "AttachedCameras.h"
#include "Rows.h"

#include "Views/MainWindow/BWCenteringClipView.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <dlfcn.h>
#include <map>
#include <new>
#include <pthread.h>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

struct Allocation {
    const void *caller;
    std::array<char, 16> thread;
};

std::array<Allocation, 100'000> allocations;
std::atomic<std::size_t> allocationCount{0};
std::atomic<bool> counting{false};

void note(const void *caller)
{
    const std::size_t index = counting ? allocationCount++ : allocations.size();
    if (index >= allocations.size())
        return;
    allocations[index].caller = caller;
    pthread_getname_np(pthread_self(), allocations[index].thread.data(), allocations[index].thread.size());
}

QString libraryOf(const void *address)
{
    Dl_info info{};
    dladdr(address, &info);
    return QFileInfo(QString::fromLocal8Bit(info.dli_fname)).fileName().section(u'.', 0, 0);
}

constexpr int firstCounted = 100;
constexpr int lastCounted = 400;

/// Allocations per frame, from "thread, library".
std::map<QString, double> allocationsPerFrame()
{
    std::map<QString, double> result;
    for (std::size_t i = 0; i < std::min(allocationCount.load(), allocations.size()); ++i)
        result[QLatin1String(allocations[i].thread.data()) + u", "_s + libraryOf(allocations[i].caller)] +=
            1.0 / (lastCounted - firstCounted);
    return result;
}

} // namespace

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);

void *malloc(std::size_t size)
{
    note(__builtin_return_address(0));
    return __libc_malloc(size);
}

void *calloc(std::size_t count, std::size_t size)
{
    note(__builtin_return_address(0));
    return __libc_calloc(count, size);
}

void *realloc(void *block, std::size_t size)
{
    note(__builtin_return_address(0));
    return __libc_realloc(block, size);
}

void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    note(__builtin_return_address(0));
    return __libc_memalign(alignment, size);
}
}

// The standard library's own would hide who calls.
void *operator new(std::size_t size)
{
    note(__builtin_return_address(0));
    if (void *block = __libc_malloc(size))
        return block;
    throw std::bad_alloc();
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
        view.resize(977, 550);
        view.setLiveGeometry(BWLiveViewGeometry({640, 480}, state));
        view.show();
        QEventLoop loop;
        int shown = 0;
        connect(&renderer, &BWLiveRenderer::imageReady, this, [&] {
            ++shown;
            counting = shown >= firstCounted && shown < lastCounted;
            shown < lastCounted ? cameras.hand(0).pushFrames(1) : loop.quit();
        });
        cameras[0]->setOnCameraFrame([&](BWCamera &, const BWFrame &frame) { renderer.prepareBuffer(frame); });
        allocationCount = 0;
        cameras[0]->startWithCompletion({});
        cameras.hand(0).pushFrames(1);
        QTimer::singleShot(60'000, &loop, &QEventLoop::quit);
        loop.exec();
        counting = false;
        cameras[0]->setOnCameraFrame({});
        QCOMPARE(shown, lastCounted);

        // What libraries do is theirs: the pools of the JPEG library for each image, also where the simulated camera
        // encodes one, the rows of libyuv that scales and turns, and the regions of Qt that paints.
        double qt = 0;
        for (const auto &[place, count] : allocationsPerFrame()) {
            qInfo().noquote() << place << count;
            const bool byQt = place.startsWith(u"tst_Frame"_s) && place.contains(u"libQt6"_s);
            const bool byCodec = format == BWPixelFormat::MJPEG && place.endsWith(u"jpeg"_s);
            const bool byScaler = zoom != 100 && place == u"live view, libyuv"_s;
            QVERIFY2(byQt || byCodec || byScaler, qPrintable(place));
            qt += byQt ? count : 0;
        }
        QVERIFY(qt <= 20);
    }
};

QTEST_MAIN(TestFrameAllocations)
#include "tst_FrameAllocations.moc"
