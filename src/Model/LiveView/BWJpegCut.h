// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio> // jpeglib.h wants it
#include <jpeglib.h>
#include <vector>

/// Cuts the upper rows of blocks off a JPEG picture, so that libjpeg need not go through them.
///
/// What a row of blocks looks like depends on all the data above it. To find where it begins, they are walked through by
/// tables that tell how long each coefficient is, without its value; that takes less than half as long as libjpeg's way
/// of skipping rows. What remains is given to libjpeg as a picture of its own: a header with the smaller height, the
/// first block of each component with its whole brightness or colour instead of the difference from its predecessor,
/// and the same bits as before, which may begin within a byte. (ITU-T T.81, sections F.1.2 and F.2.2.)
///
/// Only baseline pictures in one scan and without restart markers are cut, as cameras make them; for others, and for
/// data with any damage, libjpeg is asked. One thread at a time; memory is kept from picture to picture.
class BWJpegCut {
public:
    BWJpegCut() = default;
    BWJpegCut(const BWJpegCut &) = delete;
    BWJpegCut &operator=(const BWJpegCut &) = delete;

    /// Cuts so many rows of blocks (of the largest sampling factor) off a picture whose header `info` has just read from
    /// these bytes, which must last until the rest has been read. False if that is not possible, and if the data above
    /// the cut are damaged; if `checked`, also if those below are, or do not end where the picture does.
    bool make(const jpeg_decompress_struct &info, const uint8_t *bytes, std::size_t length, int blockRows,
              bool checked);

    /// Where libjpeg reads the picture that was made. It need not be read to its end.
    jpeg_source_mgr &source();

private:
    static constexpr int peekBits = 12;
    static constexpr int longestCode = 16;
    static constexpr int blockSize = 64; // coefficients

    /// Huffman codes, as tables of what the next bits begin with. The lower byte of an entry is the length of a code
    /// and its value together. The upper one is how many coefficients that are, for AC, or the length of the value, for DC.
    /// 0 stands for bits that are no code, or a longer one.
    struct Codes {
        bool set(const JHUFF_TBL &table, bool dc);
        /// For the one code that 16 bits begin with.
        uint16_t next(uint32_t next16) const
        {
            const uint16_t step = single[next16 >> (longestCode - peekBits)];
            return step != 0 ? step : stepOf(next16, peekBits + 1, longestCode);
        }
        uint16_t stepOf(uint32_t next16, int shortest, int longest) const;
        uint16_t joinedSteps(uint32_t next16) const;

        std::array<uint16_t, std::size_t(1) << peekBits> single{};
        std::array<uint16_t, std::size_t(1) << peekBits> several{}; ///< AC: for all codes that these bits hold
        std::array<int32_t, longestCode + 2> limits{}; ///< the first 16 bits that are no code of that length or less
        std::array<int32_t, longestCode + 1> offsets{}; ///< from a code of that length to its place in huffval
        JHUFF_TBL made{}; ///< from that one
        bool isDc = false;
    };
    struct Component {
        const Codes *dc = nullptr;
        const Codes *ac = nullptr;
        int predecessor = 0; ///< the last DC coefficient
    };
    class Cursor;

    bool prepare(const jpeg_decompress_struct &info);
    bool makeHeader(const uint8_t *bytes, std::size_t length, int rowsLess);
    void unstuff();
    void unstuffAhead();
    bool walk(std::size_t count);
    static bool walkDc(Cursor &cursor, Component &component);
    static bool walkAc(Cursor &cursor, const Codes &codes);
    bool startRest();
    bool putDc(const Component &component);
    void putByte(uint8_t byte);
    void putBits(uint32_t bits, int count);
    void putData(std::size_t from, std::size_t to);
    void fill();
    Component &componentOf(int block) { return m_components[m_blocks[static_cast<std::size_t>(block)]]; }

    std::array<Codes, NUM_HUFF_TBLS> m_dc;
    std::array<Codes, NUM_HUFF_TBLS> m_ac;
    std::array<Component, MAX_COMPS_IN_SCAN> m_components;
    std::array<std::size_t, D_MAX_BLOCKS_IN_MCU> m_blocks{}; // the component of each
    int m_blockCount = 0;

    const uint8_t *m_raw = nullptr; // what of the scan has not been unstuffed
    const uint8_t *m_rawEnd = nullptr;
    std::vector<uint8_t> m_data; // without stuffing, and zeros behind the end
    std::size_t m_size = 0; // of them
    bool m_atMarker = false; // all are here
    std::size_t m_position = 0; // in bits

    struct Source : jpeg_source_mgr {
        BWJpegCut *cut;
    };
    Source m_source{};
    std::vector<uint8_t> m_written;
    std::size_t m_writtenSize = 0;
    std::size_t m_copied = 0; // bits of the data that have been written
    uint64_t m_bits = 0; // that do not fill a byte yet
    int m_bitCount = 0;
};
