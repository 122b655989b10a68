// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <memory>
#include <optional>

/// How the user wants all programs to look, as far as the desktop's portal tells. Where there is none, nothing happens, and
/// nobody waits for its answer. GUI thread.
class BWDesktopAppearance {
public:
    struct Wish {
        bool operator==(const Wish &) const = default;

        std::optional<bool> dark; ///< or light; nothing if the user does not mind
        bool highContrast = false;
    };

    /// `changed` gets the wishes once they are known, unless there are none, and again at each change.
    explicit BWDesktopAppearance(std::function<void(const Wish &)> changed);
    ~BWDesktopAppearance();

private:
    class Portal;

    BWAliveToken m_alive;
    const std::shared_ptr<Portal> m_portal;
    BWWorkerPool m_worker;
};
