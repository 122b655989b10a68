// SPDX-License-Identifier: GPL-3.0-or-later
// Encodes raw YUYV frames with nothing but TurboJPEG: the least that recording them costs.
// Usage: bw_bench_encode FILE WIDTH HEIGHT FRAMES RATE; FILE holds frames of limited range one after the other. Frames
// come at that rate, as those of a camera do; 0 is without a pause.
// Prints "encode: frames=N cpu_ms=X planes_ms=Y bytes=B"; planes_ms is what it takes to make the encoder's planes.

#include "media/BWYuvPlanes.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <thread>
#include <turbojpeg.h>
#include <vector>

namespace {

constexpr int quality = 95; // that of recordings

double cpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

std::vector<unsigned char> contentsOf(const char *path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

int main(int argc, char **argv)
{
    const auto number = [&](int index) { return argc == 6 ? std::atoi(argv[index]) : 0; };
    const int width = number(2);
    const int height = number(3);
    const int count = number(4);
    const int rate = number(5);
    const std::size_t frameSize = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 2;
    const std::vector<unsigned char> pixels = argc == 6 ? contentsOf(argv[1]) : std::vector<unsigned char>();
    if (count < 1 || frameSize == 0 || pixels.size() < frameSize) {
        std::fprintf(stderr, "Usage: bw_bench_encode FILE WIDTH HEIGHT FRAMES RATE\n");
        return 2;
    }

    const tjhandle encoder = tjInitCompress();
    std::vector<unsigned char> jpeg(tjBufSize(width, height, TJSAMP_422));
    BWYuvPlanes planes;
    double encoding = 0;
    double converting = 0;
    double bytes = 0;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        if (rate > 0)
            std::this_thread::sleep_until(start + i * std::chrono::nanoseconds(std::chrono::seconds(1)) / rate);
        BWFrameInfo info;
        info.pixelFormat = BWPixelFormat::YUYV;
        info.width = width;
        info.height = height;
        const std::size_t offset = static_cast<std::size_t>(i) % (pixels.size() / frameSize) * frameSize;
        info.planes[0] = {pixels.data() + offset, frameSize, width * 2};
        const double begin = cpuMilliseconds();
        BWYuvConvert::toJpegPlanes(info, planes);
        const double converted = cpuMilliseconds();
        std::array<const unsigned char *, 3> data{planes.y(), planes.u(), planes.v()};
        const std::array strides{planes.stride(), planes.chromaStride(), planes.chromaStride()};
        unsigned char *target = jpeg.data();
        unsigned long size = jpeg.size();
        if (tjCompressFromYUVPlanes(encoder, data.data(), width, strides.data(), height, TJSAMP_422, &target, &size,
                                    quality, TJFLAG_NOREALLOC)
            != 0) {
            std::fprintf(stderr, "%s\n", tjGetErrorStr2(encoder));
            return 1;
        }
        converting += converted - begin;
        encoding += cpuMilliseconds() - converted;
        bytes += static_cast<double>(size);
    }
    std::printf("encode: frames=%d cpu_ms=%.1f planes_ms=%.1f bytes=%.0f\n", count, encoding, converting, bytes);
    tjDestroy(encoder);
    return 0;
}
