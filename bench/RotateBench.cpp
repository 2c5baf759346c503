// Turning a full HD frame by 10 degrees: the quality path (three shears) in
// its fast and its plain reference form, and the nearest-pixel path.

#include "imaging/EImageData.h"
#include "imaging/EImgOperator.h"

#include <benchmark/benchmark.h>

namespace {

constexpr CSize FullHD{1920, 1080};

// Gradients across and down with a fine texture in blue, opaque.
std::unique_ptr<EImageData> makeFootage() {
    auto picture = EImageData::New(FullHD, EImageMemory::NoFreeing);
    for (long y = 0; y < FullHD.cy; ++y) {
        std::uint32_t* row = picture->GetRow(y);
        for (long x = 0; x < FullHD.cx; ++x)
            row[x] = 0xFF000000u | static_cast<std::uint32_t>(x * 255 / FullHD.cx) << 16 |
                     static_cast<std::uint32_t>(y * 255 / FullHD.cy) << 8 |
                     static_cast<std::uint32_t>((x ^ y) & 0xFF);
    }
    return picture;
}

template <class Rotate> void rotateFullHD(benchmark::State& state, Rotate rotate) {
    auto source = makeFootage();
    for (auto _ : state) {
        auto turned = rotate(*source);
        benchmark::DoNotOptimize(turned->GetBits());
    }
}

void RotateQualityFullHDBy10Degrees(benchmark::State& state) {
    rotateFullHD(state, [](const EImageData& source) {
        return EImgOperator::RotateImage(source, 10.0, 0, ERotateQuality::Filtered);
    });
}

void ShearRotateReferenceFullHDBy10Degrees(benchmark::State& state) {
    rotateFullHD(
        state, [](const EImageData& source) { return EImgOperator::ShearRotateReference(source, 10.0, 0); });
}

void RotateFastFullHDBy10Degrees(benchmark::State& state) {
    rotateFullHD(state, [](const EImageData& source) {
        return EImgOperator::RotateImage(source, 10.0, 0, ERotateQuality::Fast);
    });
}

} // namespace

BENCHMARK(RotateQualityFullHDBy10Degrees)->Unit(benchmark::kMillisecond);
BENCHMARK(ShearRotateReferenceFullHDBy10Degrees)->Unit(benchmark::kMillisecond);
BENCHMARK(RotateFastFullHDBy10Degrees)->Unit(benchmark::kMillisecond);
