#pragma once

#include "media/BWYuvPlanes.h"

#include <cstdint>
#include <QString>
#include <span>

/// TurboJPEG as this library uses it: its handles and buffers belong to the calling thread and are reused.
namespace BWJpegCodec {

/// Bytes that stay as they are until the thread's next call; empty on failure.
using Bytes = std::span<const uint8_t>;

/// Planes as JPEG means them: BT.601, full range. Odd columns have to be padded.
Bytes compress(const BWYuvPlanes &planes, int quality);
Bytes compressGrey(const BWYuvPlanes &planes, int quality);

enum class Order { RGB, BGR };
Bytes compress(const uint8_t *pixels, int stride, int width, int height, Order order, int quality);

/// Whether the image decodes to its end without a warning.
bool decodes(const uint8_t *data, std::size_t size);

/// Why the thread's last call failed.
QString lastError();

} // namespace BWJpegCodec
