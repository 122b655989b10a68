// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Session/BWQuitting.h"

#include <functional>
#include <memory>

struct BWAppTexts;
class BWAlbumManager;
class BWAuxiliaryWindows;
class BWCameraSession;
class BWCaptureController;
class BWComparison;
class BWMeasurementsInFile;
class BWSeriesController;
class BWStatusLine;

/// The parts of the program that have to do with its end: who is busy, what the user is asked, who finishes what. All must
/// outlive the quitting. The program makes most of them some time after its start; one that is null has nothing to do yet.
/// GUI thread.
struct BWQuittingParts {
    const BWAppTexts &texts;
    BWCameraSession &session;
    BWAlbumManager &albums;
    const std::unique_ptr<BWStatusLine> &statusLine;
    const std::unique_ptr<BWCaptureController> &capture;
    const std::unique_ptr<BWSeriesController> &series;
    const std::unique_ptr<BWComparison> &comparison;
    const std::unique_ptr<BWMeasurementsInFile> &measurements;
    const std::unique_ptr<BWAuxiliaryWindows> &windows;
    std::function<void()> quit; ///< ends the event loop

    BWQuitting::Callbacks callbacks() const;

private:
    bool isSavingFiles() const;
    bool mayStopSaving() const;
    void stopCamera(std::function<void()> done) const;
    void finishCaptures(std::function<void()> done) const;
    bool mayLeaveCaptures() const;
};
