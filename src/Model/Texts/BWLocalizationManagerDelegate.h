#pragma once

class BWLocalizationManager;

/// Something that shows texts. Whoever creates it calls localizeWithManager() once, right afterwards.
class BWLocalizationManagerDelegate {
public:
    virtual ~BWLocalizationManagerDelegate() = default;

    virtual void localizeWithManager(BWLocalizationManager &manager) = 0;
};
