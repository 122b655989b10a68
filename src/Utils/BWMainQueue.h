#pragma once

#include <functional>
#include <memory>

/// The GUI thread's event loop, for work that comes from other threads.
class BWMainQueue {
public:
    /// Runs `work` later on the GUI thread, unless what `owner` stands for is gone by then. Any thread.
    static void post(std::weak_ptr<void> owner, std::function<void()> work);
};
