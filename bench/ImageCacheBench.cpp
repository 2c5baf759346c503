// Paging a full HD holder to disk and back through the image cache: a flat
// picture, which the quick file's run-length rows keep small, and graded
// footage with noise, whose rows are stored raw. Each round is one FreeMemory
// that writes the quick file and one lock that reads it back.

#include "foundation/ELog.h"
#include "foundation/EPrefsEImage.h"
#include "foundation/EPrefsLog.h"
#include "imaging/EImage.h"
#include "imaging/EImageCacheManager.h"
#include "imaging/EImageData.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>

namespace {

constexpr CSize FullHd{1920, 1080};

std::unique_ptr<EImageData> flatPicture() {
    auto picture = EImageData::New(FullHd, EImageMemory::NoFreeing);
    picture->Fill(0xFF3060A0u);
    return picture;
}

std::unique_ptr<EImageData> gradedPicture() {
    auto picture = EImageData::New(FullHd, EImageMemory::NoFreeing);
    std::mt19937 random(11);
    std::uniform_int_distribution<std::uint32_t> noise(0, 7);
    for (long y = 0; y < FullHd.cy; ++y) {
        std::uint32_t* row = picture->GetRow(y);
        for (long x = 0; x < FullHd.cx; ++x)
            row[x] = 0xFF000000u | (static_cast<std::uint32_t>(x * 200 / FullHd.cx) + noise(random)) << 16 |
                     (static_cast<std::uint32_t>(y * 200 / FullHd.cy) + noise(random)) << 8 | noise(random);
    }
    return picture;
}

void pageOutAndBack(benchmark::State& state, std::unique_ptr<EImageData> picture) {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "qvrbench_cache";
    EPrefsEImage::SetCacheDirectory((dir / "virtual").string());
    EPrefsLog::StoreSettings((dir / "bench.log").string(), false, ELog::LevelNotice);
    EImageCacheManager& cache = EImageCacheManager::Get();
    EImage holder(EImage::Important);
    {
        EImageLock scope(holder);
        scope.Lock(-1);
        scope.SetData(std::move(picture));
    }
    for (auto _ : state) {
        if (!cache.FreeMemory(0)) state.SkipWithError("nothing was paged out");
        EImageLock scope(holder);
        if (!scope.Lock(-1) || !scope.GetData()) state.SkipWithError("the picture did not come back");
    }
    state.counters["file_bytes"] = static_cast<double>(
        std::filesystem::file_size(EImageCacheManager::VirtualFileName(EImageCacheManager::TokenOf(holder))));
    state.SetBytesProcessed(state.iterations() * EImageData::MemoryNeed(FullHd));
    holder.Clear();
    std::filesystem::remove_all(dir);
    EPrefsEImage::Get().Reset();
    EPrefsLog::Get().Reset();
}

void BM_PageFullHdFlatOutAndBack(benchmark::State& state) {
    pageOutAndBack(state, flatPicture());
}
BENCHMARK(BM_PageFullHdFlatOutAndBack)->Unit(benchmark::kMillisecond);

void BM_PageFullHdGradedOutAndBack(benchmark::State& state) {
    pageOutAndBack(state, gradedPicture());
}
BENCHMARK(BM_PageFullHdGradedOutAndBack)->Unit(benchmark::kMillisecond);

} // namespace
