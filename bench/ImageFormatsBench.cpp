// Loads of a full HD JPEG through the format registry: the whole picture and
// a PAL-sized section of it, which costs the whole decode and a copy.

#include "../tests/imaging/EncodedTestFiles.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace {

// Colour gradients with a little noise, like graded footage, as a JPEG file.
const std::string& fullHdJpeg() {
    static const std::string path = [] {
        constexpr long Width = 1920, Height = 1080;
        std::mt19937 random(7);
        std::uniform_int_distribution<int> noise(-6, 6);
        auto channel = [&](long value) {
            return static_cast<std::uint32_t>(std::clamp(value + noise(random), 0L, 255L));
        };
        std::vector<std::uint32_t> words;
        for (long y = 0; y < Height; ++y)
            for (long x = 0; x < Width; ++x)
                words.push_back(0xFF000000u | channel(x * 255 / Width) << 16 |
                                channel(y * 255 / Height) << 8 | channel((x + y) * 255 / (Width + Height)));
        const qvrTest::Bytes bytes =
            qvrTest::EncodeJpeg(Width, Height, words, qvrTest::JpegColours::Subsampled, 90);
        const std::string file = (std::filesystem::temp_directory_path() / "qvrbench_fullhd.jpg").string();
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return file;
    }();
    return path;
}

void loadJpeg(benchmark::State& state, CRect rect) {
    const std::string& path = fullHdJpeg();
    for (auto _ : state) {
        EImageFileResult result;
        auto picture = EImageFileFormat::Load(path, rect, result);
        if (!picture) state.SkipWithError(result.text.c_str());
        benchmark::DoNotOptimize(picture.get());
    }
    state.counters["file_bytes"] = static_cast<double>(std::filesystem::file_size(path));
}

void BM_LoadJpegFullHdWhole(benchmark::State& state) {
    loadJpeg(state, {0, 0, 0, 0});
}
BENCHMARK(BM_LoadJpegFullHdWhole)->Unit(benchmark::kMillisecond);

void BM_LoadJpegFullHdPalSection(benchmark::State& state) {
    loadJpeg(state, {600, 252, 1320, 828});
}
BENCHMARK(BM_LoadJpegFullHdPalSection)->Unit(benchmark::kMillisecond);

} // namespace
