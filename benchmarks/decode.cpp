// SPDX-License-Identifier: GPL-3.0-or-later
// Decodes the JPEG files of a folder repeatedly with nothing else around it: the least that a live MJPEG image costs.
// Usage: bw_bench_decode FOLDER FRAMES RATE. Prints "decode: frames=N cpu_ms=X". With a rate, in frames a second, frames
// come at that rate, as those of a camera do; 0 is without a pause.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
#include <turbojpeg.h>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

std::vector<Bytes> readFrames(const char *folder)
{
    std::vector<Bytes> frames;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".jpg")
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        frames.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return frames;
}

double cpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<Bytes> frames = argc == 4 ? readFrames(argv[1]) : std::vector<Bytes>();
    const int count = argc == 4 ? std::atoi(argv[2]) : 0;
    const int rate = argc == 4 ? std::atoi(argv[3]) : 0;
    if (frames.empty() || count < 1 || rate < 0) {
        std::fprintf(stderr, "Usage: bw_bench_decode FOLDER FRAMES RATE\n");
        return 2;
    }

    const tjhandle decoder = tjInitDecompress();
    Bytes pixels;
    const double begin = cpuMilliseconds();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        if (rate > 0)
            std::this_thread::sleep_until(start + i * std::chrono::nanoseconds(std::chrono::seconds(1)) / rate);
        const Bytes &jpeg = frames[static_cast<std::size_t>(i) % frames.size()];
        int width = 0;
        int height = 0;
        int subsampling = 0;
        int colorspace = 0;
        if (tjDecompressHeader3(decoder, jpeg.data(), jpeg.size(), &width, &height, &subsampling, &colorspace) == 0) {
            pixels.resize(tjBufSizeYUV2(width, 4, height, subsampling));
            if (tjDecompressToYUV2(decoder, jpeg.data(), jpeg.size(), pixels.data(), width, 4, height, 0) == 0)
                continue;
        }
        std::fprintf(stderr, "%s\n", tjGetErrorStr2(decoder));
        return 1;
    }
    std::printf("decode: frames=%d cpu_ms=%.1f\n", count, cpuMilliseconds() - begin);
    tjDestroy(decoder);
    return 0;
}
