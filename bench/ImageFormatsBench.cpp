// Loads of full HD files through the format registry: a JPEG whole and a
// PAL-sized section of it, which costs the whole decode and a copy, and an
// RGB PNG whole.

#include "../tests/imaging/EncodedTestFiles.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr long FullHdWidth = 1920, FullHdHeight = 1080;

// Colour gradients with a little noise, like graded footage.
const std::vector<std::uint32_t>& fullHdWords() {
    static const std::vector<std::uint32_t> words = [] {
        std::mt19937 random(7);
        std::uniform_int_distribution<int> noise(-6, 6);
        auto channel = [&](long value) {
            return static_cast<std::uint32_t>(std::clamp(value + noise(random), 0L, 255L));
        };
        std::vector<std::uint32_t> pixels;
        for (long y = 0; y < FullHdHeight; ++y)
            for (long x = 0; x < FullHdWidth; ++x)
                pixels.push_back(0xFF000000u | channel(x * 255 / FullHdWidth) << 16 |
                                 channel(y * 255 / FullHdHeight) << 8 |
                                 channel((x + y) * 255 / (FullHdWidth + FullHdHeight)));
        return pixels;
    }();
    return words;
}

std::string temporaryFile(const std::string& name, const qvrTest::Bytes& bytes) {
    const std::string file = (std::filesystem::temp_directory_path() / name).string();
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return file;
}

const std::string& fullHdJpeg() {
    static const std::string path =
        temporaryFile("qvrbench_fullhd.jpg", qvrTest::EncodeJpeg(FullHdWidth, FullHdHeight, fullHdWords(),
                                                                 qvrTest::JpegColours::Subsampled, 90));
    return path;
}

const std::string& fullHdPng() {
    static const std::string path = [] {
        qvrTest::PngPicture picture;
        picture.width = FullHdWidth;
        picture.height = FullHdHeight;
        for (std::uint32_t word : fullHdWords())
            picture.rows.insert(picture.rows.end(),
                                {static_cast<std::uint8_t>(word >> 16), static_cast<std::uint8_t>(word >> 8),
                                 static_cast<std::uint8_t>(word)});
        return temporaryFile("qvrbench_fullhd.png", qvrTest::EncodePng(picture));
    }();
    return path;
}

void load(benchmark::State& state, const std::string& path, CRect rect) {
    for (auto _ : state) {
        EImageFileResult result;
        auto picture = EImageFileFormat::Load(path, rect, result);
        if (!picture) state.SkipWithError(result.text.c_str());
        benchmark::DoNotOptimize(picture.get());
    }
    state.counters["file_bytes"] = static_cast<double>(std::filesystem::file_size(path));
}

void BM_LoadJpegFullHdWhole(benchmark::State& state) {
    load(state, fullHdJpeg(), {0, 0, 0, 0});
}
BENCHMARK(BM_LoadJpegFullHdWhole)->Unit(benchmark::kMillisecond);

void BM_LoadJpegFullHdPalSection(benchmark::State& state) {
    load(state, fullHdJpeg(), {600, 252, 1320, 828});
}
BENCHMARK(BM_LoadJpegFullHdPalSection)->Unit(benchmark::kMillisecond);

void BM_LoadPngFullHdWhole(benchmark::State& state) {
    load(state, fullHdPng(), {0, 0, 0, 0});
}
BENCHMARK(BM_LoadPngFullHdWhole)->Unit(benchmark::kMillisecond);

} // namespace
