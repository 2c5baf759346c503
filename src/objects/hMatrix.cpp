#include "objects/hMatrix.h"

#include "foundation/EStringTable.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrSplitWork.h"
#include "foundation/qvrString.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

enum : EStringId { textMatrixIncomplete = 47620 };

constexpr int Reach = hMatrix::Side / 2;
// Pictures of this many rows and more are filtered in two halves at once.
constexpr long SplitFromRows = 256;

std::string entryKey(int x, int y) {
    return qvrFormat("Entry[%d%d]", x, y);
}

// The shortest text that reads back as the same double.
std::string formatValue(double value) {
    std::array<char, 32> buffer;
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

bool readFixed(const qvrCTreeData& section, std::string_view key, std::int32_t& fixed) {
    const std::string* text = section.GetText(key);
    double value = 0.0;
    return text && qvrParseDouble(*text, value) && hMatrix::ToFixed(value, fixed);
}

// The kernel rows and columns whose neighbours lie inside the picture.
struct Window {
    int firstColumn = 0;
    int lastColumn = hMatrix::Side - 1;
    int firstRow = 0;
    int lastRow = hMatrix::Side - 1;
};

// The kernel index range, from 0 to Side - 1, whose neighbour lies between 0 and `extent` - 1.
int firstInside(long position) {
    return static_cast<int>(std::clamp<long>(Reach - position, 0, hMatrix::Side - 1));
}

int lastInside(long position, long extent) {
    return static_cast<int>(std::clamp<long>(extent - 1 - position + Reach, 0, hMatrix::Side - 1));
}

Window clippedWindow(CSize size, long x, long y) {
    return {firstInside(x), lastInside(x, size.cx), firstInside(y), lastInside(y, size.cy)};
}

// The channel's sum divided in truncating division, clamped to a byte. The
// sum has wrapped as a 32-bit signed number would.
std::uint32_t dividedChannel(std::uint32_t sum, std::int32_t divisor) {
    const std::int64_t value = std::int64_t{static_cast<std::int32_t>(sum)} / divisor;
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, 255));
}

// The picture that a kernel fills; none for a divisor of 0.
std::unique_ptr<EImageData> newTarget(const EImageData& source, std::int32_t divisor) {
    return divisor != 0 ? EImageData::New(source.GetSize(), EImageMemory::MayFree) : nullptr;
}

// The window's weighted sums of the four channels, divided.
std::uint32_t filteredPixel(const hMatrix& matrix, const EImageData& source, long x, long y,
                            const Window& window) {
    std::uint32_t sums[4] = {};
    for (int row = window.firstRow; row <= window.lastRow; ++row) {
        const std::uint32_t* pixels = source.GetRow(y + row - Reach);
        for (int column = window.firstColumn; column <= window.lastColumn; ++column) {
            const std::uint32_t entry = static_cast<std::uint32_t>(matrix.GetEntry(column, row));
            const std::uint32_t pixel = pixels[x + column - Reach];
            for (int channel = 0; channel < 4; ++channel)
                sums[channel] += entry * ((pixel >> (8 * channel)) & 0xFF);
        }
    }
    std::uint32_t pixel = 0;
    for (int channel = 0; channel < 4; ++channel)
        pixel |= dividedChannel(sums[channel], matrix.GetDivisor()) << (8 * channel);
    return pixel;
}

// Interior pixels read the whole window; a frame of 2 pixels on the left and
// top and 3 on the right and bottom goes through the window cut to the picture.
void convolveReference(const hMatrix& matrix, const EImageData& source, EImageData& target) {
    const CSize size = source.GetSize();
    for (long y = 0; y < size.cy; ++y) {
        std::uint32_t* targetRow = target.GetRow(y);
        const bool interiorRow = y >= Reach && y <= size.cy - 4;
        for (long x = 0; x < size.cx; ++x) {
            const bool interior = interiorRow && x >= Reach && x <= size.cx - 4;
            targetRow[x] =
                filteredPixel(matrix, source, x, y, interior ? Window{} : clippedWindow(size, x, y));
        }
    }
}

#if defined(__SSE2__)

// The kernel in SSE2 registers. Leaving out a neighbour beyond the edge is
// the same as reading 0 there, so the source is read with a border of zeros
// and every pixel is computed alike. Channel bytes go into 16-bit lanes, two
// kernel rows side by side, so that one multiply-add weighs a neighbour in
// both rows. Each entry is split into a signed low and a high 16-bit half;
// the sum of the high halves' products, shifted up by 16, completes the sum
// modulo 2^32, as the 32-bit sums of the plain form wrap. The division runs
// in double precision through the reciprocal, nudged up by far less than one
// divisor's step, which truncates to the same quotient below 256.
class FastConvolution {
public:
    FastConvolution(const hMatrix& matrix, const EImageData& source)
        : Source(source), Width(source.GetWidth()), Reciprocal(_mm_set1_pd(1.0 / matrix.GetDivisor())),
          Shift(shiftOf(matrix.GetDivisor())) {
        for (int pair = 0; pair < Pairs; ++pair)
            for (int column = 0; column < hMatrix::Side; ++column) {
                const Halves upper = split(matrix.GetEntry(column, 2 * pair));
                const Halves lower =
                    2 * pair + 1 < hMatrix::Side ? split(matrix.GetEntry(column, 2 * pair + 1)) : Halves{};
                LowWeights[pair][column] = weights(upper.low, lower.low);
                HighWeights[pair][column] = weights(upper.high, lower.high);
                HasHighHalves = HasHighHalves || upper.high != 0 || lower.high != 0;
                if (upper.low != 0 || upper.high != 0 || lower.low != 0 || lower.high != 0)
                    Used.Take(pair, column);
            }
        SumRow = rowSumFor();
        for (RowPair& pair : Cache)
            pair.Lanes.resize(static_cast<size_t>(Width + 2 * Reach));
        Sums.resize(static_cast<size_t>(Width));
        Zeros.resize(static_cast<size_t>(Width));
    }

    // Filters the rows from `first` up to `last`.
    void Run(EImageData& target, long first, long last) {
        for (long y = first; y < last; ++y) {
            const PixelLanes* pairs[Pairs] = {rowPair(y - Reach), rowPair(y - Reach + 2),
                                              rowPair(y - Reach + 4)};
            if (SumRow) (this->*SumRow)(pairs);
            storeQuotients(target.GetRow(y));
        }
    }

private:
    static constexpr int Pairs = (hMatrix::Side + 1) / 2;

    struct Halves {
        std::int16_t low = 0;
        std::int16_t high = 0;
    };
    // The row pairs and columns of the kernel that hold entries other than 0;
    // empty (first after last) for a kernel of zeros.
    struct UsedPart {
        int FirstPair = Pairs;
        int LastPair = -1;
        int FirstColumn = hMatrix::Side;
        int LastColumn = -1;

        void Take(int pair, int column) {
            FirstPair = std::min(FirstPair, pair);
            LastPair = std::max(LastPair, pair);
            FirstColumn = std::min(FirstColumn, column);
            LastColumn = std::max(LastColumn, column);
        }
    };
    struct PixelLanes {
        __m128i Value;
    };
    // Source rows `first` and `first` + 1 as 16-bit lanes, one vector per
    // pixel, with a border of two zero pixels on either side.
    struct RowPair {
        long First = LONG_MIN;
        std::vector<PixelLanes> Lanes;
    };

    static Halves split(std::int32_t entry) {
        const auto low = static_cast<std::int16_t>(entry & 0xFFFF);
        // The difference is a multiple of 2^16, so its upper bits are the high half.
        const auto high = static_cast<std::int16_t>(
            (static_cast<std::uint32_t>(entry) - static_cast<std::uint32_t>(std::int32_t{low})) >> 16);
        return {low, high};
    }

    static __m128i weights(std::int16_t upper, std::int16_t lower) {
        return _mm_set_epi16(lower, upper, lower, upper, lower, upper, lower, upper);
    }

    // A row of the picture, or a row of zeros above and below it.
    const std::uint32_t* rowOrZeros(long y) const {
        return y >= 0 && y < Source.GetHeight() ? Source.GetRow(y) : Zeros.data();
    }

    // The channel bytes of two pixels in 16-bit lanes.
    static __m128i twoPixels(const std::uint32_t* pixels) {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixels)),
                                 _mm_setzero_si128());
    }

    static __m128i onePixel(const std::uint32_t* pixel) {
        return _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(*pixel)), _mm_setzero_si128());
    }

    // The lanes of the pair, made when it is first asked for; the borders stay zero.
    const PixelLanes* rowPair(long first) {
        RowPair& pair = Cache[static_cast<size_t>((first + Reach) % static_cast<long>(Cache.size()))];
        if (pair.First != first) {
            pair.First = first;
            const std::uint32_t* upper = rowOrZeros(first);
            const std::uint32_t* lower = rowOrZeros(first + 1);
            PixelLanes* lanes = pair.Lanes.data() + Reach;
            long x = 0;
            for (; x + 1 < Width; x += 2) {
                const __m128i upperLanes = twoPixels(upper + x);
                const __m128i lowerLanes = twoPixels(lower + x);
                lanes[x].Value = _mm_unpacklo_epi16(upperLanes, lowerLanes);
                lanes[x + 1].Value = _mm_unpackhi_epi16(upperLanes, lowerLanes);
            }
            if (x < Width) lanes[x].Value = _mm_unpacklo_epi16(onePixel(upper + x), onePixel(lower + x));
        }
        return pair.Lanes.data();
    }

    // Two sums as quotients of at most 255 in the low two 32-bit lanes;
    // negative ones stay below 0 for the saturating packs to take to 0.
    __m128i quotients(__m128i sums) const {
        const __m128d value = _mm_add_pd(_mm_mul_pd(_mm_cvtepi32_pd(sums), Reciprocal), _mm_set1_pd(0x1p-40));
        return _mm_cvttpd_epi32(_mm_min_pd(value, _mm_set1_pd(255.0)));
    }

    __m128i pixelQuotients(const PixelLanes& sums) const {
        return _mm_unpacklo_epi64(quotients(sums.Value),
                                  quotients(_mm_unpackhi_epi64(sums.Value, sums.Value)));
    }

    // Divides the row's sums, two pixels at a time. A positive divisor that is a
    // power of two divides by a shift: for sums of 0 and above it truncates
    // alike, and every negative sum still ends below 0.
    void storeQuotients(std::uint32_t* target) const {
        if (Shift >= 0) {
            storeShiftedQuotients(target);
            return;
        }
        long x = 0;
        for (; x + 1 < Width; x += 2) {
            const __m128i words = _mm_packs_epi32(pixelQuotients(Sums[x]), pixelQuotients(Sums[x + 1]));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(target + x), _mm_packus_epi16(words, words));
        }
        if (x < Width) {
            const __m128i words = _mm_packs_epi32(pixelQuotients(Sums[x]), _mm_setzero_si128());
            target[x] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
        }
    }

    // The weighted sums of the row's pixels.
    void storeShiftedQuotients(std::uint32_t* target) const {
        const __m128i shift = _mm_cvtsi32_si128(Shift);
        long x = 0;
        for (; x + 1 < Width; x += 2) {
            const __m128i words =
                _mm_packs_epi32(_mm_sra_epi32(Sums[x].Value, shift), _mm_sra_epi32(Sums[x + 1].Value, shift));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(target + x), _mm_packus_epi16(words, words));
        }
        if (x < Width) {
            const __m128i words = _mm_packs_epi32(_mm_sra_epi32(Sums[x].Value, shift), _mm_setzero_si128());
            target[x] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
        }
    }

    // The power of two that the divisor is, or -1.
    static int shiftOf(std::int32_t divisor) {
        if (divisor <= 0 || (divisor & (divisor - 1)) != 0) return -1;
        return __builtin_ctz(static_cast<unsigned>(divisor));
    }

    // Entries of 0 add nothing, so only the pairs and columns that hold others
    // are weighed. Their counts are fixed for the loop, so that it unrolls with
    // the weights in registers.
    template <int PairCount, int ColumnCount, bool WithHighHalves>
    void sumRow(const PixelLanes* const* pairs) {
        const PixelLanes* rows[PairCount];
        __m128i low[PairCount][ColumnCount];
        __m128i high[PairCount][ColumnCount];
        for (int pair = 0; pair < PairCount; ++pair) {
            rows[pair] = pairs[Used.FirstPair + pair] + Used.FirstColumn;
            for (int column = 0; column < ColumnCount; ++column) {
                low[pair][column] = LowWeights[Used.FirstPair + pair][Used.FirstColumn + column];
                high[pair][column] = HighWeights[Used.FirstPair + pair][Used.FirstColumn + column];
            }
        }
        for (long x = 0; x < Width; ++x) {
            __m128i lowSum = _mm_setzero_si128();
            __m128i highSum = _mm_setzero_si128();
#pragma GCC unroll 3
            for (int pair = 0; pair < PairCount; ++pair)
#pragma GCC unroll 5
                for (int column = 0; column < ColumnCount; ++column) {
                    const __m128i lanes = rows[pair][x + column].Value;
                    lowSum = _mm_add_epi32(lowSum, _mm_madd_epi16(lanes, low[pair][column]));
                    if constexpr (WithHighHalves)
                        highSum = _mm_add_epi32(highSum, _mm_madd_epi16(lanes, high[pair][column]));
                }
            Sums[static_cast<size_t>(x)].Value = _mm_add_epi32(lowSum, _mm_slli_epi32(highSum, 16));
        }
    }

    using RowSum = void (FastConvolution::*)(const PixelLanes* const*);

    template <int PairCount, int... ColumnCounts>
    static constexpr std::array<RowSum, 2 * sizeof...(ColumnCounts)>
    rowSumsOf(std::integer_sequence<int, ColumnCounts...>) {
        return {&FastConvolution::sumRow<PairCount, ColumnCounts + 1, false>...,
                &FastConvolution::sumRow<PairCount, ColumnCounts + 1, true>...};
    }

    // The row sum for the used part of the kernel.
    RowSum rowSumFor() const {
        if (Used.LastPair < Used.FirstPair) return nullptr;
        static_assert(Pairs == 3, "one row of sums for each count of row pairs");
        using Columns = std::make_integer_sequence<int, hMatrix::Side>;
        static constexpr std::array<std::array<RowSum, 2 * hMatrix::Side>, Pairs> sums = {
            rowSumsOf<1>(Columns{}), rowSumsOf<2>(Columns{}), rowSumsOf<3>(Columns{})};
        const int columns = Used.LastColumn - Used.FirstColumn + 1;
        return sums[static_cast<size_t>(Used.LastPair - Used.FirstPair)]
                   [static_cast<size_t>((HasHighHalves ? hMatrix::Side : 0) + columns - 1)];
    }

    const EImageData& Source;
    const long Width;
    const __m128d Reciprocal;
    const int Shift;
    __m128i LowWeights[Pairs][hMatrix::Side];
    __m128i HighWeights[Pairs][hMatrix::Side];
    bool HasHighHalves = false;
    UsedPart Used;
    RowSum SumRow = nullptr;
    // The row pairs of the rows around the present one: the first rows y - 2, y and y + 2.
    std::array<RowPair, 6> Cache;
    std::vector<PixelLanes> Sums;
    std::vector<std::uint32_t> Zeros;
};

#endif

} // namespace

hMatrix::hMatrix() {
    SetEntry(Reach, Reach, One);
}

bool hMatrix::ToFixed(double value, std::int32_t& fixed) {
    const double scaled = std::trunc(value * One);
    if (!(scaled >= INT32_MIN && scaled <= INT32_MAX)) return false;
    fixed = static_cast<std::int32_t>(scaled);
    return true;
}

void hMatrix::Save(qvrCTreeData& section) const {
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x)
            section.SetText(entryKey(x, y), formatValue(ToValue(GetEntry(x, y))));
    section.SetText("Divisor", formatValue(ToValue(Divisor)));
}

bool hMatrix::Load(const qvrCTreeData& section, hReport& report) {
    hMatrix read;
    bool complete = readFixed(section, "Divisor", read.Divisor);
    for (int y = 0; y < Side && complete; ++y)
        for (int x = 0; x < Side && complete; ++x)
            complete = readFixed(section, entryKey(x, y), read.Entries[static_cast<size_t>(y * Side + x)]);
    if (!complete) {
        report.Report(textMatrixIncomplete, hReportError);
        return false;
    }
    if (read.Divisor == 0) read.Divisor = One;
    *this = read;
    return true;
}

std::unique_ptr<EImageData> hMatrix::ApplyReference(const EImageData& source) const {
    std::unique_ptr<EImageData> target = newTarget(source, Divisor);
    if (target) convolveReference(*this, source, *target);
    return target;
}

std::unique_ptr<EImageData> hMatrix::Apply(const EImageData& source) const {
#if defined(__SSE2__)
    std::unique_ptr<EImageData> target = newTarget(source, Divisor);
    // Each half of the rows has a convolution of its own, with its own row cache.
    if (target)
        qvrSplitInTwo(source.GetHeight(), SplitFromRows, [&](long first, long last) {
            FastConvolution(*this, source).Run(*target, first, last);
        });
    return target;
#else
    return ApplyReference(source);
#endif
}
