// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/BWRepository.h"

#include <QList>
#include <QString>
#include <QStringList>

/// What the command line asks the program to do.
struct BWCommandLine {
    QList<BWSimulatedCameraOptions> simulated;
    QString importSettings; ///< file with settings of the previous generation to take over; null if none
    QString language; ///< of all texts, such as "de"; null for the system's
    bool technician = false; ///< shows the menu of the technician's tools
    bool listCameras = false;
    bool version = false;
    bool help = false;
    QString error; ///< one line that says what is wrong and what is accepted; null if there is nothing wrong

    /// By hand, because QCommandLineParser reports neither the argument as it was typed nor what is accepted instead.
    static BWCommandLine parse(int argc, char **argv);
    bool needsWindows() const;
    BWRepository::Options repositoryOptions() const;
    static QString helpText();
};
