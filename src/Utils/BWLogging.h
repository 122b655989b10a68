// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

inline Q_LOGGING_CATEGORY(bwApp, "bw.app", QtInfoMsg); // launch, session, windows
inline Q_LOGGING_CATEGORY(bwModel, "bw.model", QtInfoMsg); // settings, albums, texts
inline Q_LOGGING_CATEGORY(bwViews, "bw.views", QtInfoMsg); // live view, windows
