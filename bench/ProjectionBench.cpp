// The projector warp at the array's working size: the table of one 1024x768
// projector, and one frame of all 18 projectors resampled from their windows
// of a 2600x1300 composition. Where OpenCV is there, cv::remap (bilinear) runs
// beside it on the same sizes and source points, on one thread, as each
// projector is resampled on one thread of the saver.

#include "foundation/qvrGeometry.h"
#include "imaging/EImageData.h"
#include "projector/LQuickTable.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#if defined(QVR_BENCH_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr CSize Composition{2600, 1300};
constexpr CSize Projector{1024, 768};
constexpr int ProjectorCount = 18;

// The array's windows in the composition: 5 stacked in a column on the left
// of the upper half, 13 side by side across the lower half.
std::vector<CRect> arrayWindows() {
    std::vector<CRect> windows;
    for (long i = 0; i < 5; ++i)
        windows.push_back({0, i * 130, 200, (i + 1) * 130});
    for (long i = 0; i < 13; ++i)
        windows.push_back({i * 200, 650, (i + 1) * 200, 1300});
    return windows;
}

// A slanted quadrilateral that fills most of the projector's picture, a
// little different for every projector.
LCorners projectorCorners(long index) {
    const long shift = index * 3;
    return {CPoint{20 + shift, 30}, CPoint{1000 - shift, 12 + shift}, CPoint{990, 750 - shift},
            CPoint{40, 700 + shift / 2}};
}

// Gradients with a fine texture, every byte used.
std::unique_ptr<EImageData> makeComposition() {
    auto picture = EImageData::New(Composition, EImageMemory::NoFreeing);
    for (long y = 0; y < Composition.cy; ++y) {
        std::uint32_t* row = picture->GetRow(y);
        for (long x = 0; x < Composition.cx; ++x)
            row[x] = static_cast<std::uint32_t>((x ^ y) & 0xFF) << 24 |
                     static_cast<std::uint32_t>(x * 255 / Composition.cx) << 16 |
                     static_cast<std::uint32_t>(y * 255 / Composition.cy) << 8 |
                     static_cast<std::uint32_t>((x + y) & 0xFF);
    }
    return picture;
}

LProjection projectorProjection(long index, CSize source) {
    LProjection projection; // filter 0 at level 2.0, as a run starts
    projection.Prepare(projectorCorners(index), source);
    return projection;
}

// One projector of the array: its window of the composition and its table.
struct ProjectorFrame {
    std::unique_ptr<EImageData> Source;
    LProjection Projection;
    LQuickTable Table;
    std::unique_ptr<EImageData> Target;
};

std::vector<ProjectorFrame> makeArray() {
    const auto composition = makeComposition();
    const std::vector<CRect> windows = arrayWindows();
    std::vector<ProjectorFrame> array(ProjectorCount);
    for (long i = 0; i < ProjectorCount; ++i) {
        ProjectorFrame& frame = array[static_cast<size_t>(i)];
        frame.Source = composition->Extract(windows[static_cast<size_t>(i)]);
        frame.Projection = projectorProjection(i, frame.Source->GetSize());
        frame.Table.Build(frame.Projection, Projector, nullptr);
        frame.Target = EImageData::New(Projector, EImageMemory::NoFreeing);
    }
    return array;
}

void ProjectionTableBuild1024x768(benchmark::State& state) {
    const LProjection projection = projectorProjection(7, {200, 650});
    LQuickTable table;
    for (auto _ : state) {
        table.Build(projection, Projector, nullptr);
        benchmark::DoNotOptimize(table.GetFirstRow());
    }
}

// The argument is the loop: 0 plain, 1 AVX2, 2 AVX-512.
void ProjectionResample18x1024x768(benchmark::State& state) {
    const auto loop = static_cast<LResampleLoop>(state.range(0));
    if (!LQuickTable::IsAvailable(loop)) {
        state.SkipWithError("the processor lacks this loop");
        return;
    }
    std::vector<ProjectorFrame> array = makeArray();
    for (auto _ : state)
        for (ProjectorFrame& frame : array) {
            frame.Table.Resample(*frame.Source, *frame.Target, nullptr, loop);
            benchmark::DoNotOptimize(frame.Target->GetRow(0));
        }
}

#if defined(QVR_BENCH_OPENCV)

// The same array for cv::remap: a copy of each window and the maps of the
// table's source points, the centre of a source pixel at whole numbers.
// Points outside the patch are left to the transparent border.
struct RemapFrame {
    cv::Mat Source;
    cv::Mat MapX;
    cv::Mat MapY;
    cv::Mat Target;
};

cv::Mat matOf(const EImageData& picture) {
    cv::Mat mat(static_cast<int>(picture.GetHeight()), static_cast<int>(picture.GetWidth()), CV_8UC4);
    for (long y = 0; y < picture.GetHeight(); ++y)
        std::copy_n(picture.GetRow(y), picture.GetWidth(), mat.ptr<std::uint32_t>(static_cast<int>(y)));
    return mat;
}

RemapFrame remapFrame(const EImageData& source, const LProjection& projection) {
    RemapFrame frame;
    frame.Source = matOf(source);
    frame.MapX.create(static_cast<int>(Projector.cy), static_cast<int>(Projector.cx), CV_32FC1);
    frame.MapY.create(static_cast<int>(Projector.cy), static_cast<int>(Projector.cx), CV_32FC1);
    const double lastColumn = static_cast<double>(source.GetWidth() - 1);
    const double lastRow = static_cast<double>(source.GetHeight() - 1);
    for (int y = 0; y < frame.MapX.rows; ++y)
        for (int x = 0; x < frame.MapX.cols; ++x) {
            double u = -1.0;
            double v = -1.0;
            const bool swapFirst = projection.GetSwapFirst();
            if (!projection.Solve(x, y, swapFirst, u, v) && !projection.Solve(x, y, !swapFirst, u, v))
                u = v = -1.0;
            frame.MapX.at<float>(y, x) = static_cast<float>(u < 0 ? -10.0 : lastColumn * u);
            frame.MapY.at<float>(y, x) = static_cast<float>(v < 0 ? -10.0 : lastRow * v);
        }
    frame.Target = cv::Mat::zeros(frame.MapX.rows, frame.MapX.cols, CV_8UC4);
    return frame;
}

std::vector<RemapFrame> makeRemapArray() {
    const auto composition = makeComposition();
    const std::vector<CRect> windows = arrayWindows();
    std::vector<RemapFrame> array;
    for (long i = 0; i < ProjectorCount; ++i) {
        auto source = composition->Extract(windows[static_cast<size_t>(i)]);
        array.push_back(remapFrame(*source, projectorProjection(i, source->GetSize())));
    }
    return array;
}

// cv::remap with the float maps as they are.
void OpenCvRemapFloatMaps18x1024x768(benchmark::State& state) {
    cv::setNumThreads(1);
    std::vector<RemapFrame> array = makeRemapArray();
    for (auto _ : state)
        for (RemapFrame& frame : array) {
            cv::remap(frame.Source, frame.Target, frame.MapX, frame.MapY, cv::INTER_LINEAR,
                      cv::BORDER_TRANSPARENT);
            benchmark::DoNotOptimize(frame.Target.data);
        }
}

// cv::remap with the maps turned into OpenCV's fixed-point form once, as a
// table is made once per run.
void OpenCvRemapFixedMaps18x1024x768(benchmark::State& state) {
    cv::setNumThreads(1);
    std::vector<RemapFrame> array = makeRemapArray();
    for (RemapFrame& frame : array) {
        cv::Mat points;
        cv::Mat fractions;
        cv::convertMaps(frame.MapX, frame.MapY, points, fractions, CV_16SC2);
        frame.MapX = points;
        frame.MapY = fractions;
    }
    for (auto _ : state)
        for (RemapFrame& frame : array) {
            cv::remap(frame.Source, frame.Target, frame.MapX, frame.MapY, cv::INTER_LINEAR,
                      cv::BORDER_TRANSPARENT);
            benchmark::DoNotOptimize(frame.Target.data);
        }
}

#endif

} // namespace

BENCHMARK(ProjectionTableBuild1024x768)->Unit(benchmark::kMillisecond);
BENCHMARK(ProjectionResample18x1024x768)
    ->Arg(static_cast<int>(LResampleLoop::Plain))
    ->Arg(static_cast<int>(LResampleLoop::Avx2))
    ->Arg(static_cast<int>(LResampleLoop::Avx512))
    ->Unit(benchmark::kMillisecond);
#if defined(QVR_BENCH_OPENCV)
BENCHMARK(OpenCvRemapFloatMaps18x1024x768)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenCvRemapFixedMaps18x1024x768)->Unit(benchmark::kMillisecond);
#endif
