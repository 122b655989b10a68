#pragma once

/// What a capture is. The numbers are used by callers and keep their values.
enum class BWMediaType {
    Image = 0, ///< snapshot, .jpg
    Video = 1, ///< recording, .mov
};
