#pragma once

#include "BWACUDriver/BWRecordingStatus.h"

#include <QLocale>
#include <QString>

/// How the running recording is told to the person who records: "1:05 · 34 MB".
namespace BWRecordingProgress {

/// Minutes and seconds, with hours from one hour on; the size in whole kB or MB, from one GB on with a decimal, so
/// that what changes twice a second is easily read.
QString text(const BWRecordingStatus &status, const QLocale &locale = {});

} // namespace BWRecordingProgress
