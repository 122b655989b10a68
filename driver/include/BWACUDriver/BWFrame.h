// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <QSize>

/// Layout of a frame's pixels; the names are those of the V4L2 pixel formats.
enum class BWPixelFormat {
    None,
    YUYV, ///< packed 4:2:2, bytes Y0 U Y1 V
    UYVY, ///< packed 4:2:2, bytes U Y0 V Y1
    NV12, ///< 4:2:0, plane 0 Y, plane 1 interleaved U V
    YU12, ///< 4:2:0, planes Y, U, V
    GREY, ///< 8 bits of luma
    RGB24, ///< bytes R G B
    BGR24, ///< bytes B G R
    XBGR32, ///< bytes B G R X, as screens have them; X has no meaning
    MJPEG, ///< one JPEG image (possibly without Huffman tables), plane 0 holds its bytes
};

enum class BWColorMatrix { BT601, BT709 }; ///< ITU-R BT.601 and BT.709 luma coefficients
enum class BWColorRange { Limited, Full }; ///< luma 16-235, or 0-255 as JPEG has it

/// One plane of a frame. `stride` is in bytes and 0 for compressed formats.
struct BWPlane {
    const uint8_t *data = nullptr;
    std::size_t size = 0;
    int stride = 0;
};

/// The bytes of a plane that hold pixels: so many rows of so many bytes each. No rows: there is no such plane.
struct BWPlaneSize {
    int rowBytes = 0;
    int rows = 0;
};

/// What a frame is made of. The pointers are valid for as long as a BWFrame that carries them exists.
struct BWFrameInfo {
    BWPixelFormat pixelFormat = BWPixelFormat::None;
    int width = 0;
    int height = 0;
    std::array<BWPlane, 3> planes;
    BWColorMatrix matrix = BWColorMatrix::BT601;
    BWColorRange range = BWColorRange::Limited;
    std::chrono::steady_clock::time_point timestamp; ///< when the first byte was captured
    uint64_t sequence = 0; ///< counts the device's frames since the stream started; a gap is a lost frame

    /// Of a raw picture of this format and size; none for other formats.
    std::array<BWPlaneSize, 3> planeSizes() const;
    /// Whether it is a raw picture whose planes are all there and long enough.
    bool isWholeRawPicture() const;
    /// Of all planes together.
    std::size_t byteCount() const;
};

/// A reference-counted view of one of the driver's own buffers: no pixel is copied when a frame is passed on.
///
/// Copies share the buffer; it goes back to the driver when the last holder lets go, on whatever thread that happens.
/// A frame may be kept past the callback that delivered it, but a device has only a few buffers: keeping several at
/// once starves the stream. Immutable, hence safe to read from any number of threads.
class BWFrame {
public:
    BWFrame() = default;

    /// Takes over a buffer. `release` is called exactly once, when the last copy of the frame is gone; `owner`, if
    /// given, lives until then. A function that captures at most two plain pointers or numbers costs no allocation.
    BWFrame(const BWFrameInfo &info, std::function<void()> release, std::shared_ptr<void> owner = nullptr);

    bool isNull() const { return !m_buffer; }
    explicit operator bool() const { return static_cast<bool>(m_buffer); }

    /// The same frame, byte for byte, in memory of its own: it may be kept for any time, as it holds no buffer of a
    /// device. Null if this one is.
    BWFrame copied() const;

    const BWFrameInfo &info() const;
    BWPixelFormat pixelFormat() const { return info().pixelFormat; }
    int width() const { return info().width; }
    int height() const { return info().height; }
    QSize size() const { return {info().width, info().height}; }
    const BWPlane &plane(int index) const { return info().planes[static_cast<std::size_t>(index)]; }
    uint64_t sequence() const { return info().sequence; }
    std::chrono::steady_clock::time_point timestamp() const { return info().timestamp; }

private:
    struct Buffer;
    std::shared_ptr<const Buffer> m_buffer;
};
