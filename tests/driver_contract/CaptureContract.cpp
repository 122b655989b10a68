// SPDX-License-Identifier: GPL-3.0-or-later
#include "Contract.h"
#include "MovieProbe.h"

#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using Changes = std::vector<bool>;

class CaptureContract : public Contract {
    Q_OBJECT

public:
    using Contract::Contract;

private:
    /// Records that many frames; few enough for the queue of a writer that is stuck.
    bool recordFrames(const QString &path, int count)
    {
        const std::size_t changes = probe().recordingChanges().size();
        camera().startRecording(path);
        probe().settle();
        return camera().recording() && probe().stream(1) && probe().waitForRecordingChanges(changes + 1)
            && probe().stream(count - 1);
    }

private Q_SLOTS:
    void everyRequestGetsItsOwnFrame()
    {
        QVERIFY(probe().start());
        const int requests = 5;
        for (int i = 0; i < requests; ++i)
            camera().takeSnapshot();
        probe().settle();
        for (int i = 0; i < requests; ++i) {
            QVERIFY(probe().stream(1));
            QVERIFY(probe().waitForSnapshots(i + 1));
        }
        QVERIFY(probe().stream(2));
        probe().settle();
        QCOMPARE(probe().snapshots().size(), requests);
        for (const QByteArray &jpeg : probe().snapshots())
            QCOMPARE(QImage::fromData(jpeg, "JPEG").size(), camera().defaultResolution().dimensions());
    }

    void movieIsCompleteOnReturn()
    {
        const QTemporaryDir folder;
        std::size_t changes = 0;
        QVERIFY(probe().start(2));
        for (const QString &path : {folder.filePath(u"first.mov"_s), folder.filePath(u"second.mov"_s)}) {
            QVERIFY(recordFrames(path, 3));
            camera().startRecording(folder.filePath(u"other.mov"_s));
            probe().settle();
            QVERIFY(probe().stream(2));
            camera().stopRecording();
            QVERIFY(!camera().recording());
            QVERIFY(isCount(std::size_t(MovieProbe::framesIn(path)), 5));
            QVERIFY(probe().waitForRecordingChanges(changes += 2));
            camera().stopRecording();
            QVERIFY(probe().stream(1));
        }
        QCOMPARE(probe().recordingChanges(), (Changes{true, false, true, false}));
        QVERIFY(!QFileInfo::exists(folder.filePath(u"other.mov"_s)));
        QVERIFY(camera().started());
    }

    void recordingEndsCleanly_data()
    {
        QTest::addColumn<QString>("event");
        for (const QString &event : {u"stop"_s, u"size"_s, u"unplug"_s, u"destruction"_s})
            QTest::newRow(qPrintable(event)) << event;
    }

    void recordingEndsCleanly()
    {
        QFETCH(QString, event);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.mov"_s);
        QVERIFY(probe().start());
        QVERIFY(recordFrames(path, 4));
        if (event == u"destruction"_s) {
            Changes changes;
            m_bench->probe.reset();
            camera().setOnCameraRecording(
                [&](BWCamera &, bool recording, const BWRecordingStatus &) { changes.push_back(recording); });
            m_bench->manager.removeDetectedCamera(m_bench->found.constFirst());
            m_bench->camera.reset();
            QCOMPARE(changes, Changes{false});
            QVERIFY(isCount(std::size_t(MovieProbe::framesIn(path)), 4));
            return;
        }
        if (event == u"stop"_s) {
            Changes reportedBefore;
            const auto stop = [&](const BWCamera::Completion &done) {
                camera().stopWithCompletion([&, done] {
                    reportedBefore = probe().recordingChanges();
                    done();
                });
            };
            QVERIFY(probe().complete(stop));
            QVERIFY2(!camera().recording(), "a program that quits on the completion would lose the end of the movie");
            QVERIFY2(reportedBefore == (Changes{true, false}),
                     "a program that quits on the completion would lose the whole movie");
        } else if (event == u"size"_s) {
            probe().setResolution(otherSize());
            camera().stopRecording();
        } else {
            m_fixture.unplug();
        }
        QVERIFY(probe().waitForRecordingChanges(2));
        QCOMPARE(probe().recordingChanges(), (Changes{true, false}));
        camera().stopRecording();
        QVERIFY(!camera().recording());
        QVERIFY(isCount(std::size_t(MovieProbe::framesIn(path)), 4));
    }

    void failedRecordingReportsItsEnd()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.mov"_s);
        QVERIFY2(!camera().startRecording(path), "without a stream nothing is recorded");
        QVERIFY(!camera().recording());
        QVERIFY(probe().start());
        QVERIFY(camera().startRecording(u"/nonexistent/folder/a.mov"_s));
        QVERIFY(probe().waitForRecordingChanges(1));
        QCOMPARE(probe().recordingChanges(), Changes{false});
        QVERIFY(!camera().recording());
        QVERIFY(probe().stream(1));

        QVERIFY(camera().startRecording(path));
        camera().stopRecording();
        QVERIFY2(probe().waitForRecordingChanges(2), "its end is reported although it never began");
        QVERIFY2(!m_fixture.isPushed() || !QFileInfo::exists(path), "a movie without a frame");
        QVERIFY(probe().stream(1));
        QVERIFY(!camera().recording());
    }
};

std::unique_ptr<Contract> makeCaptureContract(BackendFixture &fixture)
{
    return std::make_unique<CaptureContract>(fixture);
}

#include "CaptureContract.moc"
