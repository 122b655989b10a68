#include "media/BWMediaLogging.h"

Q_LOGGING_CATEGORY(bwMedia, "bw.media", QtInfoMsg)
