// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(bwDriver) ///< "bw.driver": detection and capture sessions
Q_DECLARE_LOGGING_CATEGORY(bwSimulation) ///< "bw.sim": simulated cameras
Q_DECLARE_LOGGING_CATEGORY(bwMedia) ///< "bw.media": JPEG, movies
