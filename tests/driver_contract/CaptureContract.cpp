#include "CaptureContract.h"

#include "Bench.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The number of frames that can be read from a movie; -1 if it is none.
int framesInMovie(const QString &path)
{
    QProcess ffprobe;
    ffprobe.start(u"ffprobe"_s,
                  {u"-v"_s, u"error"_s, u"-count_frames"_s, u"-select_streams"_s, u"v:0"_s, u"-show_entries"_s,
                   u"stream=nb_read_frames"_s, u"-of"_s, u"csv=p=0"_s, path});
    if (!ffprobe.waitForFinished() || ffprobe.exitCode() != 0)
        return -1;
    bool ok = false;
    const int count = ffprobe.readAllStandardOutput().trimmed().toInt(&ok);
    return ok ? count : -1;
}

/// Records that many frames; few enough to fit into the queue of a writer that does nothing at all meanwhile.
bool recordFrames(Bench &bench, const QString &path, int count)
{
    bench.camera->startRecording(path);
    bench.probe->settle();
    return bench.camera->recording() && bench.stream(1) && bench.probe->waitForRecordingChanges(1)
        && bench.stream(count - 1);
}

} // namespace

void CaptureContract::everyRequestTakesAFrameOfItsOwn()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    const int requests = 5;
    for (int i = 0; i < requests; ++i)
        bench.camera->takeSnapshot();
    bench.probe->settle();
    for (int i = 0; i < requests; ++i) {
        QVERIFY(bench.stream(1));
        QVERIFY(bench.probe->waitForSnapshots(i + 1));
    }
    QVERIFY(bench.stream(2));
    bench.probe->settle();
    QCOMPARE(bench.probe->snapshots().size(), requests);
    for (QByteArray jpeg : bench.probe->snapshots()) {
        QBuffer buffer(&jpeg);
        QImageReader reader(&buffer, "jpeg");
        QCOMPARE(reader.read().size(), bench.camera->defaultResolution().dimensions());
    }
}

void CaptureContract::noSnapshotWithoutAStream()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    bench.camera->takeSnapshot();
    QVERIFY(bench.probe->start());
    QVERIFY(bench.stream(2));
    bench.camera->takeSnapshot();
    bench.probe->stop();
    QVERIFY(bench.probe->start());
    QVERIFY(bench.stream(2));
    bench.probe->stop();
    QVERIFY(bench.probe->snapshots().isEmpty());
}

void CaptureContract::movieIsCompleteOnReturn()
{
    const QTemporaryDir folder;
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    QVERIFY(bench.stream(2));
    for (int round = 0; round < 2; ++round) {
        const QString path = folder.filePath(u"%1.mov"_s.arg(round));
        const auto changes = static_cast<std::size_t>(round) * 2;
        bench.camera->startRecording(path);
        QVERIFY(bench.camera->recording());
        bench.camera->startRecording(folder.filePath(u"other.mov"_s));
        bench.probe->settle();
        QVERIFY(bench.stream(1));
        QVERIFY(bench.probe->waitForRecordingChanges(changes + 1));
        QVERIFY(bench.stream(4));
        bench.camera->stopRecording();
        QVERIFY(!bench.camera->recording());
        QCOMPARE(framesInMovie(path), 5);
        QVERIFY(bench.probe->waitForRecordingChanges(changes + 2));
        bench.camera->stopRecording();
        QVERIFY(bench.stream(1));
    }
    QCOMPARE(bench.probe->recordingChanges(), (std::vector<bool>{true, false, true, false}));
    QVERIFY(!QFileInfo::exists(folder.filePath(u"other.mov"_s)));
    QVERIFY(bench.camera->started());
}

void CaptureContract::recordingEndsCleanly_data()
{
    QTest::addColumn<QString>("event");
    for (const QString &event : {u"stop"_s, u"size"_s, u"unplug"_s, u"destruction"_s})
        QTest::newRow(qPrintable(event)) << event;
}

void CaptureContract::recordingEndsCleanly()
{
    QFETCH(QString, event);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.mov"_s);
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    QVERIFY(recordFrames(bench, path, 4));

    if (event == u"stop"_s) {
        bench.probe->stop();
        QVERIFY2(!bench.camera->recording(), "who quits on the completion would lose the end of the movie");
    } else if (event == u"size"_s) {
        bench.probe->setResolution(m_fixture.description()->availableResolutions.constLast());
    } else if (event == u"unplug"_s) {
        m_fixture.unplug();
    }

    if (event == u"destruction"_s) {
        std::vector<bool> changes;
        bench.probe.reset();
        bench.camera->setOnCameraRecording([&changes](BWCamera &, bool recording) { changes.push_back(recording); });
        bench.manager.removeDetectedCamera(bench.found.constFirst());
        bench.camera.reset();
        QCOMPARE(changes, std::vector<bool>{false});
    } else {
        if (event == u"size"_s)
            bench.camera->stopRecording();
        QVERIFY(bench.probe->waitForRecordingChanges(2));
        QCOMPARE(bench.probe->recordingChanges(), (std::vector<bool>{true, false}));
        bench.camera->stopRecording();
        QVERIFY(!bench.camera->recording());
    }
    QCOMPARE(framesInMovie(path), 4);
}

void CaptureContract::recordingThatCannotBeWritten()
{
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    QVERIFY(bench.probe->start());
    bench.camera->startRecording(u"/nonexistent/folder/a.mov"_s);
    QVERIFY(bench.probe->waitForRecordingChanges(1));
    QCOMPARE(bench.probe->recordingChanges(), std::vector<bool>{false});
    QVERIFY(!bench.camera->recording());
    QVERIFY(bench.stream(1));
}

void CaptureContract::recordingWithoutAFrame()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.mov"_s);
    Bench bench(m_fixture, true);
    QVERIFY(bench.openCamera());
    bench.camera->startRecording(path);
    QVERIFY2(!bench.camera->recording(), "without a stream nothing is recorded");
    QVERIFY(bench.probe->start());
    bench.camera->startRecording(path);
    bench.camera->stopRecording();
    QVERIFY(!bench.camera->recording());
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(bench.stream(1));
    QVERIFY(!bench.camera->recording());
}
