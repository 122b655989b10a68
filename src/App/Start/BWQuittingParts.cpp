// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWQuittingParts.h"

#include "App/Capture/BWSeriesController.h"
#include "App/LiveView/BWComparison.h"
#include "App/LiveView/BWMeasurementsInFile.h"
#include "App/Start/BWAppTexts.h"
#include "App/Windows/BWAuxiliaryWindows.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/Session/BWCameraSession.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWStatusLine.h"

#include <utility>

BWQuitting::Callbacks BWQuittingParts::callbacks() const
{
    return {
        .isSaving = [parts = *this] { return parts.isSavingFiles() || (parts.series && parts.series->isRunning()); },
        .mayStopSaving = [parts = *this] { return parts.mayStopSaving(); },
        .stopCamera = [parts = *this](std::function<void()> done) { parts.stopCamera(std::move(done)); },
        .completesMovie =
            [parts = *this] {
                const BWCameraPtr camera = parts.session.currentCamera();
                return camera && camera->recording();
            },
        .finishCaptures = [parts = *this](std::function<void()> done) { parts.finishCaptures(std::move(done)); },
        .mayLeaveCaptures = [parts = *this] { return parts.mayLeaveCaptures(); },
        .leaveCaptures = [parts = *this] { parts.albums.abandonAdding(); },
        .end = quit,
    };
}

bool BWQuittingParts::isSavingFiles() const
{
    return albums.moves().isRunning() || (windows && windows->isSaving()) || (comparison && comparison->isSaving())
        || (measurements && (measurements->isSavingCopy() || !measurements->unsaved().isEmpty()));
}

bool BWQuittingParts::mayStopSaving() const
{
    if (series && !series->askToStop())
        return false;
    const QStringList unsaved = measurements ? measurements->unsaved() : QStringList();
    if (!unsaved.isEmpty())
        return BWUIUtils::displayOKCancelAlert(texts.quitUnsavedTitle,
                                               texts.quitUnsavedMessage.arg(unsaved.join(u'\n')));
    return !isSavingFiles()
        || BWUIUtils::displayOKCancelAlert(texts.quitWhileSavingTitle, texts.quitWhileSavingMessage);
}

void BWQuittingParts::stopCamera(std::function<void()> done) const
{
    if (series)
        series->leaveForNextStart(); // nobody was asked, or it has ended
    albums.moves().cancel();
    session.stopForQuit(std::move(done));
}

void BWQuittingParts::finishCaptures(std::function<void()> done) const
{
    if (statusLine)
        statusLine->setProgress(texts.quitWaitsForCaptures); // until a copy reports its progress
    const auto whenSaved = [parts = *this, done = std::move(done)] {
        if (parts.measurements)
            parts.measurements->whenSaved(done);
        else
            done();
    };
    const auto whenAdded = [parts = *this, whenSaved] { parts.albums.whenAdded(whenSaved); };
    if (capture)
        capture->whenStillsAreWritten(whenAdded);
    else
        whenAdded();
}

bool BWQuittingParts::mayLeaveCaptures() const
{
    const QStringList measured = measurements ? measurements->onTheWay() : QStringList();
    if (!measured.isEmpty())
        return BWUIUtils::displayOKCancelAlert(texts.quitUnsavedTitle,
                                               texts.quitUnsavedMessage.arg(measured.join(u'\n')));
    return BWUIUtils::displayOKCancelAlert(texts.quitAtOnceTitle, texts.quitAtOnceMessage);
}
