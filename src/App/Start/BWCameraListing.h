#pragma once

#include "BWACUDriver/BWCameraBackend.h"

#include <memory>
#include <vector>

class QTextStream;

/// Prints the attached cameras and what they can do.
class BWCameraListing {
public:
    /// Waits a moment for cameras that are still being prepared. Needs an application object, not a display.
    static void print(std::vector<std::unique_ptr<BWCameraBackend>> backends, QTextStream &out);
};
