// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <QLocale>
#include <QString>
#include <QUrl>

class BWLocalizationManager;
enum class BWCaptureRefusal;
struct BWCaptureResult;
struct BWRecordingStatus;

/// What the user reads when a capture is done: an alert, which stays until it is read, if the capture is lost or not
/// where it belongs; a line if all went well, or if it ended early and is saved.
struct BWCaptureNotice {
    QString title{}; ///< of the alert; null for a line
    QString text;
    bool unusual = false; ///< a line that says more than where the capture is, and takes longer to read

    /// Of captures of an earlier run that have come into the album; `last` is the newest.
    static BWCaptureNotice ofRecovered(const QUrl &last, BWLocalizationManager &texts);

    static BWCaptureNotice of(const BWCaptureResult &result, BWLocalizationManager &texts);
    static BWCaptureNotice ofRefused(BWCaptureRefusal reason, BWLocalizationManager &texts);

    /// Minutes and seconds, with hours from one hour on: "1:05".
    static QString elapsed(std::chrono::seconds duration);

    /// How far the running recording has come: "1:05 · 34 MB". Minutes and seconds, with hours from one hour on; the
    /// size in whole kB or MB, from one GB on with a decimal, so that what changes twice a second is easily read.
    static QString progressText(const BWRecordingStatus &status, const QLocale &locale = {});
};
