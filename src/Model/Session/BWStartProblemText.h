// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWDetectedCamera.h"

#include <QList>
#include <QString>

class BWLocalizationManager;

/// Why a camera cannot be started, in the user's language. GUI thread.
class BWStartProblemText {
public:
    static QString title(BWLocalizationManager &texts);

    /// Why, in a sentence or two; null where nothing is known beyond the title.
    static QString reason(const BWStartProblem &problem, BWLocalizationManager &texts);

    /// What a user can do who may not open cameras.
    static QString permissionFix(BWLocalizationManager &texts);

    /// What keeps an attached camera from appearing, and what to do about it; null if nothing does.
    static QString obstacle(const QList<BWBlockedCamera> &blocked, BWLocalizationManager &texts);

    /// Title and reason, for the status line.
    static QString status(const BWStartProblem &problem, BWLocalizationManager &texts);
};
