// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWJpegReader.h"

#include "Model/LiveView/BWJpegCut.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio> // jpeglib.h wants it
#include <cstdlib>
#include <cstring>
#include <jpeglib.h>

namespace {

// A damaged header may claim any size.
constexpr JDIMENSION longestSide = 32'767; // libyuv cannot scale more
constexpr int64_t mostPixels = 100'000'000;
constexpr int64_t mostPixelsInMemory = 32'000'000; // where the whole picture is held, in six bytes for each

bool isTooLarge(jpeg_decompress_struct &info)
{
    const int64_t pixels = int64_t(info.image_width) * info.image_height;
    return std::max(info.image_width, info.image_height) > longestSide
        || pixels > (jpeg_has_multiple_scans(&info) ? mostPixelsInMemory : mostPixels);
}

/// What libjpeg allocates for each picture comes from one block that is kept from picture to picture. What does not fit
/// comes from libjpeg's own pools, and the block grows before the next picture.
class PictureMemory {
public:
    PictureMemory() = default;
    ~PictureMemory() { std::free(m_block); }
    PictureMemory(const PictureMemory &) = delete;
    PictureMemory &operator=(const PictureMemory &) = delete;

    /// Takes the place of a decompressor's own functions; its client_data must point here.
    void attach(jpeg_memory_mgr &functions);

private:
    static PictureMemory &of(j_common_ptr info) { return *static_cast<PictureMemory *>(info->client_data); }
    static std::size_t roundUp(std::size_t bytes) { return (bytes + alignment - 1) / alignment * alignment; }
    void *take(int pool, std::size_t bytes);
    void reset();

    /// libjpeg's vector instructions read and write whole vectors, also at the end of a row.
    static constexpr std::size_t alignment = 64;

    jpeg_memory_mgr m_original{};
    std::byte *m_block = nullptr;
    std::size_t m_size = 0;
    std::size_t m_needed = 0; // for this picture, and used as far as it fits
};

void *PictureMemory::take(int pool, std::size_t bytes)
{
    if (pool != JPOOL_IMAGE)
        return nullptr;
    const std::size_t begin = m_needed;
    m_needed += roundUp(bytes);
    return m_needed <= m_size ? m_block + begin : nullptr;
}

void PictureMemory::reset()
{
    if (m_needed > m_size) {
        std::free(m_block);
        m_block = static_cast<std::byte *>(std::aligned_alloc(alignment, m_needed));
        m_size = m_block ? m_needed : 0;
    }
    m_needed = 0;
}

void PictureMemory::attach(jpeg_memory_mgr &functions)
{
    m_original = functions;
    functions.alloc_small = [](j_common_ptr info, int pool, std::size_t bytes) {
        void *taken = of(info).take(pool, bytes);
        return taken ? taken : of(info).m_original.alloc_small(info, pool, bytes);
    };
    functions.alloc_large = [](j_common_ptr info, int pool, std::size_t bytes) {
        void *taken = of(info).take(pool, bytes);
        return taken ? taken : of(info).m_original.alloc_large(info, pool, bytes);
    };
    functions.alloc_sarray = [](j_common_ptr info, int pool, JDIMENSION width, JDIMENSION rows) {
        const std::size_t stride = roundUp(width);
        const std::size_t pointers = roundUp(rows * sizeof(JSAMPROW));
        auto *taken = static_cast<std::byte *>(of(info).take(pool, pointers + stride * rows));
        if (!taken)
            return of(info).m_original.alloc_sarray(info, pool, width, rows);
        auto *array = reinterpret_cast<JSAMPARRAY>(taken);
        for (JDIMENSION i = 0; i < rows; ++i)
            array[i] = reinterpret_cast<JSAMPROW>(taken + pointers + i * stride);
        return array;
    };
    functions.free_pool = [](j_common_ptr info, int pool) {
        if (pool == JPOOL_IMAGE)
            of(info).reset();
        of(info).m_original.free_pool(info, pool);
    };
}

struct Errors : jpeg_error_mgr {
    std::jmp_buf failed;
};

[[noreturn]] void leave(j_common_ptr info)
{
    std::longjmp(static_cast<Errors *>(info->err)->failed, 1);
}

} // namespace

/// libjpeg's decompressor. It leaves a function that fails by longjmp(), so nothing with a destructor may live in what
/// is passed to attempt().
struct BWJpegReader::Decoder {
    Decoder()
    {
        info.err = jpeg_std_error(&errors);
        errors.error_exit = &leave;
        errors.emit_message = [](j_common_ptr common, int level) {
            if (level < 0)
                leave(common); // a warning: from here on a part of the picture is missing or made up
        };
        info.client_data = &memory;
        created = attempt([this] {
            jpeg_create_decompress(&info);
            memory.attach(*info.mem);
        });
    }
    ~Decoder() { jpeg_destroy_decompress(&info); }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    /// False if the work was given up because of an error or a warning.
    template <typename Work>
    bool attempt(const Work &work)
    {
        if (setjmp(errors.failed) != 0)
            return false;
        work();
        return true;
    }

    PictureMemory memory;
    Errors errors{};
    jpeg_decompress_struct info{};
    jpeg_source_mgr *memorySource = nullptr;
    BWJpegCut cut;
    bool created = false;
};

BWJpegReader::BWJpegReader() = default;

BWJpegReader::~BWJpegReader() = default;

bool BWJpegReader::open(const uint8_t *bytes, std::size_t length)
{
    if (!m_decoder)
        m_decoder = std::make_unique<Decoder>();
    jpeg_decompress_struct &info = m_decoder->info;
    m_bytes = bytes;
    m_length = length;
    const bool opened = bytes && m_decoder->created && m_decoder->attempt([&] {
        jpeg_abort_decompress(&info);
        info.src = m_decoder->memorySource;
        jpeg_mem_src(&info, bytes, length);
        m_decoder->memorySource = info.src;
        jpeg_read_header(&info, TRUE);
        if (isTooLarge(info))
            leave(reinterpret_cast<j_common_ptr>(&info));
    });
    if (!opened)
        m_decoder.reset(); // it may have kept tables of the damaged header
    return opened;
}

QSize BWJpegReader::size(int divisor) const
{
    const auto reduced = [&](JDIMENSION length) { return (static_cast<int>(length) + divisor - 1) / divisor; };
    return {reduced(m_decoder->info.image_width), reduced(m_decoder->info.image_height)};
}

QRect BWJpegReader::decodable(const QRect &part, int divisor) const
{
    // Whole blocks: libjpeg crops to these columns, and skips such rows without the special cases (and faults) that it
    // has for others.
    const int width = m_decoder->info.max_h_samp_factor * DCTSIZE / divisor;
    const int height = m_decoder->info.max_v_samp_factor * DCTSIZE / divisor;
    const int right = std::min((part.x() + part.width() + width - 1) / width * width, size(divisor).width());
    const int bottom = std::min((part.y() + part.height() + height - 1) / height * height, size(divisor).height());
    int left = part.x() / width * width;
    if (right - left < width)
        left = std::max(0, left - width); // never just the sliver of a block at the picture's edge
    const int top = part.y() / height * height;
    return {left, top, right - left, bottom - top};
}

int BWJpegReader::read(const QRect &part, int divisor, uint8_t *pixels, int stride, bool toTheEnd)
{
    jpeg_decompress_struct &info = m_decoder->info;
    int rows = 0;
    const int blockHeight = info.max_v_samp_factor * DCTSIZE / divisor;
    const bool reachesEnd = part.y() + part.height() == size(divisor).height();
    const bool cut =
        part.y() > 0 && m_decoder->cut.make(info, m_bytes, m_length, part.y() / blockHeight, toTheEnd || reachesEnd);
    const auto row = [&](int index) { return pixels + index * static_cast<std::ptrdiff_t>(stride); };
    const bool whole = m_decoder->attempt([&] {
        if (cut) {
            jpeg_abort_decompress(&info);
            info.src = &m_decoder->cut.source();
            jpeg_read_header(&info, TRUE);
        }
        info.scale_num = 1;
        info.scale_denom = static_cast<unsigned>(divisor);
        info.out_color_space = JCS_EXT_BGRA;
        info.do_fancy_upsampling = FALSE;
        info.do_block_smoothing = FALSE;
        jpeg_start_decompress(&info);
        auto left = static_cast<JDIMENSION>(part.x());
        auto width = static_cast<JDIMENSION>(part.width());
        jpeg_crop_scanline(&info, &left, &width);
        if (part.y() > 0 && !cut)
            jpeg_skip_scanlines(&info, static_cast<JDIMENSION>(part.y()));
        while (rows < part.height()) {
            std::array<JSAMPROW, MAX_SAMP_FACTOR> target{};
            const int count = std::min(MAX_SAMP_FACTOR, part.height() - rows);
            for (int i = 0; i < count; ++i)
                target[static_cast<std::size_t>(i)] = row(rows + i);
            rows += static_cast<int>(jpeg_read_scanlines(&info, target.data(), static_cast<JDIMENSION>(count)));
        }
        if (cut)
            return; // what is below has been looked at
        if (toTheEnd && info.output_scanline < info.output_height) {
            // Up to the last row of blocks, because libjpeg does not look at the data when it may skip all.
            const auto block = static_cast<JDIMENSION>(blockHeight);
            const JDIMENSION last = (info.output_height - 1) / block * block;
            if (last > info.output_scanline)
                jpeg_skip_scanlines(&info, last - info.output_scanline);
            auto *common = reinterpret_cast<j_common_ptr>(&info);
            JSAMPARRAY unseen = info.mem->alloc_sarray(common, JPOOL_IMAGE, width * 4, 1);
            while (info.output_scanline < info.output_height)
                jpeg_read_scanlines(&info, unseen, 1);
        }
        // Data that run out too early, or go on, show a loss that may be anywhere.
        if (info.output_scanline == info.output_height)
            jpeg_finish_decompress(&info);
    });
    if (whole) {
        jpeg_abort_decompress(&info);
        return rows;
    }
    m_decoder.reset();
    for (int i = rows; i < part.height(); ++i)
        std::memset(row(i), 0x80, static_cast<std::size_t>(part.width()) * 4);
    return rows < part.height() ? rows : 0;
}
