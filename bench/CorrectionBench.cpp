// Colour correction and the matrix filter on full HD frames, each in its fast
// form and in the plain reference form: the correction with all four values
// set, and a 5 by 5 kernel with no zero entry.

#include "imaging/EImageData.h"
#include "objects/hMatrix.h"
#include "objects/imodCorrection.h"

#include <benchmark/benchmark.h>

#include <random>
#include <utility>

namespace {

constexpr CSize FullHD{1920, 1080};

std::unique_ptr<EImageData> makeNoise(CSize size) {
    auto picture = EImageData::New(size, EImageMemory::NoFreeing);
    std::mt19937 random(11);
    for (long y = 0; y < size.cy; ++y) {
        std::uint32_t* row = picture->GetRow(y);
        for (long x = 0; x < size.cx; ++x)
            row[x] = static_cast<std::uint32_t>(random());
    }
    return picture;
}

// A bell of binomial weights, 1 4 6 4 1 in each direction, over their sum.
hMatrix makeBell() {
    constexpr std::int32_t weights[5] = {1, 4, 6, 4, 1};
    hMatrix matrix;
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x)
            matrix.SetEntry(x, y, weights[x] * weights[y] * hMatrix::One);
    matrix.SetDivisor(256 * hMatrix::One);
    return matrix;
}

// The 3x3 cross that sharpens: 5 in the centre, -1 beside it.
hMatrix makeSharpen() {
    hMatrix matrix;
    matrix.SetEntry(2, 2, 5 * hMatrix::One);
    for (auto [x, y] : {std::pair{1, 2}, {3, 2}, {2, 1}, {2, 3}})
        matrix.SetEntry(x, y, -hMatrix::One);
    return matrix;
}

// All four values set, so every step runs for every pixel.
void correctAllFour(benchmark::State& state, void (*correct)(EImageData&, const hCorrectionSettings&)) {
    const auto original = makeNoise(FullHD);
    const hCorrectionSettings settings{
        .Brightness = 12, .Contrast = 25, .Saturation = -40, .Transparency = -10};
    for (auto _ : state) {
        state.PauseTiming();
        auto picture = original->Clone();
        state.ResumeTiming();
        correct(*picture, settings);
        benchmark::DoNotOptimize(picture->GetBits());
    }
}
BENCHMARK_CAPTURE(correctAllFour, tables, CorrectPixels)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(correctAllFour, reference, CorrectPixelsReference)->Unit(benchmark::kMillisecond);

void filterFullHD(benchmark::State& state, hMatrix (*makeKernel)(),
                  std::unique_ptr<EImageData> (hMatrix::*apply)(const EImageData&) const) {
    const auto source = makeNoise(FullHD);
    const hMatrix kernel = makeKernel();
    for (auto _ : state) {
        auto filtered = (kernel.*apply)(*source);
        benchmark::DoNotOptimize(filtered->GetBits());
    }
}
BENCHMARK_CAPTURE(filterFullHD, bell_fast, makeBell, &hMatrix::Apply)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterFullHD, bell_reference, makeBell, &hMatrix::ApplyReference)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterFullHD, sharpen_fast, makeSharpen, &hMatrix::Apply)->Unit(benchmark::kMillisecond);

} // namespace
