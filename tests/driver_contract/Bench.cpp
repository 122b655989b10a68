#include "Bench.h"

#include <QTest>
#include <QThread>

namespace {

std::vector<std::unique_ptr<BWCameraBackend>> only(std::unique_ptr<BWCameraBackend> backend)
{
    std::vector<std::unique_ptr<BWCameraBackend>> backends;
    backends.push_back(std::move(backend));
    return backends;
}

} // namespace

Bench::Bench(BackendFixture &backendFixture, bool attached)
    : fixture(backendFixture), detector({fixture.description()}, only(fixture.makeBackend(attached)))
{
    const auto noteIn = [this, thread = QThread::currentThread()](QList<BWDetectedCameraPtr> &list) {
        return [this, thread, &list](const BWDetectedCameraPtr &device) {
            calledOnOtherThread |= QThread::currentThread() != thread;
            list.append(device);
        };
    };
    detector.setCameraFoundBlock(noteIn(found));
    detector.setCameraRemovedBlock(noteIn(removed));
    detector.startCamerasDetection();
}

bool Bench::openCamera()
{
    if (!QTest::qWaitFor([this] { return !found.isEmpty(); }, 20000))
        return false;
    camera = manager.addDetectedCamera(found.constFirst());
    probe.emplace(*camera);
    return true;
}

bool Bench::stream(int count)
{
    for (int i = 0; i < count; ++i) {
        const std::size_t before = probe->frames().size();
        fixture.pushFrames(1);
        if (!probe->waitForFrames(before + 1))
            return false;
    }
    return true;
}
