#include "media/BWJpegCodec.h"

#include <array>
#include <memory>
#include <turbojpeg.h>
#include <vector>

namespace {

constexpr long maxPixels = 200'000'000; // of an image that is decoded: a damaged header may tell anything

struct HandleDeleter {
    void operator()(void *handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleDeleter>;

struct ThreadState {
    Handle compressor;
    Handle decompressor;
    std::vector<uint8_t> buffer;
    QString error;
};

ThreadState &threadState()
{
    thread_local ThreadState state;
    return state;
}

/// Room for the largest possible image, and what runs the compressor on it.
template <typename Run>
BWJpegCodec::Bytes compressWith(int width, int height, int subsampling, Run run)
{
    ThreadState &state = threadState();
    if (!state.compressor)
        state.compressor.reset(tjInitCompress());
    if (!state.compressor) {
        state.error = QString::fromLatin1(tjGetErrorStr2(nullptr));
        return {};
    }
    const unsigned long room = tjBufSize(width, height, subsampling);
    if (room == static_cast<unsigned long>(-1)) {
        state.error = QStringLiteral("%1x%2 is no size for an image").arg(width).arg(height);
        return {};
    }
    if (state.buffer.size() < room)
        state.buffer.resize(room);
    unsigned char *target = state.buffer.data();
    unsigned long size = state.buffer.size();
    if (run(state.compressor.get(), &target, &size) != 0) {
        state.error = QString::fromLatin1(tjGetErrorStr2(state.compressor.get()));
        return {};
    }
    return {target, size};
}

BWJpegCodec::Bytes compressPlanes(const BWYuvPlanes &planes, int subsampling, int quality)
{
    std::array<const unsigned char *, 3> data{planes.y(), planes.u(), planes.v()};
    const std::array<int, 3> strides{planes.stride(), planes.chromaStride(), planes.chromaStride()};
    return compressWith(planes.width(), planes.height(), subsampling,
                        [&](tjhandle handle, unsigned char **target, unsigned long *size) {
                            return tjCompressFromYUVPlanes(handle, data.data(), planes.width(), strides.data(),
                                                           planes.height(), subsampling, target, size, quality,
                                                           TJFLAG_NOREALLOC);
                        });
}

} // namespace

BWJpegCodec::Bytes BWJpegCodec::compress(const BWYuvPlanes &planes, int quality)
{
    return compressPlanes(planes, TJSAMP_422, quality);
}

BWJpegCodec::Bytes BWJpegCodec::compressGrey(const BWYuvPlanes &planes, int quality)
{
    return compressPlanes(planes, TJSAMP_GRAY, quality);
}

BWJpegCodec::Bytes BWJpegCodec::compress(const uint8_t *pixels, int stride, int width, int height, Order order,
                                         int quality)
{
    return compressWith(width, height, TJSAMP_422, [&](tjhandle handle, unsigned char **target, unsigned long *size) {
        return tjCompress2(handle, pixels, width, stride, height, order == Order::RGB ? TJPF_RGB : TJPF_BGR, target,
                           size, TJSAMP_422, quality, TJFLAG_NOREALLOC);
    });
}

bool BWJpegCodec::decodes(const uint8_t *data, std::size_t size)
{
    ThreadState &state = threadState();
    if (!state.decompressor)
        state.decompressor.reset(tjInitDecompress());
    if (!state.decompressor) {
        state.error = QString::fromLatin1(tjGetErrorStr2(nullptr));
        return false;
    }
    const auto failed = [&state] {
        state.error = QString::fromLatin1(tjGetErrorStr2(state.decompressor.get()));
        state.decompressor.reset(); // after a damaged header it would take every image for damaged
        return false;
    };
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colourSpace = 0;
    if (tjDecompressHeader3(state.decompressor.get(), data, size, &width, &height, &subsampling, &colourSpace) != 0)
        return failed();
    if (static_cast<long>(width) * height > maxPixels) {
        state.error = QStringLiteral("%1x%2 is too large").arg(width).arg(height);
        return false;
    }
    // Damage shows while the coefficients are read; an eighth of the size and no colour spare the rest of the work.
    constexpr tjscalingfactor eighth{1, 8};
    const int smallWidth = TJSCALED(width, eighth);
    const int smallHeight = TJSCALED(height, eighth);
    const std::size_t room = static_cast<std::size_t>(smallWidth) * static_cast<std::size_t>(smallHeight);
    if (state.buffer.size() < room)
        state.buffer.resize(room);
    if (tjDecompress2(state.decompressor.get(), data, size, state.buffer.data(), smallWidth, smallWidth, smallHeight,
                      TJPF_GRAY, TJFLAG_STOPONWARNING)
        != 0)
        return failed();
    return true;
}

QString BWJpegCodec::lastError()
{
    return threadState().error;
}
