// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWJpegCut.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <QtEndian>

namespace {

constexpr std::size_t chunk = 65536; // bytes that are unstuffed or written at a time
constexpr std::size_t longestUnit = 2560; // bytes: ten blocks of 64 coefficients, of at most 31 bits each
constexpr std::size_t behind = 4096; // zeros behind the data, more than a unit and a look ahead need
constexpr int endOfBlock = 128; // as a number of coefficients
constexpr uint16_t noCodes = 65 << 8; // always too many
constexpr int largestDcLength = 11; // of 8-bit pictures
constexpr int largestDc = 1 << 16; // far more than there is
constexpr uint8_t markerByte = 0xFF;

/// The table that cameras mean when they leave it out (T.81, section K.3). Null if there is none.
const JHUFF_TBL *usualTable(bool isDc, std::size_t index)
{
    static const auto tables = [] {
        std::array<std::array<JHUFF_TBL, 2>, 2> found{};
        jpeg_error_mgr errors{};
        jpeg_compress_struct info{};
        info.err = jpeg_std_error(&errors);
        jpeg_create_compress(&info);
        info.input_components = 3;
        info.in_color_space = JCS_YCbCr;
        jpeg_set_defaults(&info);
        for (std::size_t i = 0; i < 2; ++i) {
            found[0][i] = *info.ac_huff_tbl_ptrs[i];
            found[1][i] = *info.dc_huff_tbl_ptrs[i];
        }
        jpeg_destroy_compress(&info);
        return found;
    }();
    return index < 2 ? &tables[isDc ? 1 : 0][index] : nullptr;
}

uint64_t bitsAt(const uint8_t *data, std::size_t position)
{
    return qFromBigEndian<quint64>(data + position / 8) << (position % 8);
}

bool hasMarkerByte(uint64_t bytes)
{
    constexpr uint64_t ones = 0x0101010101010101;
    return ((~bytes - ones) & bytes & (ones << 7)) != 0;
}

} // namespace

/// False if it is not a table of prefix codes, or has lengths of DC coefficients that there are not: what the tables below
/// leave out must be longer codes.
bool BWJpegCut::Codes::set(const JHUFF_TBL &table, bool dc)
{
    if (isDc == dc && std::memcmp(made.bits, table.bits, sizeof table.bits) == 0
        && std::memcmp(made.huffval, table.huffval, sizeof table.huffval) == 0)
        return limits[longestCode + 1] != 0;
    *this = {};
    isDc = dc;
    made = table;
    int32_t code = 0;
    int32_t place = 0;
    for (int length = 1; length <= longestCode; ++length) {
        const auto at = static_cast<std::size_t>(length);
        offsets[at] = place - code;
        place += table.bits[length];
        code += table.bits[length];
        if (place > 256 || code > (1 << length))
            return false;
        limits[at] = code << (longestCode - length);
        code <<= 1;
    }
    if (isDc && std::any_of(made.huffval, made.huffval + place, [](int value) { return value > largestDcLength; }))
        return false;
    limits[longestCode + 1] = 1 << longestCode;
    for (uint32_t next = 0; next < single.size(); ++next) {
        single[next] = stepOf(next << (longestCode - peekBits), 1, peekBits);
        several[next] = isDc ? uint16_t(0) : joinedSteps(next << (longestCode - peekBits));
    }
    return true;
}

/// An entry for the code that 16 bits begin with; 0 if it is none, or longer than `longest`. None is shorter than `shortest`.
uint16_t BWJpegCut::Codes::stepOf(uint32_t next16, int shortest, int longest) const
{
    int length = shortest;
    while (length <= longest && static_cast<int32_t>(next16) >= limits[static_cast<std::size_t>(length)])
        ++length;
    if (length > longest)
        return 0;
    const auto code = static_cast<int32_t>(next16 >> (longestCode - length));
    const int value = made.huffval[code + offsets[static_cast<std::size_t>(length)]];
    const int bits = value & 15;
    const int run = value >> 4;
    if (isDc)
        return static_cast<uint16_t>(value << 8 | (length + value));
    const int coefficients = bits != 0 || run == 15 ? run + 1 : endOfBlock;
    return static_cast<uint16_t>(coefficients << 8 | (length + bits));
}

/// An entry for all AC codes that are whole within the first peekBits, up to the end of a block.
uint16_t BWJpegCut::Codes::joinedSteps(uint32_t next16) const
{
    int bits = 0;
    int coefficients = 0;
    while (bits < peekBits && coefficients < endOfBlock) {
        const uint16_t step = stepOf((next16 << bits) & 0xFFFF, 1, peekBits - bits);
        const int more = step >> 8;
        if (step == 0 || coefficients + more > (more == endOfBlock ? endOfBlock + blockSize - 1 : blockSize))
            break;
        bits += step & 255;
        coefficients += more;
    }
    return bits > 0 ? static_cast<uint16_t>(coefficients << 8 | bits) : noCodes;
}

bool BWJpegCut::make(const jpeg_decompress_struct &info, const uint8_t *bytes, std::size_t length, int blockRows,
                     bool checked)
{
    const std::size_t headerLength = length - info.src->bytes_in_buffer;
    const int unitHeight = info.max_v_samp_factor * DCTSIZE;
    const int unitWidth = info.max_h_samp_factor * DCTSIZE;
    const auto inRow = static_cast<std::size_t>((static_cast<int>(info.image_width) + unitWidth - 1) / unitWidth);
    const int rows = (static_cast<int>(info.image_height) + unitHeight - 1) / unitHeight;
    if (blockRows < 1 || blockRows >= rows || !prepare(info)
        || !makeHeader(bytes, headerLength, blockRows * unitHeight))
        return false;
    m_raw = bytes + headerLength;
    m_rawEnd = bytes + length;
    m_size = 0;
    m_atMarker = false;
    m_position = 0;
    if (!walk(inRow * static_cast<std::size_t>(blockRows)) || !startRest())
        return false;
    if (!checked)
        return true;
    if (!walk(inRow * static_cast<std::size_t>(rows - blockRows) - 1)) // of which the first was walked at the start
        return false;
    while (!m_atMarker)
        unstuff();
    return (m_position + 7) / 8 == m_size && m_rawEnd - m_raw >= 2 && m_raw[1] == JPEG_EOI;
}

/// False for a picture that is not cut.
bool BWJpegCut::prepare(const jpeg_decompress_struct &info)
{
    const bool isSingle = info.num_components == 1;
    if (info.progressive_mode || info.arith_code || info.data_precision != 8 || info.restart_interval != 0
        || info.comps_in_scan != info.num_components
        || (isSingle && info.max_h_samp_factor * info.max_v_samp_factor != 1))
        return false;
    m_blockCount = 0;
    for (int i = 0; i < info.comps_in_scan; ++i) {
        const jpeg_component_info &component = *info.cur_comp_info[i];
        const auto codes = [](std::array<Codes, NUM_HUFF_TBLS> &all, JHUFF_TBL *const *tables, int number,
                              bool isDc) -> const Codes * {
            const auto index = static_cast<std::size_t>(number);
            if (index >= all.size())
                return nullptr;
            const JHUFF_TBL *table = tables[index] ? tables[index] : usualTable(isDc, index);
            return table && all[index].set(*table, isDc) ? &all[index] : nullptr;
        };
        Component &mine = m_components[static_cast<std::size_t>(i)];
        mine.dc = codes(m_dc, info.dc_huff_tbl_ptrs, component.dc_tbl_no, true);
        mine.ac = codes(m_ac, info.ac_huff_tbl_ptrs, component.ac_tbl_no, false);
        mine.predecessor = 0;
        const int blocks = component.h_samp_factor * component.v_samp_factor;
        if (!mine.dc || !mine.ac || m_blockCount + blocks > D_MAX_BLOCKS_IN_MCU)
            return false;
        std::fill_n(m_blocks.begin() + m_blockCount, blocks, static_cast<std::size_t>(i));
        m_blockCount += blocks;
    }
    return true;
}

/// Copies the header with a smaller height.
bool BWJpegCut::makeHeader(const uint8_t *bytes, std::size_t length, int rowsLess)
{
    m_written.resize(std::max(m_written.size(), length + 2 * chunk));
    std::memcpy(m_written.data(), bytes, length);
    m_writtenSize = length;
    std::size_t at = 2;
    while (at + 7 < length) {
        if (bytes[at] != markerByte)
            return false;
        const uint8_t marker = bytes[at + 1];
        if (marker == 0xC0 || marker == 0xC1) { // SOF0, SOF1: their length, the precision, the height
            const int height = qFromBigEndian<quint16>(bytes + at + 5) - rowsLess;
            if (height < 1)
                return false; // it may stand behind the picture instead
            qToBigEndian(static_cast<quint16>(height), m_written.data() + at + 5);
            return true;
        }
        at += 2 + std::size_t(qFromBigEndian<quint16>(bytes + at + 2));
    }
    return false;
}

/// So that the next unit of blocks is there, as far as there are any data.
void BWJpegCut::unstuffAhead()
{
    while (!m_atMarker && m_size < m_position / 8 + behind)
        unstuff();
}

/// Takes more of the scan, up to the next marker.
void BWJpegCut::unstuff()
{
    m_data.resize(std::max(m_data.size(), m_size + chunk + behind));
    const uint8_t *end = m_raw + std::min<std::ptrdiff_t>(m_rawEnd - m_raw, chunk);
    while (m_raw < end) {
        const auto *found =
            static_cast<const uint8_t *>(std::memchr(m_raw, markerByte, static_cast<std::size_t>(end - m_raw)));
        const uint8_t *copied = found ? found : end;
        std::memcpy(m_data.data() + m_size, m_raw, static_cast<std::size_t>(copied - m_raw));
        m_size += static_cast<std::size_t>(copied - m_raw);
        m_raw = copied;
        if (!found)
            break;
        m_atMarker = m_rawEnd - found < 2 || found[1] != 0;
        if (m_atMarker)
            break;
        m_data[m_size++] = markerByte;
        m_raw += 2;
    }
    m_atMarker = m_atMarker || m_raw >= m_rawEnd;
    std::memset(m_data.data() + m_size, 0, behind);
}

/// Takes bits of the data one after the other, and keeps those that come next at hand.
class BWJpegCut::Cursor {
public:
    static constexpr int refilled = 56; // bits that are at hand then, or more

    Cursor(const uint8_t *data, std::size_t position) : m_data(data), m_next(data + position / 8)
    {
        refill();
        take(static_cast<int>(position % 8));
    }

    void refill()
    {
        m_bits |=
            qFromBigEndian<quint64>(m_next) >> m_count; // what does not fit is read again, and gives the same bits
        m_next += (63 - m_count) >> 3;
        m_count |= refilled;
    }
    /// The last of so many bits.
    int peekLast(int count, int last) const { return static_cast<int>((m_bits << (count - last) >> 1) >> (63 - last)); }
    uint32_t peek(int count) const { return static_cast<uint32_t>(m_bits >> (64 - count)); }
    void take(int count)
    {
        m_bits <<= count;
        m_count -= count;
    }
    std::size_t position() const
    {
        return static_cast<std::size_t>(m_next - m_data) * 8 - static_cast<std::size_t>(m_count);
    }

private:
    const uint8_t *m_data;
    const uint8_t *m_next;
    uint64_t m_bits = 0;
    int m_count = 0; // of bits at hand
};

/// Steps over a DC coefficient, which is added to its predecessor.
[[gnu::always_inline]] inline bool BWJpegCut::walkDc(Cursor &cursor, Component &component)
{
    cursor.refill();
    const uint16_t step = component.dc->next(cursor.peek(longestCode));
    if (step == 0)
        return false;
    const int length = step >> 8;
    const int value = cursor.peekLast(step & 255, length);
    component.predecessor += value < (1 << length) >> 1 ? value - (1 << length) + 1 : value;
    cursor.take(step & 255);
    return std::abs(component.predecessor) <= largestDc;
}

/// Steps over the AC coefficients of a block.
[[gnu::always_inline]] inline bool BWJpegCut::walkAc(Cursor &cursor, const Codes &codes)
{
    int coefficients = 1;
    do {
        cursor.refill();
        uint16_t step = codes.several[cursor.peek(peekBits)];
        const int after = coefficients + (step >> 8);
        if (after > blockSize && (after <= endOfBlock || after >= endOfBlock + blockSize)) {
            // The last codes may belong to the next block.
            step = codes.next(cursor.peek(longestCode));
            if (step == 0)
                return false;
        }
        coefficients += step >> 8;
        cursor.take(step & 255);
    } while (coefficients < blockSize);
    return coefficients == blockSize || coefficients > endOfBlock;
}

/// Steps over so many units of blocks; false if the data do not hold them.
bool BWJpegCut::walk(std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        unstuffAhead();
        const std::size_t last = (m_atMarker ? m_size : m_size - longestUnit) * 8; // where one may begin
        Cursor cursor(m_data.data(), m_position);
        do {
            for (int i = 0; i < m_blockCount; ++i) {
                Component &component = componentOf(i);
                if (!walkDc(cursor, component) || !walkAc(cursor, *component.ac))
                    return false;
            }
            ++done;
        } while (done < count && cursor.position() <= last);
        m_position = cursor.position();
        if (m_position > m_size * 8)
            return false;
    }
    return true;
}

/// Writes the first unit of what remains. Its DC coefficients follow nothing; those of later units follow them.
bool BWJpegCut::startRest()
{
    unstuffAhead();
    m_bits = 0;
    m_bitCount = 0;
    Cursor cursor(m_data.data(), m_position);
    for (int i = 0; i < m_blockCount; ++i) {
        Component &component = componentOf(i);
        std::size_t begin = cursor.position();
        if (!walkDc(cursor, component))
            return false;
        if (i == 0 || &componentOf(i - 1) != &component) {
            if (!putDc(component))
                return false;
            begin = cursor.position();
        }
        if (!walkAc(cursor, *component.ac))
            return false;
        putData(begin, cursor.position());
    }
    m_position = cursor.position();
    m_copied = m_position;
    return m_position <= m_size * 8;
}

/// False if the component has no code for a value of that size, because its table was made for this very picture.
bool BWJpegCut::putDc(const Component &component)
{
    const int value = component.predecessor;
    int length = 0;
    for (int left = std::abs(value); left > 0; left >>= 1)
        ++length;
    const Codes &codes = *component.dc;
    int place = 0;
    for (int codeLength = 1; codeLength <= longestCode; ++codeLength) {
        for (int i = 0; i < codes.made.bits[codeLength]; ++i, ++place) {
            if (codes.made.huffval[place] != length)
                continue;
            putBits(static_cast<uint32_t>(place - codes.offsets[static_cast<std::size_t>(codeLength)]), codeLength);
            putBits(static_cast<uint32_t>(value < 0 ? value + (1 << length) - 1 : value), length);
            return true;
        }
    }
    return false;
}

void BWJpegCut::putByte(uint8_t byte)
{
    m_written[m_writtenSize++] = byte;
    if (byte == markerByte)
        m_written[m_writtenSize++] = 0;
}

void BWJpegCut::putBits(uint32_t bits, int count)
{
    m_bits = m_bits << count | bits;
    m_bitCount += count;
    while (m_bitCount >= 8) {
        m_bitCount -= 8;
        putByte(static_cast<uint8_t>(m_bits >> m_bitCount));
    }
}

void BWJpegCut::putData(std::size_t from, std::size_t to)
{
    constexpr std::size_t most = 32;
    while (from < to) {
        const auto count = static_cast<int>(std::min(to - from, most));
        putBits(static_cast<uint32_t>(bitsAt(m_data.data(), from) >> (64 - count)), count);
        from += static_cast<std::size_t>(count);
    }
}

/// Writes what comes next.
void BWJpegCut::fill()
{
    constexpr std::size_t step = 7; // bytes: with what is left over, they fit into one number
    m_writtenSize = 0;
    while (!m_atMarker && m_size < m_copied / 8 + chunk + step)
        unstuff();
    const uint64_t leftOver = (uint64_t(1) << m_bitCount) - 1;
    const std::size_t end = m_size * 8;
    while (m_copied + 8 * step <= end && m_writtenSize < chunk) {
        const uint64_t bits = (m_bits & leftOver) << (8 * step) | bitsAt(m_data.data(), m_copied) >> 8;
        const uint64_t bytes = bits >> m_bitCount << 8;
        m_bits = bits;
        m_copied += 8 * step;
        if (hasMarkerByte(bytes)) {
            for (int shift = 56; shift > 0; shift -= 8)
                putByte(static_cast<uint8_t>(bytes >> shift));
        } else {
            qToBigEndian<quint64>(bytes, m_written.data() + m_writtenSize);
            m_writtenSize += step;
        }
    }
    if (m_copied + 8 * step <= end)
        return;
    putData(m_copied, end);
    m_copied = end;
    if (m_bitCount > 0)
        putBits(0xFFU >> m_bitCount, 8 - m_bitCount);
    m_written[m_writtenSize++] = markerByte;
    m_written[m_writtenSize++] = JPEG_EOI;
}

jpeg_source_mgr &BWJpegCut::source()
{
    static constexpr auto reset = [](BWJpegCut &cut) {
        cut.m_source.next_input_byte = cut.m_written.data();
        cut.m_source.bytes_in_buffer = cut.m_writtenSize;
    };
    m_source.cut = this;
    m_source.init_source = [](j_decompress_ptr) {};
    m_source.fill_input_buffer = [](j_decompress_ptr info) -> boolean {
        BWJpegCut &cut = *static_cast<Source *>(info->src)->cut;
        cut.fill();
        reset(cut);
        return TRUE;
    };
    m_source.skip_input_data = [](j_decompress_ptr info, long count) { // only within the header, which is there
        const std::size_t skipped = std::min(info->src->bytes_in_buffer, static_cast<std::size_t>(std::max(count, 0L)));
        info->src->next_input_byte += skipped;
        info->src->bytes_in_buffer -= skipped;
    };
    m_source.resync_to_restart = &jpeg_resync_to_restart;
    m_source.term_source = [](j_decompress_ptr) {};
    reset(*this);
    return m_source;
}
