// Pixel operations and quick files at video sizes: the filtered scaling of a
// full HD frame to PAL and back, blending a full HD frame, and quick-file
// writes and reads of a full HD frame with realistic and with flat content.
// Quick-file sizes are reported as the counter "file_bytes".

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>

namespace {

constexpr CSize FullHD{1920, 1080};
constexpr CSize Pal{720, 576};

// Diagonal colour gradients with a little noise, like graded footage.
std::unique_ptr<EImageData> makeFootage(CSize size) {
    auto picture = EImageData::New(size, EImageMemory::NoFreeing);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> noise(-6, 6);
    auto channel = [&](long value) {
        return static_cast<std::uint32_t>(std::clamp(value + noise(random), 0L, 255L));
    };
    for (long y = 0; y < size.cy; ++y) {
        std::uint32_t* row = picture->GetRow(y);
        for (long x = 0; x < size.cx; ++x)
            row[x] = 0xFF000000u | channel(x * 255 / size.cx) << 16 | channel(y * 255 / size.cy) << 8 |
                     channel((x + y) * 255 / (size.cx + size.cy));
    }
    return picture;
}

std::unique_ptr<EImageData> makeFlat(CSize size) {
    auto picture = EImageData::New(size, EImageMemory::NoFreeing);
    picture->Fill(0xFF336699);
    return picture;
}

void stretchFiltered(benchmark::State& state, CSize from, CSize to) {
    auto source = makeFootage(from);
    auto target = EImageData::New(to, EImageMemory::NoFreeing);
    for (auto _ : state) {
        target->Stretch(*source, {0, 0, from.cx, from.cy}, {0, 0, to.cx, to.cy}, EImageBlend::Copy,
                        EImageFilter::Filtered);
        benchmark::DoNotOptimize(target->GetBits());
    }
}

// The plain loop that defines the filter, for comparison.
void StretchFilteredReferenceFullHDToPal(benchmark::State& state) {
    auto source = makeFootage(FullHD);
    auto target = EImageData::New(Pal, EImageMemory::NoFreeing);
    for (auto _ : state) {
        target->StretchFilteredReference(*source, {0, 0, FullHD.cx, FullHD.cy}, {0, 0, Pal.cx, Pal.cy},
                                         EImageBlend::Copy);
        benchmark::DoNotOptimize(target->GetBits());
    }
}
BENCHMARK(StretchFilteredReferenceFullHDToPal)->Unit(benchmark::kMillisecond);

void StretchFilteredFullHDToPal(benchmark::State& state) {
    stretchFiltered(state, FullHD, Pal);
}
BENCHMARK(StretchFilteredFullHDToPal)->Unit(benchmark::kMillisecond);

void StretchFilteredPalToFullHD(benchmark::State& state) {
    stretchFiltered(state, Pal, FullHD);
}
BENCHMARK(StretchFilteredPalToFullHD)->Unit(benchmark::kMillisecond);

void CopyRectBlendFullHD(benchmark::State& state) {
    auto source = makeFootage(FullHD);
    source->opacity = 200;
    auto target = makeFlat(FullHD);
    for (auto _ : state) {
        target->CopyRect(*source, {0, 0, FullHD.cx, FullHD.cy}, {0, 0}, EImageBlend::Blend);
        benchmark::DoNotOptimize(target->GetBits());
    }
}
BENCHMARK(CopyRectBlendFullHD)->Unit(benchmark::kMillisecond);

// BlendPixel one pixel at a time, the reference of the row blend, for comparison.
void BlendPixelLoopFullHD(benchmark::State& state) {
    auto source = makeFootage(FullHD);
    auto target = makeFlat(FullHD);
    for (auto _ : state) {
        for (long y = 0; y < FullHD.cy; ++y) {
            std::uint32_t* row = target->GetRow(y);
            const std::uint32_t* sourceRow = source->GetRow(y);
            for (long x = 0; x < FullHD.cx; ++x)
                row[x] = BlendPixel(row[x], sourceRow[x], 200);
        }
        benchmark::DoNotOptimize(target->GetBits());
    }
}
BENCHMARK(BlendPixelLoopFullHD)->Unit(benchmark::kMillisecond);

std::string benchFile() {
    return (std::filesystem::temp_directory_path() / "qvr_imaging_bench.qts").string();
}

void quickWrite(benchmark::State& state, const EImageData& picture) {
    EImageFileResult result;
    for (auto _ : state) {
        if (!EImageFileFormat::Save(picture, benchFile(), result)) state.SkipWithError(result.text.c_str());
    }
    state.counters["file_bytes"] = static_cast<double>(std::filesystem::file_size(benchFile()));
}

void quickRead(benchmark::State& state, const EImageData& picture) {
    EImageFileResult result;
    EImageFileFormat::Save(picture, benchFile(), result);
    for (auto _ : state) {
        auto loaded = EImageFileFormat::Load(benchFile(), {}, result);
        if (!loaded) state.SkipWithError(result.text.c_str());
        benchmark::DoNotOptimize(loaded);
    }
    state.counters["file_bytes"] = static_cast<double>(std::filesystem::file_size(benchFile()));
}

void QuickWriteFootageFullHD(benchmark::State& state) {
    quickWrite(state, *makeFootage(FullHD));
}
BENCHMARK(QuickWriteFootageFullHD)->Unit(benchmark::kMillisecond);

void QuickReadFootageFullHD(benchmark::State& state) {
    quickRead(state, *makeFootage(FullHD));
}
BENCHMARK(QuickReadFootageFullHD)->Unit(benchmark::kMillisecond);

void QuickWriteFlatFullHD(benchmark::State& state) {
    quickWrite(state, *makeFlat(FullHD));
}
BENCHMARK(QuickWriteFlatFullHD)->Unit(benchmark::kMillisecond);

void QuickReadFlatFullHD(benchmark::State& state) {
    quickRead(state, *makeFlat(FullHD));
}
BENCHMARK(QuickReadFlatFullHD)->Unit(benchmark::kMillisecond);

} // namespace
