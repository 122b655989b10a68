#pragma once

#include "BWACUDriver/BWResolution.h"
#include "BWACUDriver/BWStartProblem.h"

#include <optional>
#include <QMessageBox>

class BWLocalizationManager;

/// Asks what to do about a camera that cannot be started. Answers once, then deletes itself.
class BWCameraInUseAlert : public QMessageBox {
    Q_OBJECT

public:
    enum class Answer {
        TryAgain,
        UseSmaller, ///< with the smaller resolution that was offered
        Quit, ///< the only way out when another program will not let go of the camera
    };

    /// `smaller` is offered as a way to get on, if there is one.
    BWCameraInUseAlert(const BWStartProblem &problem, std::optional<BWResolution> smaller, BWLocalizationManager &texts,
                       QWidget *parent);

Q_SIGNALS:
    void answered(BWCameraInUseAlert::Answer answer);
};
