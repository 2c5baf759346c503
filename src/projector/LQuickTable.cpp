#include "projector/LQuickTable.h"

#include "foundation/ELog.h"
#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrString.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <new>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

constexpr const char* LogContext = "Projective Transformation Module V1.2";

// Row numbers of a scan that found nothing or was stopped.
constexpr long NoRowFound = -1;
constexpr long ScanStopped = -2;

bool stopSet(const qvrCEvent* stop) {
    return stop && stop->IsSet();
}

} // namespace

// ---------------------------------------------------------------- rows

void LQuickRow::Clear() {
    Pixels.clear();
    Pixels.shrink_to_fit();
    FirstColumn = 1;
    LastColumn = 0;
    Row = -1;
}

bool LQuickRow::Build(const LProjection& projection, long width, long row) {
    Clear();
    if (!projection.IsReady() || width <= 0) return false;
    LQuickPixel firstPixel;
    long first = 0;
    while (first < width && !projection.MapPixel(first, row, firstPixel))
        ++first;
    if (first == width) return false;
    LQuickPixel lastPixel;
    long last = width - 1;
    while (last > first && !projection.MapPixel(last, row, lastPixel))
        --last;
    try {
        Pixels.resize(static_cast<size_t>(last - first + 1));
    } catch (const std::bad_alloc&) {
        Clear();
        return false;
    }
    Pixels.front() = firstPixel;
    if (last > first) Pixels.back() = lastPixel;
    // A pixel between that misses the patch (it folds there) repeats its left neighbour.
    for (long column = first + 1; column < last; ++column) {
        LQuickPixel& pixel = Pixels[static_cast<size_t>(column - first)];
        if (projection.MapPixel(column, row, pixel)) continue;
        pixel = Pixels[static_cast<size_t>(column - first - 1)];
        ELog::Warning(qvrFormat("Unsure projection point (%ld,%ld).", column, row), LogContext);
    }
    FirstColumn = first;
    LastColumn = last;
    Row = row;
    return true;
}

// ---------------------------------------------------------------- the table

void LQuickTable::Clear() {
    Rows.clear();
    Rows.shrink_to_fit();
    FirstRow = 1;
    LastRow = 0;
    SourceSize = {};
}

long LQuickTable::findRow(const LProjection& projection, CSize targetSize, long from, long to,
                          LQuickRow& found, const qvrCEvent* stop) {
    const long step = from <= to ? 1 : -1;
    for (long row = from; row != to + step; row += step) {
        if (stopSet(stop)) return ScanStopped;
        if (found.Build(projection, targetSize.cx, row)) return row;
    }
    return NoRowFound;
}

LQuickTable::BuildResult LQuickTable::Build(const LProjection& projection, CSize targetSize,
                                            const qvrCEvent* stop) {
    Clear();
    if (!projection.IsReady() || targetSize.cy <= 0) return BuildEmpty;
    LQuickRow firstRow;
    const long first = findRow(projection, targetSize, 0, targetSize.cy - 1, firstRow, stop);
    if (first == ScanStopped) return BuildStopped;
    if (first == NoRowFound) return BuildEmpty;
    LQuickRow lastRow;
    long last = first;
    if (first < targetSize.cy - 1)
        last = findRow(projection, targetSize, targetSize.cy - 1, first + 1, lastRow, stop);
    if (last == ScanStopped) return BuildStopped;
    if (last == NoRowFound) last = first;
    try {
        Rows.resize(static_cast<size_t>(last - first + 1));
    } catch (const std::bad_alloc&) {
        Clear();
        return BuildOutOfMemory;
    }
    Rows.front() = std::move(firstRow);
    if (last > first) Rows.back() = std::move(lastRow);
    // A row between that misses the patch altogether stays empty.
    for (long row = first + 1; row < last; ++row) {
        if (stopSet(stop)) {
            Clear();
            return BuildStopped;
        }
        Rows[static_cast<size_t>(row - first)].Build(projection, targetSize.cx, row);
    }
    FirstRow = first;
    LastRow = last;
    SourceSize = projection.GetSourceSize();
    return BuildDone;
}

// ---------------------------------------------------------------- resampling

namespace {

// How the target reaches the source: the source pixel of a map and its
// neighbours, and whether all nine neighbours lie in the source.
class SourceReader {
public:
    explicit SourceReader(const EImageData& picture)
        : Source(picture), RowStep(picture.GetRow(1) - picture.GetRow(0)),
          LastInnerColumn(picture.GetWidth() - 2), LastInnerRow(picture.GetHeight() - 2) {}

    const std::uint32_t* Centre(const LQuickPixel& pixel) const { return Source.GetRow(pixel.y) + pixel.x; }
    const std::uint32_t* Neighbour(const std::uint32_t* centre, int index) const {
        return centre + LNeighbours[index].x + LNeighbours[index].y * RowStep;
    }
    bool IsInner(const LQuickPixel& pixel) const {
        return pixel.x >= 1 && pixel.x <= LastInnerColumn && pixel.y >= 1 && pixel.y <= LastInnerRow;
    }

private:
    const EImageData& Source;
    const std::ptrdiff_t RowStep; // words from a row to the one below
    const long LastInnerColumn;
    const long LastInnerRow;
};

// One target pixel as defined: each neighbour of non-zero weight adds its
// bytes times the weight, the sums are capped at 255 and truncated.
std::uint32_t mixPixel(const LQuickPixel& pixel, const SourceReader& source) {
    const std::uint32_t* centre = source.Centre(pixel);
    double sums[4] = {0.0, 0.0, 0.0, 0.0};
    for (int i = 0; i < LQuickPixel::Count; ++i) {
        const double weight = pixel.Weights[i];
        if (weight == 0.0) continue;
        const std::uint32_t word = *source.Neighbour(centre, i);
        for (int channel = 0; channel < 4; ++channel)
            sums[channel] += static_cast<double>((word >> (8 * channel)) & 0xFF) * weight;
    }
    std::uint32_t result = 0;
    for (int channel = 0; channel < 4; ++channel) {
        const double value = std::min(sums[channel], 255.0);
        result |= static_cast<std::uint32_t>(static_cast<int>(value) & 0xFF) << (8 * channel);
    }
    return result;
}

void resampleRowPlain(const LQuickPixel* pixels, long count, const SourceReader& source, std::uint32_t* out) {
    for (long i = 0; i < count; ++i)
        out[i] = mixPixel(pixels[i], source);
}

#if defined(__x86_64__)
// The vector forms keep the four sums of a pixel in the lanes of a register.
// There a neighbour of weight 0 adds exactly +0.0 instead of being skipped,
// which leaves every sum as it is, so the bytes are those of mixPixel. As all
// nine neighbours are read, they serve only pixels inside the source's border.

// Products are rounded before they are added, as in mixPixel: the compiler
// may not fuse them with the addition where the processor could. Each form
// carries the target of its callers, so that clang accepts the register.
__attribute__((target("avx2"))) inline void keepRounded(__m256d& products) {
    asm("" : "+v"(products));
}

__attribute__((target("avx512f"))) inline void keepRounded(__m512d& products) {
    asm("" : "+v"(products));
}

__attribute__((target("avx2"))) inline __m256d addNeighbourAvx2(__m256d sums, const std::uint32_t* word,
                                                                const double* weight) {
    const __m128i bytes = _mm_cvtsi32_si128(static_cast<int>(*word));
    const __m256d channels = _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(bytes));
    __m256d products = _mm256_mul_pd(channels, _mm256_broadcast_sd(weight));
    keepRounded(products);
    return _mm256_add_pd(sums, products);
}

// Caps the sums at 255, truncates them and packs the four bytes of a word.
__attribute__((target("avx2"))) inline std::uint32_t packSumsAvx2(__m256d sums) {
    const __m128i whole = _mm256_cvttpd_epi32(_mm256_min_pd(sums, _mm256_set1_pd(255.0)));
    const __m128i halves = _mm_packus_epi32(whole, whole);
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(halves, halves)));
}

__attribute__((target("avx2"))) inline std::uint32_t mixInnerPixelAvx2(const LQuickPixel& pixel,
                                                                       const SourceReader& source) {
    const std::uint32_t* centre = source.Centre(pixel);
    __m256d sums = _mm256_setzero_pd();
#pragma GCC unroll 9
    for (int i = 0; i < LQuickPixel::Count; ++i)
        sums = addNeighbourAvx2(sums, source.Neighbour(centre, i), &pixel.Weights[i]);
    return packSumsAvx2(sums);
}

__attribute__((target("avx2"))) inline std::uint32_t mixPixelAvx2(const LQuickPixel& pixel,
                                                                  const SourceReader& source) {
    return source.IsInner(pixel) ? mixInnerPixelAvx2(pixel, source) : mixPixel(pixel, source);
}

__attribute__((target("avx2"))) void resampleRowAvx2(const LQuickPixel* pixels, long count,
                                                     const SourceReader& source, std::uint32_t* out) {
    for (long i = 0; i < count; ++i)
        out[i] = mixPixelAvx2(pixels[i], source);
}

// GCC 12's own AVX-512 headers trip its uninitialised-value warning.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

// Two pixels at once: the sums of the first in the low lanes, of the second in the high ones.
__attribute__((target("avx512f"))) inline __m512d addNeighbourPair(__m512d sums, const std::uint32_t* first,
                                                                   const std::uint32_t* second,
                                                                   const double* firstWeight,
                                                                   const double* secondWeight) {
    const __m128i bytes =
        _mm_insert_epi32(_mm_cvtsi32_si128(static_cast<int>(*first)), static_cast<int>(*second), 1);
    const __m512d channels = _mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(bytes));
    const __m512d weights =
        _mm512_mask_broadcastsd_pd(_mm512_set1_pd(*firstWeight), 0xF0, _mm_load_sd(secondWeight));
    __m512d products = _mm512_mul_pd(channels, weights);
    keepRounded(products);
    return _mm512_add_pd(sums, products);
}

__attribute__((target("avx512f"))) inline void mixInnerPairAvx512(const LQuickPixel& first,
                                                                  const LQuickPixel& second,
                                                                  const SourceReader& source,
                                                                  std::uint32_t* out) {
    const std::uint32_t* firstCentre = source.Centre(first);
    const std::uint32_t* secondCentre = source.Centre(second);
    __m512d sums = _mm512_setzero_pd();
#pragma GCC unroll 9
    for (int i = 0; i < LQuickPixel::Count; ++i)
        sums = addNeighbourPair(sums, source.Neighbour(firstCentre, i), source.Neighbour(secondCentre, i),
                                &first.Weights[i], &second.Weights[i]);
    const __m256i whole = _mm512_cvttpd_epi32(_mm512_min_pd(sums, _mm512_set1_pd(255.0)));
    const __m128i halves =
        _mm_packus_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(halves, halves));
}

// The table is read once per frame and far larger than the caches: it is
// fetched this many pixels ahead.
constexpr long PrefetchPixels = 64;

__attribute__((target("avx512f"))) void resampleRowAvx512(const LQuickPixel* pixels, long count,
                                                          const SourceReader& source, std::uint32_t* out) {
    long i = 0;
    for (; i + 1 < count; i += 2) {
        if (i + PrefetchPixels + 1 < count) {
            const char* ahead = reinterpret_cast<const char*>(pixels + i + PrefetchPixels);
            _mm_prefetch(ahead, _MM_HINT_T0);
            _mm_prefetch(ahead + 64, _MM_HINT_T0);
            _mm_prefetch(ahead + 128, _MM_HINT_T0);
        }
        const LQuickPixel& first = pixels[i];
        const LQuickPixel& second = pixels[i + 1];
        if (source.IsInner(first) && source.IsInner(second)) {
            mixInnerPairAvx512(first, second, source, out + i);
        } else {
            out[i] = mixPixelAvx2(first, source);
            out[i + 1] = mixPixelAvx2(second, source);
        }
    }
    if (i < count) out[i] = mixPixelAvx2(pixels[i], source);
}
#pragma GCC diagnostic pop
#endif

using RowResampler = void (*)(const LQuickPixel*, long, const SourceReader&, std::uint32_t*);

RowResampler rowResampler(LResampleLoop loop) {
#if defined(__x86_64__)
    if (loop == LResampleLoop::Avx512) return resampleRowAvx512;
    if (loop == LResampleLoop::Avx2) return resampleRowAvx2;
#endif
    return resampleRowPlain;
}

LResampleLoop fastestLoop() {
    for (LResampleLoop loop : {LResampleLoop::Avx512, LResampleLoop::Avx2})
        if (LQuickTable::IsAvailable(loop)) return loop;
    return LResampleLoop::Plain;
}

} // namespace

bool LQuickTable::IsAvailable(LResampleLoop loop) {
#if defined(__x86_64__)
    if (loop == LResampleLoop::Avx512) return __builtin_cpu_supports("avx512f");
    if (loop == LResampleLoop::Avx2) return __builtin_cpu_supports("avx2");
#endif
    return loop == LResampleLoop::Plain;
}

bool LQuickTable::Resample(const EImageData& source, EImageData& target, const qvrCEvent* stop) const {
    static const LResampleLoop fastest = fastestLoop();
    return Resample(source, target, stop, fastest);
}

bool LQuickTable::Resample(const EImageData& source, EImageData& target, const qvrCEvent* stop,
                           LResampleLoop loop) const {
    if (IsEmpty()) return true;
    if (source.GetSize() != SourceSize || !IsAvailable(loop)) return false;
    const RowResampler resampleRow = rowResampler(loop);
    const SourceReader reader(source);
    const long lastRow = std::min(LastRow, target.GetHeight() - 1);
    for (long row = FirstRow; row <= lastRow; ++row) {
        if (stopSet(stop)) return false;
        const LQuickRow& map = GetRow(row);
        const long first = map.GetFirstColumn();
        const long last = std::min(map.GetLastColumn(), target.GetWidth() - 1);
        if (last >= first)
            resampleRow(&map.GetPixel(first), last - first + 1, reader, target.GetRow(row) + first);
    }
    return true;
}
