#pragma once

class BWConfigManager;

/// Hears of every change of the settings.
class BWConfigManagerListener {
public:
    virtual ~BWConfigManagerListener() = default;

    /// Called inside the call that changed something. May call setters, which notify again from within; must not add
    /// or remove listeners. mustResetLayout() holds only during this call.
    virtual void configManagerUpdatedSettings(BWConfigManager &configManager) = 0;
};
