#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(bwApp) ///< "bw.app": launch, session, windows
Q_DECLARE_LOGGING_CATEGORY(bwModel) ///< "bw.model": settings, albums, texts
Q_DECLARE_LOGGING_CATEGORY(bwViews) ///< "bw.views": live view, windows
