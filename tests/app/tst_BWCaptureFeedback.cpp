// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWCaptureFeedback.h"
#include "AttachedCameras.h"
#include "BWManualClock.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWFlashActionViewController.h"

#include <QMainWindow>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestBWCaptureFeedback : public QObject, private BWAlertPresenter {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_sounds = 0;
        m_alerts.clear();
        m_statusLine.setText(u"Streaming"_s);
        BWUIUtils::setAlertPresenter(this);
    }
    void cleanup() { BWUIUtils::setAlertPresenter(nullptr); }

    void recordingKeepsTheFlash()
    {
        const QTemporaryDir folder;
        const AttachedCameras cameras({AttachedCameras::Type::High});
        m_camera = cameras[0];
        std::atomic<bool> recording = false;
        m_camera->setOnCameraRecording([&](BWCamera &, bool now, const BWRecordingStatus &) { recording = now; });
        m_camera->startWithCompletion({});
        QTRY_VERIFY(m_camera->started());

        m_report.snapshot();
        QTRY_COMPARE(m_flash.caption(), u"Snapshot saved"_s);
        QVERIFY(!m_flash.isHidden());

        m_camera->startRecording(folder.filePath(u"a.mov"_s));
        QTRY_VERIFY((cameras.hand(0).pushFrames(1), recording));
        m_report.recording(true);
        QTRY_COMPARE(m_flash.caption(), u"Recording..."_s);
        m_clock.advance(1s);
        QVERIFY(m_flash.details().startsWith(u"0:00 · "_s));
        const QString before = m_flash.details();
        cameras.hand(0).pushFrames(60);
        QTRY_VERIFY((m_clock.advance(100ms), m_flash.details() != before)); // the file has grown

        m_report.snapshot();
        QCOMPARE(m_sounds, 2);
        QCoreApplication::processEvents();
        QCOMPARE(m_flash.caption(), u"Recording..."_s);
        QVERIFY(!m_flash.isHidden());

        m_camera->stopRecording();
        m_report.recording(false);
        QTRY_VERIFY(m_flash.isHidden());
        m_camera.reset();
    }

    void lossesRaiseAnAlert()
    {
        BWCaptureResult result{BWMediaType::Video, QUrl(u"file:///a/v.mov"_s)};
        m_report.copying(0.429);
        QCOMPARE(m_pill.text(), u"Copying the capture into the album: 42%"_s);
        m_report.done(result);
        QCOMPARE(m_pill.text(), u"Video saved · v.mov"_s);
        m_clock.advance(3s);
        QCOMPARE(m_pill.text(), u"Streaming"_s);
        result.recording.end = BWRecordingStatus::End::CameraGone;
        m_report.done(result);
        m_clock.advance(7s); // more to read
        QVERIFY(m_pill.text().startsWith(u"Video saved · v.mov\n"_s));
        m_clock.advance(2s);
        QCOMPARE(m_pill.text(), u"Streaming"_s);
        QVERIFY(m_alerts.isEmpty());
        result.recording.end = BWRecordingStatus::End::DiskFull;
        m_report.done(result);
        QCOMPARE(m_alerts, QStringList{u"The recording ended because the disk is full"_s});
        QCOMPARE(m_pill.text(), u"Streaming"_s);

        m_report.refused(BWCaptureRefusal::StillSaving);
        QCOMPARE(m_pill.text(), u"The video is still being saved."_s);

        m_alerts.clear();
        m_lostMeanwhile = 3;
        m_report.done(result);
        QCOMPARE(m_alerts.size(), 2); // one more for everything lost while the first was open
    }

private:
    void presentOK(const QString &title, const QString &) override
    {
        m_alerts << title;
        while (m_lostMeanwhile > 0) {
            --m_lostMeanwhile;
            m_report.done({BWMediaType::Image});
        }
    }
    bool presentOKCancel(const QString &, const QString &) override { return false; }
    bool presentChoice(const QString &, const QString &, const QString &, const QString &) override { return false; }

    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    BWManualClock m_clock;
    QMainWindow m_window;
    BWMainMenu m_menu{m_window};
    BWControlBar m_bar{m_menu, &m_window};
    BWStatusPill m_pill{&m_window};
    BWStatusLine m_statusLine{m_pill, m_clock};
    BWFlashActionViewController m_flash{m_window, 84, m_texts, m_clock};
    BWCameraPtr m_camera;
    int m_sounds = 0;
    QStringList m_alerts;
    int m_lostMeanwhile = 0;
    BWCaptureFeedback m_feedback{
        m_bar, m_flash, m_statusLine, m_texts, {[this] { return m_camera; }, [this] { ++m_sounds; }}, m_clock};
    const BWCaptureController::Callbacks m_report = m_feedback.callbacks();
};

QTEST_MAIN(TestBWCaptureFeedback)
#include "tst_BWCaptureFeedback.moc"
