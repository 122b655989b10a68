// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <QList>
#include <QUrl>

/// The desktop's file manager. GUI thread; nothing waits for its answer.
class BWFileManager {
public:
    /// Has it show files, selected, in their folder. If it cannot, calls `otherwise`, later.
    void show(const QList<QUrl> &files, std::function<void()> otherwise);

private:
    BWAliveToken m_alive;
    BWWorkerPool m_worker{1, std::chrono::milliseconds(0)};
};
