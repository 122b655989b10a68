// SPDX-License-Identifier: GPL-3.0-or-later
#include "OpenedCamera.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

/// An installation that lacks the library for movies: this program does not look where it is.
class TestWithoutMovies : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recordingSaysSoAndTheCameraGoesOn()
    {
        const QTemporaryDir folder;
        OpenedCamera opened(BWSimulatedCameraOptions::Type::Ultra, BWPixelFormat::MJPEG);
        QVERIFY(opened.probe->start());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("can be neither recorded nor read: .+")));
        for (const std::size_t attempt : {1, 2}) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot be written: .+")));
            QVERIFY(opened.camera->startRecording(folder.filePath(QStringLiteral("a.mov"))));
            QVERIFY(opened.probe->waitForRecordingChanges(attempt));
            QVERIFY(opened.camera->recordingStatus().end == BWRecordingStatus::End::NoMovies);
        }
        opened.camera->takeSnapshot();
        opened.probe->settle();
        QVERIFY(opened.probe->stream(1));
        QVERIFY(opened.probe->waitForSnapshots(1));
    }
};

QTEST_GUILESS_MAIN(TestWithoutMovies)
#include "tst_WithoutMovies.moc"
