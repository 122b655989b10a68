// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWSimulatedCameras.h"
#include "BWACUDriver/BWV4L2Backend.h"

class QTextStream;

/// Prints the cameras of this computer, or the simulated ones, and what they can do. No line is longer than 96
/// characters unless a single word is.
class BWCameraListing {
public:
    BWCameraListing() = delete;

    /// The files that say which device is which type of camera: the user's own before ours.
    static QStringList cameraTables();

    static void printNodes(const QList<BWV4L2Listing::Node> &nodes, QTextStream &out);
    /// Waits a moment for cameras that are still being prepared. Needs an application object, not a display.
    static void printSimulated(const QList<BWSimulatedCameraOptions> &cameras, QTextStream &out);
};
