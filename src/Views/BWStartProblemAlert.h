// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Session/BWCameraSession.h"

#include <QMessageBox>

class BWLocalizationManager;

/// Asks what to do about a camera that cannot be started. Answers once, then deletes itself.
class BWStartProblemAlert : public QMessageBox {
    Q_OBJECT

public:
    using Question = BWCameraSession::StartQuestion;
    using Answer = BWCameraSession::StartAnswer;

    /// `other` is the title of the other camera that the question offers; null if it offers none. If it does, Escape
    /// chooses that one.
    BWStartProblemAlert(const Question &question, const QString &other, BWLocalizationManager &texts, QWidget *parent);

Q_SIGNALS:
    void answered(BWStartProblemAlert::Answer answer);
};
