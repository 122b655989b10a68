// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <QRect>
#include <QSize>

/// Decodes parts of JPEG pictures to 32-bit pixels (bytes B G R A, A opaque). One thread at a time.
///
/// A part costs a walk through what lies above it, the Huffman decoding of what lies beside it, and no more; what lies
/// below it is not looked at.
/// Each pixel is the same in whatever part it is decoded, because colour is not interpolated between blocks. Huffman
/// tables may be missing, as cameras leave them out.
class BWJpegReader {
public:
    BWJpegReader();
    ~BWJpegReader();

    /// Begins with a picture, whose bytes must last until it has been read. False if its header is damaged,
    /// or claims a size that no camera has.
    bool open(const uint8_t *bytes, std::size_t length);

    /// Of the open picture, reduced by 1, 2, 4 or 8.
    QSize size(int divisor) const;

    /// The least that can be decoded and contains `part`, which lies inside the picture of that size.
    QRect decodable(const QRect &part, int divisor) const;

    /// Decodes such a part of the open picture, and closes it. Returns the number of good rows: fewer than the part has
    /// if the data are damaged in it or above it, none if they turn out not to fit the picture. Damaged rows are grey.
    ///
    /// Most losses look like other data and show only where the data end. That is read if the part reaches there, or
    /// if `toTheEnd`, which costs the Huffman decoding of all that lies below.
    int read(const QRect &part, int divisor, uint8_t *pixels, int stride, bool toTheEnd = false);

private:
    struct Decoder;
    std::unique_ptr<Decoder> m_decoder; // made when it is needed
    const uint8_t *m_bytes = nullptr; // of the open picture
    std::size_t m_length = 0;
};
