#include "imaging/EImageData.h"

#include "foundation/qvrSplitWork.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImageCache.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <malloc.h>
#include <new>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// Bytes a picture of the size needs beyond its pixels: header, palette and row table.
constexpr long PictureOverhead = 1056;
constexpr int ExpTableLast = 10000;
// Filtered stretches of this many target rows and more run in two halves at once.
constexpr long SplitFromRows = 128;

// Pictures are large and come and go with every frame. The C library would map
// each one freshly and hand it back on free, so that every new picture faults
// in zeroed pages again; pictures up to this size are kept in the heap instead
// and their memory is reused, by every render thread's arena.
constexpr int PictureMemoryKeptUpTo = 64 * 1024 * 1024;
constexpr int HeapKeptUpTo = 512 * 1024 * 1024;

[[maybe_unused]] const bool pictureMemoryKept = [] {
    return ::mallopt(M_MMAP_THRESHOLD, PictureMemoryKeptUpTo) == 1 &&
           ::mallopt(M_TRIM_THRESHOLD, HeapKeptUpTo) == 1;
}();

using ExpTable = std::array<double, ExpTableLast + 1>;

const ExpTable& expTable() {
    static const ExpTable table = [] {
        ExpTable values{};
        for (int i = 0; i <= ExpTableLast; ++i)
            values[i] = std::exp(i / -100.0);
        return values;
    }();
    return table;
}

// Writes `count` source pixels to the target, replacing or blending.
void copyPixels(std::uint32_t* target, const std::uint32_t* source, long count, EImageBlend blend,
                std::uint8_t opacity) {
    if (blend == EImageBlend::Copy) {
        std::memmove(target, source, static_cast<size_t>(count) * 4);
        return;
    }
    BlendPixels(target, source, count, opacity);
}

// Four pixels in the lanes of one vector register.
using PixelLanes = std::uint32_t __attribute__((vector_size(16)));

// BlendPixel, two channels per multiplication: no product exceeds 16 bits, so
// the lanes never carry. Works on one pixel word or on four lanes of them.
template <class Word> Word blendLanes(Word d, Word s, std::uint8_t opacity) {
    const Word sourceShare = (((s >> 24) + 1) * (opacity + 1u)) >> 8;
    const Word destinationShare = 256 - sourceShare;
    const Word blueRed = (d & 0x00FF00FF) * destinationShare + (s & 0x00FF00FF) * sourceShare;
    const Word greenAlpha =
        ((d >> 8) & 0x00FF00FF) * destinationShare + ((s >> 8) & 0x00FF00FF) * sourceShare;
    return ((blueRed >> 8) & 0x00FF00FF) | (greenAlpha & 0xFF00FF00);
}

// The filter weights of the table's entries: 1024 times e to the -i/100, truncated.
const std::array<std::uint32_t, ExpTableLast + 1>& filterWeights() {
    static const std::array<std::uint32_t, ExpTableLast + 1> weights = [] {
        std::array<std::uint32_t, ExpTableLast + 1> values{};
        for (int i = 0; i <= ExpTableLast; ++i)
            values[i] = static_cast<std::uint32_t>(1024 * expTable()[i]);
        return values;
    }();
    return weights;
}

// Largest number of source pixels under one target pixel for which the fast
// filter's 32-bit sums can't overflow: 1024 times 255 per pixel.
constexpr long LargestFastFootprint = UINT32_MAX / (1024 * 255);

// Scale, half footprint and radius of a filtered stretch.
struct FilterGeometry {
    FilterGeometry(const CRect& sourceRect, const CRect& targetRect)
        : scaleX(static_cast<double>(sourceRect.Width()) / static_cast<double>(targetRect.Width())),
          scaleY(static_cast<double>(sourceRect.Height()) / static_cast<double>(targetRect.Height())),
          halfX(sourceRect.Width() <= targetRect.Width() ? 0.5 : 0.5 * scaleX),
          halfY(sourceRect.Height() <= targetRect.Height() ? 0.5 : 0.5 * scaleY),
          radius(std::sqrt(halfX * halfX + halfY * halfY)), invRadius(1.0 / radius) {}

    double scaleX, scaleY, halfX, halfY, radius, invRadius;
};

// For every target column (or row) of a filtered stretch: the first and last
// source column under it and the squared distances of those columns from its
// centre, in units of the radius. The numbers are made by the very steps of
// the reference loop, so that the fast loop adds up the same doubles.
struct FilterFootprints {
    FilterFootprints(const FilterGeometry& geometry, long sourceStart, long sourceEnd, long targetCount,
                     double scale, double half) {
        double centre = static_cast<double>(sourceStart) + 0.5 * scale;
        for (long i = 0; i < targetCount; ++i, centre += scale) {
            first.push_back(std::max(static_cast<long>(centre - half), sourceStart));
            last.push_back(std::min(static_cast<long>(centre + half), sourceEnd - 1));
            offsets.push_back(squares.size());
            longest = std::max(longest, last.back() - first.back() + 1);
            double distance = (static_cast<double>(first.back()) + 0.5 - centre) / geometry.radius;
            for (long s = first.back(); s <= last.back(); ++s, distance += geometry.invRadius)
                squares.push_back(distance * distance);
        }
    }

    const double* SquaresOf(long i) const { return squares.data() + offsets[i]; }

    std::vector<long> first, last;
    std::vector<size_t> offsets;
    std::vector<double> squares;
    long longest = 0;
};

void storePixel(std::uint32_t& target, std::uint32_t pixel, EImageBlend blend, std::uint8_t opacity) {
    target = blend == EImageBlend::Blend ? BlendPixel(target, pixel, opacity) : pixel;
}

} // namespace

std::unique_ptr<EImageData> EImageData::New(CSize size, EImageMemory memory) {
    return NewWith(size, memory, Pixels::Cleared);
}

std::unique_ptr<EImageData> EImageData::NewFilled(CSize size, EImageMemory memory, std::uint32_t colour) {
    std::unique_ptr<EImageData> picture = NewWith(size, memory, Pixels::Unset);
    if (picture) picture->Fill(colour);
    return picture;
}

std::unique_ptr<EImageData> EImageData::NewWith(CSize size, EImageMemory memory, Pixels pixels) {
    if (size.cx < 0 || size.cy < 0) return nullptr;
    bool alreadyFreed = memory == EImageMemory::NoFreeing;
    while (true) {
        std::unique_ptr<EImageData> picture(new (std::nothrow) EImageData);
        if (picture && picture->Create(size.cx, size.cy, pixels)) return picture;
        picture.reset();
        const long need = MemoryNeed(size);
        if (alreadyFreed) break;
        qvrTraceVerbose(
            "*** ERROR[EImageData::New()]: Out of memory: %ld bytes for a %ldx%ld bitmap missing, but "
            "trying to free some other memory.\n",
            need, size.cx, size.cy);
        EImageCache* cache = EImageCache::Get();
        if (!cache || !cache->FreeMemory(need)) break;
        alreadyFreed = true;
    }
    qvrTraceVerbose("*** ERROR[EImageData::New()]: OUT OF MEMORY: %ld bytes for a %ldx%ld bitmap missing.\n",
                    MemoryNeed(size), size.cx, size.cy);
    return nullptr;
}

long EImageData::MemoryNeed(CSize size) {
    long pixels = 0;
    long bytes = 0;
    if (__builtin_mul_overflow(size.cx, size.cy, &pixels) || __builtin_mul_overflow(pixels, 4L, &bytes) ||
        bytes > LONG_MAX - PictureOverhead)
        return LONG_MAX;
    return bytes + PictureOverhead;
}

bool EImageData::IsPossibleSize(CSize size) {
    return size.cx >= 0 && size.cy >= 0 && size.cx <= MaxPixels && size.cy <= MaxPixels &&
           size.cx * size.cy <= MaxPixels;
}

bool EImageData::Create(long newWidth, long newHeight, Pixels pixels) {
    if (!IsPossibleSize({newWidth, newHeight})) return false;
    size_t pixelCount = 0;
    if (__builtin_mul_overflow(static_cast<size_t>(newWidth), static_cast<size_t>(newHeight), &pixelCount) ||
        pixelCount > PTRDIFF_MAX / 4)
        return false;
    const size_t words = std::max<size_t>(pixelCount, 1);
    bits.reset(static_cast<std::uint32_t*>(pixels == Pixels::Cleared ? std::calloc(words, 4)
                                                                     : std::malloc(words * 4)));
    rowTable.reset(new (std::nothrow) std::uint32_t*[static_cast<size_t>(newHeight)]);
    if (!bits || !rowTable) return false;
    width = newWidth;
    height = newHeight;
    for (long y = 0; y < height; ++y)
        rowTable[y] = bits.get() + (height - y - 1) * width;
    return true;
}

bool EImageData::IsInside(const CRect& rect) const {
    return !rect.IsRectEmpty() && rect.left >= 0 && rect.top >= 0 && rect.right <= width &&
           rect.bottom <= height;
}

std::unique_ptr<EImageData> EImageData::CopyOfPart(const CRect& rect) const {
    std::unique_ptr<EImageData> copy =
        NewWith({rect.Width(), rect.Height()}, EImageMemory::MayFree, Pixels::Unset);
    if (!copy) return nullptr;
    for (long y = 0; y < copy->height; ++y)
        std::memcpy(copy->GetRow(y), GetRow(rect.top + y) + rect.left, static_cast<size_t>(copy->width) * 4);
    return copy;
}

void EImageData::ResetPlacement() {
    position = {};
    opacity = 255;
    hasAlpha = true;
}

std::unique_ptr<EImageData> EImageData::Clone() const {
    return CopyOfPart({0, 0, width, height});
}

std::unique_ptr<EImageData> EImageData::Extract(const CRect& rect) const {
    if (!IsInside(rect)) return nullptr;
    return CopyOfPart(rect);
}

std::unique_ptr<EImageData> EImageData::Resized(CSize size, EImageFilter filter) const {
    if (size.cx < 0 || size.cy < 0) return nullptr;
    if (size == GetSize()) return Clone();
    std::unique_ptr<EImageData> target = New(size, EImageMemory::MayFree);
    if (target)
        target->Stretch(*this, {0, 0, width, height}, {0, 0, size.cx, size.cy}, EImageBlend::Copy, filter);
    return target;
}

void EImageData::Fill(std::uint32_t colour) {
    if (width > 0 && height > 0) FillRect({0, 0, width, height}, colour);
}

void EImageData::FillRect(const CRect& rect, std::uint32_t colour) {
    if (!IsInside(rect)) return;
    std::uint32_t* first = GetRow(rect.top) + rect.left;
    std::fill_n(first, rect.Width(), colour);
    for (long y = rect.top + 1; y < rect.bottom; ++y)
        std::memcpy(GetRow(y) + rect.left, first, static_cast<size_t>(rect.Width()) * 4);
}

void EImageData::FillOutside(const CRect& rect, std::uint32_t colour) {
    const long left = std::clamp(rect.left, 0L, width);
    const long right = std::clamp(rect.right, 0L, width);
    const long top = std::clamp(rect.top, 0L, height);
    const long bottom = std::clamp(rect.bottom, 0L, height);
    if (left != 0) FillRect({0, 0, left, height}, colour);
    if (right < width) FillRect({right, 0, width, height}, colour);
    if (top != 0) FillRect({left, 0, right, top}, colour);
    if (bottom < height) FillRect({left, bottom, right, height}, colour);
}

void EImageData::CopyRect(const EImageData& source, const CRect& sourceRect, CPoint target,
                          EImageBlend blend) {
    if (!source.IsInside(sourceRect) || target.x < 0 || target.y < 0) return;
    if (target.x + sourceRect.Width() > width || target.y + sourceRect.Height() > height) return;
    // Blended rows of another picture go in two halves at once; a picture's own
    // rows may overlap and keep their order.
    const long splitFromRows = blend == EImageBlend::Blend && &source != this ? SplitFromRows : LONG_MAX;
    qvrSplitInTwo(sourceRect.Height(), splitFromRows, [&](long first, long last) {
        for (long y = first; y < last; ++y)
            copyPixels(GetRow(target.y + y) + target.x, source.GetRow(sourceRect.top + y) + sourceRect.left,
                       sourceRect.Width(), blend, source.opacity);
    });
}

void EImageData::CopyRectOnColour(const EImageData& source, const CRect& sourceRect, CPoint target,
                                  std::uint32_t background) {
    if (!source.IsInside(sourceRect) || target.x < 0 || target.y < 0) return;
    const long left = std::clamp(target.x, 0L, width);
    const long copiedWidth = std::min(sourceRect.Width(), width - left);
    const long rightMargin = width - left - copiedWidth;
    const long partEnd = std::min(target.y + sourceRect.Height(), height);
    const std::vector<std::uint32_t> colourRow(static_cast<size_t>(width), background);
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    for (long y = 0; y < height; ++y) {
        std::uint32_t* row = GetRow(y);
        if (y < target.y || y >= partEnd) {
            std::memcpy(row, colourRow.data(), rowBytes);
            continue;
        }
        if (left > 0) std::memcpy(row, colourRow.data(), static_cast<size_t>(left) * 4);
        if (copiedWidth > 0)
            std::memcpy(row + left, source.GetRow(sourceRect.top + y - target.y) + sourceRect.left,
                        static_cast<size_t>(copiedWidth) * 4);
        if (rightMargin > 0)
            std::memcpy(row + left + copiedWidth, colourRow.data(), static_cast<size_t>(rightMargin) * 4);
    }
}

void EImageData::CompositeCentred(const EImageData& source, EImageBlend blend) {
    long left = width / 2 + source.position.x - source.width / 2;
    long top = height / 2 + source.position.y - source.height / 2;
    long sourceLeft = 0;
    long sourceTop = 0;
    if (left < 0) {
        sourceLeft = -left;
        left = 0;
    }
    if (top < 1) {
        sourceTop = -top;
        top = 0;
    }
    const long copiedWidth = std::min(source.width - sourceLeft, width - left);
    const long copiedHeight = std::min(source.height - sourceTop, height - top);
    if (copiedWidth <= 0 || copiedHeight <= 0) return;
    for (long y = 0; y < copiedHeight; ++y)
        copyPixels(GetRow(top + y) + left, source.GetRow(sourceTop + y) + sourceLeft, copiedWidth, blend,
                   source.opacity);
}

void EImageData::Stretch(const EImageData& source, const CRect& sourceRect, const CRect& targetRect,
                         EImageBlend blend, EImageFilter filter) {
    if (sourceRect.Width() == targetRect.Width() && sourceRect.Height() == targetRect.Height()) {
        CopyRect(source, sourceRect, {targetRect.left, targetRect.top}, blend);
        return;
    }
    if (!IsInside(targetRect) || !source.IsInside(sourceRect)) return;
    if (filter == EImageFilter::Filtered)
        StretchFilteredFast(source, sourceRect, targetRect, blend);
    else
        StretchNearest(source, sourceRect, targetRect, blend);
}

void EImageData::StretchNearest(const EImageData& source, const CRect& sourceRect, const CRect& targetRect,
                                EImageBlend blend) {
    const long sourceWidth = sourceRect.Width();
    const long sourceHeight = sourceRect.Height();
    const long targetWidth = targetRect.Width();
    const long targetHeight = targetRect.Height();
    std::vector<long> sourceColumn(static_cast<size_t>(targetWidth));
    for (long i = 0; i < targetWidth; ++i)
        sourceColumn[i] = sourceRect.left + std::min(i * sourceWidth / targetWidth, sourceWidth - 1);
    for (long j = 0; j < targetHeight; ++j) {
        const std::uint32_t* sourceRow =
            source.GetRow(sourceRect.top + std::min(j * sourceHeight / targetHeight, sourceHeight - 1));
        std::uint32_t* targetRow = GetRow(targetRect.top + j) + targetRect.left;
        for (long i = 0; i < targetWidth; ++i)
            storePixel(targetRow[i], sourceRow[sourceColumn[i]], blend, source.opacity);
    }
}

namespace {

// One target pixel of the reference filter: the weighted mean of the source
// pixels around the centre, by the steps that define the filter.
std::uint32_t referenceFilteredPixel(const EImageData& source, const CRect& sourceRect,
                                     const FilterGeometry& geometry, double centreX, double centreY) {
    const long y0 = std::max(static_cast<long>(centreY - geometry.halfY), sourceRect.top);
    const long y1 = std::min(static_cast<long>(centreY + geometry.halfY), sourceRect.bottom - 1);
    const long x0 = std::max(static_cast<long>(centreX - geometry.halfX), sourceRect.left);
    const long x1 = std::min(static_cast<long>(centreX + geometry.halfX), sourceRect.right - 1);
    std::int64_t sums[4] = {0, 0, 0, 0};
    std::int64_t weightSum = 0;
    double dy = (static_cast<double>(y0) + 0.5 - centreY) / geometry.radius;
    for (long y = y0; y <= y1; ++y, dy += geometry.invRadius) {
        const std::uint32_t* sourceRow = source.GetRow(y);
        double dx = (static_cast<double>(x0) + 0.5 - centreX) / geometry.radius;
        for (long x = x0; x <= x1; ++x, dx += geometry.invRadius) {
            const double r = dx * dx + dy * dy;
            const auto weight = static_cast<std::int64_t>(1024 * ExpLookup(-(r * r)));
            if (weight == 0) continue;
            for (int channel = 0; channel < 4; ++channel)
                sums[channel] += weight * ((sourceRow[x] >> (8 * channel)) & 0xFF);
            weightSum += weight;
        }
    }
    weightSum = std::max<std::int64_t>(weightSum, 1);
    std::uint32_t pixel = 0;
    for (int channel = 0; channel < 4; ++channel) {
        const std::int64_t mean = weightSum == 1024 ? sums[channel] >> 10 : sums[channel] / weightSum;
        pixel |= static_cast<std::uint32_t>(std::clamp<std::int64_t>(mean, 0, 255)) << (8 * channel);
    }
    return pixel;
}

#if defined(__SSE2__)
// The weighted sums of the four channels in the 32-bit lanes of one register.
class FootprintSums {
public:
    // A weight is at most 1024, so it and the channel bytes fit signed 16-bit
    // lanes: one multiply-add weighs all four channels.
    void Add(std::uint32_t pixel, std::uint32_t weight) {
        const __m128i zero = _mm_setzero_si128();
        const __m128i channels =
            _mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(pixel)), zero), zero);
        sums = _mm_add_epi32(sums, _mm_madd_epi16(channels, _mm_set1_epi32(static_cast<int>(weight))));
    }

    // The four quotients, truncated, as one pixel. The sums wrap as unsigned
    // 32-bit numbers; they are turned into doubles as signed ones, moved by
    // 2^31 and back, which is exact.
    std::uint32_t Pixel(std::uint32_t weightSum) const {
        const __m128i moved = _mm_xor_si128(sums, _mm_set1_epi32(INT32_MIN));
        const __m128d back = _mm_set1_pd(0x1p31);
        const __m128d divisor = _mm_set1_pd(static_cast<double>(weightSum));
        const __m128d most = _mm_set1_pd(255.0);
        const __m128d blueGreen = _mm_add_pd(_mm_cvtepi32_pd(moved), back);
        const __m128d redAlpha = _mm_add_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(moved, 0xEE)), back);
        const __m128i quotients =
            _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_min_pd(_mm_div_pd(blueGreen, divisor), most)),
                               _mm_cvttpd_epi32(_mm_min_pd(_mm_div_pd(redAlpha, divisor), most)));
        const __m128i words = _mm_packs_epi32(quotients, quotients);
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
    }

private:
    __m128i sums = _mm_setzero_si128();
};
#else
class FootprintSums {
public:
    void Add(std::uint32_t pixel, std::uint32_t weight) {
        for (int channel = 0; channel < 4; ++channel)
            sums[channel] += weight * ((pixel >> (8 * channel)) & 0xFF);
    }

    std::uint32_t Pixel(std::uint32_t weightSum) const {
        std::uint32_t pixel = 0;
        for (int channel = 0; channel < 4; ++channel)
            pixel |=
                std::min(static_cast<std::uint32_t>(static_cast<double>(sums[channel]) / weightSum), 255u)
                << (8 * channel);
        return pixel;
    }

private:
    std::uint32_t sums[4] = {0, 0, 0, 0};
};
#endif

// One target pixel of the fast filter, from the precomputed footprints of its
// column and row and the integer weight table; 32-bit sums suffice, as the
// footprint holds at most LargestFastFootprint pixels. A quotient below 256 of
// integers below 2^32 is exact enough in double precision that the truncated
// double is the integer quotient.
std::uint32_t fastFilteredPixel(const EImageData& source, const FilterFootprints& columns, long i,
                                const FilterFootprints& rows, long j) {
    const std::array<std::uint32_t, ExpTableLast + 1>& weights = filterWeights();
    const double* dxSquares = columns.SquaresOf(i);
    const double* dySquares = rows.SquaresOf(j);
    const long x0 = columns.first[i];
    const long count = columns.last[i] - x0 + 1;
    FootprintSums sums;
    std::uint32_t weightSum = 0;
    for (long y = rows.first[j]; y <= rows.last[j]; ++y) {
        const std::uint32_t* sourcePixels = source.GetRow(y) + x0;
        const double dySquare = dySquares[y - rows.first[j]];
        for (long k = 0; k < count; ++k) {
            const double r = dxSquares[k] + dySquare;
            const double index = -(r * r) * -100.0; // as ExpLookup(-(r * r)) indexes its table
            if (!(index < ExpTableLast + 1)) continue;
            const std::uint32_t weight = weights[static_cast<size_t>(index)];
            sums.Add(sourcePixels[k], weight);
            weightSum += weight;
        }
    }
    return sums.Pixel(std::max(weightSum, 1u));
}

} // namespace

void EImageData::StretchFilteredReference(const EImageData& source, const CRect& sourceRect,
                                          const CRect& targetRect, EImageBlend blend) {
    if (!IsInside(targetRect) || !source.IsInside(sourceRect)) return;
    const FilterGeometry geometry(sourceRect, targetRect);
    double centreY = static_cast<double>(sourceRect.top) + 0.5 * geometry.scaleY;
    for (long j = 0; j < targetRect.Height(); ++j, centreY += geometry.scaleY) {
        std::uint32_t* targetRow = GetRow(targetRect.top + j) + targetRect.left;
        double centreX = static_cast<double>(sourceRect.left) + 0.5 * geometry.scaleX;
        for (long i = 0; i < targetRect.Width(); ++i, centreX += geometry.scaleX)
            storePixel(targetRow[i], referenceFilteredPixel(source, sourceRect, geometry, centreX, centreY),
                       blend, source.opacity);
    }
}

void EImageData::StretchFilteredFast(const EImageData& source, const CRect& sourceRect,
                                     const CRect& targetRect, EImageBlend blend) {
    const FilterGeometry geometry(sourceRect, targetRect);
    const FilterFootprints columns(geometry, sourceRect.left, sourceRect.right, targetRect.Width(),
                                   geometry.scaleX, geometry.halfX);
    const FilterFootprints rows(geometry, sourceRect.top, sourceRect.bottom, targetRect.Height(),
                                geometry.scaleY, geometry.halfY);
    if (columns.longest * rows.longest > LargestFastFootprint) {
        StretchFilteredReference(source, sourceRect, targetRect, blend);
        return;
    }
    // Target rows are written apart from each other, so two halves of them can
    // go at once, unless the picture stretches a part of itself.
    const long splitFromRows = &source == this ? LONG_MAX : SplitFromRows;
    qvrSplitInTwo(targetRect.Height(), splitFromRows, [&](long first, long last) {
        for (long j = first; j < last; ++j) {
            std::uint32_t* targetRow = GetRow(targetRect.top + j) + targetRect.left;
            for (long i = 0; i < targetRect.Width(); ++i)
                storePixel(targetRow[i], fastFilteredPixel(source, columns, i, rows, j), blend,
                           source.opacity);
        }
    });
}

namespace {

#if defined(__SSE2__)
// BlendPixel for two pixels spread to eight 16-bit channels: the same
// products and shifts, eight channels per multiplication. No sum exceeds 16
// bits, as the two shares add up to 256.
__m128i blendTwoPixels(__m128i d, __m128i s, __m128i opacityPlusOne) {
    const __m128i alphaPlusOne =
        _mm_add_epi16(_mm_shufflehi_epi16(_mm_shufflelo_epi16(s, 0xFF), 0xFF), _mm_set1_epi16(1));
    // The share reaches 256, one bit beyond the low half of the product: the high half gives it.
    const __m128i sourceShare =
        _mm_or_si128(_mm_srli_epi16(_mm_mullo_epi16(alphaPlusOne, opacityPlusOne), 8),
                     _mm_slli_epi16(_mm_mulhi_epu16(alphaPlusOne, opacityPlusOne), 8));
    const __m128i destinationShare = _mm_sub_epi16(_mm_set1_epi16(256), sourceShare);
    return _mm_srli_epi16(
        _mm_add_epi16(_mm_mullo_epi16(d, destinationShare), _mm_mullo_epi16(s, sourceShare)), 8);
}

// Blends whole groups of four pixels; returns how many pixels were done.
long blendFourAtATime(std::uint32_t* target, const std::uint32_t* source, long count, std::uint8_t opacity) {
    const __m128i opacityPlusOne = _mm_set1_epi16(static_cast<short>(opacity + 1));
    const __m128i zero = _mm_setzero_si128();
    long i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(target + i));
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i));
        const __m128i low =
            blendTwoPixels(_mm_unpacklo_epi8(d, zero), _mm_unpacklo_epi8(s, zero), opacityPlusOne);
        const __m128i high =
            blendTwoPixels(_mm_unpackhi_epi8(d, zero), _mm_unpackhi_epi8(s, zero), opacityPlusOne);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + i), _mm_packus_epi16(low, high));
    }
    return i;
}
#else
long blendFourAtATime(std::uint32_t* target, const std::uint32_t* source, long count, std::uint8_t opacity) {
    long i = 0;
    for (; i + 4 <= count; i += 4) {
        PixelLanes d, s;
        std::memcpy(&d, target + i, sizeof d);
        std::memcpy(&s, source + i, sizeof s);
        const PixelLanes blended = blendLanes(d, s, opacity);
        std::memcpy(target + i, &blended, sizeof blended);
    }
    return i;
}
#endif

} // namespace

void BlendPixels(std::uint32_t* target, const std::uint32_t* source, long count, std::uint8_t opacity) {
    long i = 0;
    // Four pixels at a time, unless the rows overlap: then a pixel written may be a later one's source.
    if (source + count <= target || target + count <= source)
        i = blendFourAtATime(target, source, count, opacity);
    for (; i < count; ++i)
        target[i] = blendLanes(target[i], source[i], opacity);
}

CRect MapRect(CSize targetSize, CSize sourceSize, const CRect& rect) {
    if (targetSize.cx == 0 || targetSize.cy == 0 || sourceSize.cx == 0 || sourceSize.cy == 0) return {};
    auto map = [](long coordinate, long targetExtent, long sourceExtent) {
        return targetExtent == sourceExtent ? coordinate : coordinate * targetExtent / sourceExtent;
    };
    return {map(rect.left, targetSize.cx, sourceSize.cx), map(rect.top, targetSize.cy, sourceSize.cy),
            map(rect.right, targetSize.cx, sourceSize.cx), map(rect.bottom, targetSize.cy, sourceSize.cy)};
}

CRect MapRectRelative(CSize targetSize, const CRect& reference, const CRect& rect) {
    const CRect moved{rect.left - reference.left, rect.top - reference.top, rect.right - reference.left,
                      rect.bottom - reference.top};
    return MapRect(targetSize, {reference.Width(), reference.Height()}, moved);
}

double ExpLookup(double x) {
    const double scaled = x * -100.0;
    if (!(scaled < ExpTableLast + 1)) return 0.0;
    if (scaled <= -1.0) return 1.0;
    return expTable()[static_cast<size_t>(scaled)];
}
