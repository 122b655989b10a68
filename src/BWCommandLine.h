#pragma once

#include "BWACUDriver/BWSimulatedCameras.h"

#include <QList>
#include <QString>
#include <QStringList>

/// What the program was asked to do on its command line.
struct BWCommandLine {
    QList<BWSimulatedCameraOptions> simulated;
    bool technician = false; ///< shows the menu of the technician's tools
    bool listCameras = false;
    bool version = false;
    bool help = false;
    QString error; ///< one line that says what is wrong and what is accepted; null if all is well

    /// `arguments` without the program's name.
    static BWCommandLine parse(const QStringList &arguments);
    static QString helpText();
};
