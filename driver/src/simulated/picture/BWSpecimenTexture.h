#pragma once

#include "BWACUDriver/BWResolution.h"
#include "media/BWYuvPlanes.h"

#include <memory>

/// The drawn specimen at one resolution, with some more around it for the drift. Full range, BT.601. Immutable.
struct BWSpecimenTexture {
    BWYuvPlanes planes;
    int margin = 0; ///< columns and rows on each side beyond the picture

    /// Draws it, or shares the one that another source holds already. Any thread.
    static std::shared_ptr<const BWSpecimenTexture> forResolution(BWResolution resolution);
};
