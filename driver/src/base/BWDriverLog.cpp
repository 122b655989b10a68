// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/BWDriverLog.h"

Q_LOGGING_CATEGORY(bwDriver, "bw.driver", QtInfoMsg)
Q_LOGGING_CATEGORY(bwSimulation, "bw.sim", QtInfoMsg)
Q_LOGGING_CATEGORY(bwMedia, "bw.media", QtInfoMsg)
