#include "Utils/BWLogging.h"

Q_LOGGING_CATEGORY(bwApp, "bw.app", QtInfoMsg)
Q_LOGGING_CATEGORY(bwModel, "bw.model", QtInfoMsg)
Q_LOGGING_CATEGORY(bwViews, "bw.views", QtInfoMsg)
