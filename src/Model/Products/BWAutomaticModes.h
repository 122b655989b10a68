#pragma once

#include <optional>

class BWCamera;

/// The camera's automatic modes, each of which holds one other control: as long as the mode is on, the camera moves that
/// control itself, and a value that is set for it waits until the mode is switched off.
class BWAutomaticModes {
public:
    /// The code of the mode that holds that control of the camera now. Any thread.
    static std::optional<int> modeHolding(int setting, const BWCamera &camera);
};
