// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <utility>

/// A member of an object of the GUI thread, for work that may find the object gone: that work holds watch(), which is
/// expired by then.
class BWAliveToken {
public:
    BWAliveToken() : m_token(std::make_shared<char>()) { }
    BWAliveToken(const BWAliveToken &) = delete;
    BWAliveToken &operator=(const BWAliveToken &) = delete;

    std::weak_ptr<void> watch() const { return m_token; }

private:
    const std::shared_ptr<void> m_token;
};

/// The GUI thread's event loop, for work that comes from other threads.
class BWMainQueue {
public:
    /// Runs `work` later on the GUI thread, unless the object that `owner` watches is gone by then. Any thread.
    static void post(std::weak_ptr<void> owner, std::function<void()> work);
    static void post(const BWAliveToken &owner, std::function<void()> work) { post(owner.watch(), std::move(work)); }
};
