// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWCaptureFeedback.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWFlashActionViewController.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double progressSeconds = 0.5;
constexpr double unusualSeconds = 8; // enough for two sentences when the user is looking elsewhere

} // namespace

BWCaptureFeedback::BWCaptureFeedback(BWControlBar &bar, BWFlashActionViewController &flash, BWStatusLine &statusLine,
                                     BWLocalizationManager &texts, Callbacks callbacks, BWClock &clock)
    : m_bar(bar),
      m_flash(flash),
      m_statusLine(statusLine),
      m_texts(texts),
      m_callbacks(std::move(callbacks)),
      m_clock(clock)
{
}

BWCaptureFeedback::~BWCaptureFeedback()
{
    stopProgress();
}

BWCaptureController::Callbacks BWCaptureFeedback::callbacks()
{
    return {[this] {
                m_callbacks.playSound();
                flashSnapshot();
            },
            [this](bool recording) { recordingChanged(recording); },
            [this](const BWCaptureResult &result) {
                m_statusLine.setProgress({});
                if (m_callbacks.added && !result.file.isEmpty())
                    m_callbacks.added(result.file);
                report(BWCaptureNotice::of(result, m_texts));
            },
            [this](double done) { showCopying(done); },
            [this](BWCaptureRefusal reason) { report(BWCaptureNotice::ofRefused(reason, m_texts)); }};
}

void BWCaptureFeedback::flashSnapshot()
{
    const BWCameraPtr camera = m_callbacks.currentCamera();
    if (!camera || !camera->recording())
        m_flash.setAction(BWFlashActionViewController::Action::SnapshotSaved);
}

void BWCaptureFeedback::flashVideo(bool recording)
{
    using Action = BWFlashActionViewController::Action;
    m_flash.setAction(recording ? Action::RecordingStarted : Action::RecordingStopped);
}

void BWCaptureFeedback::recordingChanged(bool recording)
{
    m_bar.showRecording(recording);
    flashVideo(recording);
    m_statusLine.setRecording(recording);
    stopProgress();
    if (recording)
        showProgress();
}

/// Repeats itself until the recording is over.
void BWCaptureFeedback::showProgress()
{
    if (const BWCameraPtr camera = m_callbacks.currentCamera())
        m_flash.setDetails(BWCaptureNotice::progressText(camera->recordingStatus()));
    m_progress = DispatchAfterStrict::dispatchForQueue(
        this, [this] { showProgress(); }, progressSeconds, m_clock);
}

void BWCaptureFeedback::stopProgress()
{
    if (m_progress)
        m_progress->cancel();
    m_progress.reset();
}

void BWCaptureFeedback::reportRecovered(const QUrl &last)
{
    const BWCaptureNotice notice = BWCaptureNotice::ofRecovered(last, m_texts);
    BWUIUtils::displayInformation(notice.title, notice.text);
}

void BWCaptureFeedback::showCopying(double done)
{
    m_statusLine.setProgress(
        m_texts.text(u"camera_window"_s, u"copying_into_album"_s, u"Copying the capture into the album: %1%"_s)
            .arg(static_cast<int>(100 * done)));
}

void BWCaptureFeedback::report(const BWCaptureNotice &notice)
{
    if (!notice.title.isNull())
        alert(notice);
    else
        m_statusLine.showForAMoment(notice.text, notice.unusual ? unusualSeconds : BWStatusLine::momentSeconds);
}

/// The camera's button keeps taking pictures while an alert is open. When the user closes it, one more alert stands for
/// everything that happened meanwhile.
void BWCaptureFeedback::alert(const BWCaptureNotice &notice)
{
    m_unread = notice;
    if (m_alertIsOpen)
        return;
    m_alertIsOpen = true;
    while (const std::optional<BWCaptureNotice> next = std::exchange(m_unread, std::nullopt))
        BWUIUtils::displayOKAlert(next->title, next->text);
    m_alertIsOpen = false;
}
