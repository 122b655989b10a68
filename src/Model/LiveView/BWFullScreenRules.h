// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWAutoHide.h"

#include <chrono>
#include <functional>
#include <optional>

/// When the bars and the pointer show in full screen. The bars come when the pointer touches the top edge and when the
/// keyboard is used in them; they go a moment after pointer and keyboard have left them and no menu is open. The pointer
/// goes when it rests over the picture. GUI thread.
class BWFullScreenRules {
public:
    static constexpr std::chrono::milliseconds barsStay{800};
    static constexpr std::chrono::milliseconds pointerStays{3000};

    struct Callbacks {
        std::function<void(bool shown)> showBars;
        std::function<void(bool shown)> showPointer;
        std::function<bool()> isPopupOpen; ///< such as a menu of the bars
    };

    explicit BWFullScreenRules(Callbacks callbacks, BWClock &clock = BWClock::system());

    /// Full screen begins, with bars of that height: nothing but the picture.
    void begin(int barsHeight);
    void end();

    /// How far below the top edge the pointer is; nothing when it is not in the window. With a pressed button it does not
    /// call the bars: it drags the picture.
    void pointerAt(std::optional<int> y, bool pressed);
    /// The keyboard focus is in the bars and did not come there by a click, which says nothing about the next key.
    void setKeyboardInBars(bool inside);
    bool isKeyboardInBars() const { return m_keyboardInBars; }
    /// A key opens a menu.
    void callBars();
    /// Whether the window has the keyboard. The pointer stays visible beside a question or another window.
    void setActive(bool active);

private:
    void update();
    void barsChanged(bool shown);

    Callbacks m_callbacks;
    BWAutoHide m_bars;
    BWAutoHide m_pointer;
    int m_barsHeight = 0;
    bool m_on = false;
    bool m_pointerInBars = false;
    bool m_keyboardInBars = false;
    bool m_active = true;
};
