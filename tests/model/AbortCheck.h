#pragma once

#include <QProcess>

/// Whether the helper program is aborted by making that mistake.
inline bool aborts(const char *mistake)
{
    QProcess helper;
    helper.start(QStringLiteral(BW_ABORT_HELPER), {QString::fromLatin1(mistake)});
    return helper.waitForFinished() && helper.exitStatus() == QProcess::CrashExit
        && !helper.readAllStandardOutput().contains("still running");
}
