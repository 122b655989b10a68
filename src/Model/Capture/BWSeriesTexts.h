// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Capture/BWCaptureNotice.h"
#include "Model/Capture/BWSeriesRun.h"

#include <QLocale>
#include <QString>

/// What the user reads of a series.
class BWSeriesTexts {
public:
    BWSeriesTexts() = delete;

    /// Of a running one: "Series: 12 of 100, next in 0:25". Intervals of a few seconds need no countdown.
    static QString progress(const BWSeries &series, BWLocalizationManager &texts);
    /// The same without the countdown, for screen readers.
    static QString spoken(const BWSeries &series, BWLocalizationManager &texts);
    static QString ofGap(const BWSeries::Gap &gap, BWLocalizationManager &texts);
    /// An alert if it ended for a reason that the user did not plan.
    static BWCaptureNotice ofEnd(const BWSeriesResult &result, BWLocalizationManager &texts);

    /// The question whether to go on with one of an earlier run.
    static BWCaptureNotice ofUnfinished(const BWSeriesRecord &record, BWLocalizationManager &texts);
    /// The question whether to quit while one runs.
    static BWCaptureNotice ofQuitting(BWLocalizationManager &texts);

    /// How many pictures, how long and about how much room: "Pictures: 100. ..."
    static QString summary(const BWSeriesPlan &plan, qint64 pictureBytes, BWLocalizationManager &texts,
                           const QLocale &locale = {});
};
