// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/DispatchAfterStrict.h"

#include <QObject>
#include <utility>

DispatchAfterStrict::Handle DispatchAfterStrict::dispatchForQueue(QObject *queue, std::function<void()> block,
                                                                  double delay, BWClock &clock)
{
    auto handle = std::make_shared<DispatchAfterStrict>();
    handle->m_block = std::move(block);
    const std::chrono::duration<double> seconds(delay > 0 ? delay : 0);
    clock.callAfter(std::chrono::duration_cast<std::chrono::nanoseconds>(seconds), queue, [handle] {
        // Taken out first, so that a block which cancels its own handle is not destroyed while it runs.
        const std::function<void()> due = std::exchange(handle->m_block, nullptr);
        if (due)
            due();
    });
    return handle;
}

void DispatchAfterStrict::cancel()
{
    m_block = nullptr;
}
