// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWFullScreenRules.h"

#include <utility>

BWFullScreenRules::BWFullScreenRules(Callbacks callbacks, BWClock &clock)
    : m_callbacks(std::move(callbacks)),
      m_bars(
          barsStay, [this](bool shown) { barsChanged(shown); }, clock),
      m_pointer(
          pointerStays,
          [this](bool shown) {
              if (m_on)
                  m_callbacks.showPointer(shown);
          },
          clock)
{
}

void BWFullScreenRules::begin(int barsHeight)
{
    m_barsHeight = barsHeight;
    m_pointerInBars = false;
    m_keyboardInBars = false;
    m_on = true;
    update();
    m_pointer.show();
}

void BWFullScreenRules::end()
{
    m_on = false;
    m_bars.hide();
    m_pointer.hide();
    m_callbacks.showPointer(true); // whether it was hidden or not
}

void BWFullScreenRules::pointerAt(std::optional<int> y, bool pressed)
{
    constexpr int edge = 1; // a pointer that is pushed against the edge may rest a pixel away from it
    if (!m_on)
        return;
    const bool calls = y && *y <= edge && !pressed;
    m_pointerInBars = calls || (y && m_bars.isShown() && *y < m_barsHeight);
    update();
    if (y)
        m_pointer.show();
}

void BWFullScreenRules::setKeyboardInBars(bool inside)
{
    m_keyboardInBars = inside;
    update();
}

void BWFullScreenRules::callBars()
{
    if (m_on)
        m_bars.show();
}

void BWFullScreenRules::setActive(bool active)
{
    m_active = active;
    update();
}

void BWFullScreenRules::update()
{
    if (!m_on)
        return;
    m_bars.setHeld(m_pointerInBars || m_keyboardInBars);
    m_pointer.setHeld(m_pointerInBars || !m_active);
}

void BWFullScreenRules::barsChanged(bool shown)
{
    if (!m_on)
        return;
    if (!shown && m_callbacks.isPopupOpen())
        m_bars.show(); // ask again later
    else
        m_callbacks.showBars(shown);
}
