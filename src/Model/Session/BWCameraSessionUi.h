#pragma once

#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/BWResolution.h"

#include <functional>
#include <optional>
#include <QList>
#include <QString>

/// What the camera session asks of the windows. All operations are called on the GUI thread and return at once;
/// questions answer through their callback, later, and not at all once they have been taken back.
class BWCameraSessionUi {
public:
    virtual ~BWCameraSessionUi() = default;

    /// A camera is there: the menu items that need one are enabled from now on.
    virtual void enableCameraMenus() = 0;
    virtual void updateStateLabel() = 0;
    virtual void updateCameraList(const QList<BWCameraPtr> &cameras, const BWCameraPtr &current) = 0;

    /// The camera streams, with the values of its product.
    virtual void cameraStarted() = 0;
    virtual void showResolutions(const QList<BWResolution> &resolutions, BWResolution current) = 0;
    virtual void enableGrid(bool available) = 0;
    virtual void updateImageDisplay() = 0;
    virtual void bringMainWindowToFront() = 0;
    /// The camera is gone or about to change: nothing of its picture is shown any more.
    virtual void resetUIToInitial() = 0;

    /// Asks which product the camera is; `chosen` gets the product's identifier, or null to be asked again later.
    virtual void askForProduct(const BWCameraPtr &camera, std::function<void(const QString &chosen)> answer) = 0;
    /// A camera that cannot be started: why, and what may lead on.
    struct StartQuestion {
        BWStartProblem problem;
        std::optional<BWResolution> smaller; ///< a size with which it may work
        BWCameraPtr other; ///< a camera to be used in its place; null if there is none
    };
    enum class StartAnswer { TryAgain, UseSmaller, UseOther, Quit };
    /// Takes the place of the same question about what has changed since.
    virtual void showCameraInUse(const StartQuestion &question, std::function<void(StartAnswer)> answer) = 0;
    /// Takes back askForProduct() and showCameraInUse().
    virtual void endQuestions() = 0;

    virtual void showNoCameraWindow() = 0; ///< no camera since launch
    virtual void hideNoCameraWindow() = 0;
    virtual void openNoCameraSheet(std::function<void()> terminate) = 0; ///< the camera in use has gone
    virtual void endNoCameraSheet() = 0;
    virtual void hideAuxiliaryWindows() = 0;
    virtual void terminate() = 0;
};
