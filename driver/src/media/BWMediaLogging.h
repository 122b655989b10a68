#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(bwMedia) ///< "bw.media": JPEG, movies
