#pragma once
// The picture that everything renders into: 32 bits per pixel, the word
// 0xAARRGGBB (blue, green, red, alpha in memory), alpha 255 opaque and colour
// not premultiplied. The pixels are one block of rows stored bottom-up, the
// layout of a device-independent bitmap, and are reached through a row table
// whose entry 0 is the top row; every operation here counts y downward. A
// picture also carries a position (its centre's offset from the centre of a
// destination) and a global opacity used when it is the source of a blend.
//
// Rectangles are left, top, right, bottom with right and bottom exclusive.
// Wrong rectangles are refused silently; nothing here throws. A picture has no
// lock of its own: whoever holds the EImageLock of its holder may use it.

#include "foundation/qvrGeometry.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

// Whether copied pixels replace the target or are mixed into it by BlendPixel.
enum class EImageBlend : bool { Copy = false, Blend = true };
// Nearest-pixel scaling (drafts, proxies) or the weighted filter.
enum class EImageFilter : bool { Fast = false, Filtered = true };
// Whether a failed allocation may ask the image cache to give memory back and retry once.
enum class EImageMemory : bool { NoFreeing = false, MayFree = true };

class EImageData {
public:
    // A new picture of the size (0 allowed), every pixel 0; null for a negative
    // size or when memory is short, after one retry if freeing is allowed.
    static std::unique_ptr<EImageData> New(CSize size, EImageMemory memory);
    // The same, every pixel the colour: the pixels are written once, not cleared first.
    static std::unique_ptr<EImageData> NewFilled(CSize size, EImageMemory memory, std::uint32_t colour);
    // Bytes that a picture of the size costs, as the image cache counts them.
    static long MemoryNeed(CSize size);
    // The largest picture that is ever made: 2^29 pixels, two GiB of memory,
    // whatever a file or a setting asks for.
    static constexpr long MaxPixels = 1L << 29;
    // Whether a picture of the size can be made: no side negative, at most MaxPixels.
    static bool IsPossibleSize(CSize size);

    EImageData(const EImageData&) = delete;
    EImageData& operator=(const EImageData&) = delete;

    long GetWidth() const { return width; }
    long GetHeight() const { return height; }
    CSize GetSize() const { return {width, height}; }
    // Row y, counted from the top.
    std::uint32_t* GetRow(long y) { return rowTable[y]; }
    const std::uint32_t* GetRow(long y) const { return rowTable[y]; }
    // The start of the pixel block, which holds the bottom row first.
    const std::uint32_t* GetBits() const { return bits.get(); }
    long GetBytesPerLine() const { return width * 4; }
    // Whether the alpha bytes carry meaning; true for every picture made by New.
    bool HasAlpha() const { return hasAlpha; }
    void SetHasAlpha(bool value) { hasAlpha = value; }

    // Copies of the pixels alone: position, opacity and alpha flag are the defaults.
    std::unique_ptr<EImageData> Clone() const;
    // A copy of a rectangle that lies wholly inside the picture and isn't empty.
    std::unique_ptr<EImageData> Extract(const CRect& rect) const;
    // A copy scaled to the size; null for a negative size.
    std::unique_ptr<EImageData> Resized(CSize size, EImageFilter filter) const;

    void Fill(std::uint32_t colour);
    // The rectangle must lie inside the picture; otherwise nothing happens.
    void FillRect(const CRect& rect, std::uint32_t colour);
    // Fills everything outside the rectangle.
    void FillOutside(const CRect& rect, std::uint32_t colour);
    // Copies a rectangle of the source to the target point. Nothing is clipped:
    // a part that doesn't fit wholly is refused.
    void CopyRect(const EImageData& source, const CRect& sourceRect, CPoint target, EImageBlend blend);
    // Rewrites the whole picture: the source part at the target point, cut at
    // the picture's edges, and the background colour everywhere else.
    void CopyRectOnColour(const EImageData& source, const CRect& sourceRect, CPoint target,
                          std::uint32_t background);
    // Scales a source rectangle into a target rectangle; both must lie inside their pictures.
    void Stretch(const EImageData& source, const CRect& sourceRect, const CRect& targetRect,
                 EImageBlend blend, EImageFilter filter);
    // The filtered Stretch in its plain form, which defines the filter's bytes.
    // Stretch runs a faster loop that gives the same bytes; this one is the
    // reference that the faster one is tested against. Rectangles of equal
    // size are scaled too, not copied.
    void StretchFilteredReference(const EImageData& source, const CRect& sourceRect, const CRect& targetRect,
                                  EImageBlend blend);
    // Copies the source with its centre at this picture's centre plus the
    // source's position, clipped to both pictures.
    void CompositeCentred(const EImageData& source, EImageBlend blend);

    // Sets position, opacity and alpha flag to the defaults of a new picture,
    // so that the picture stands for a Clone of itself.
    void ResetPlacement();

    CPoint position;
    std::uint8_t opacity = 255;

private:
    struct FreeBlock {
        void operator()(std::uint32_t* block) const { std::free(block); }
    };

    // Whether a new picture's pixels are set to 0 or left for its maker to write, every one.
    enum class Pixels : bool { Unset = false, Cleared = true };

    EImageData() = default;
    static std::unique_ptr<EImageData> NewWith(CSize size, EImageMemory memory, Pixels pixels);
    // Allocates pixels and row table; false when memory is short or the size too large.
    bool Create(long newWidth, long newHeight, Pixels pixels);
    bool IsInside(const CRect& rect) const;
    // A new picture with a copy of the rectangle, which the caller has checked.
    std::unique_ptr<EImageData> CopyOfPart(const CRect& rect) const;
    void StretchNearest(const EImageData& source, const CRect& sourceRect, const CRect& targetRect,
                        EImageBlend blend);
    void StretchFilteredFast(const EImageData& source, const CRect& sourceRect, const CRect& targetRect,
                             EImageBlend blend);

    long width = 0;
    long height = 0;
    bool hasAlpha = true;
    std::unique_ptr<std::uint32_t[], FreeBlock> bits;
    std::unique_ptr<std::uint32_t*[]> rowTable;
};

// Mixes the source word into the destination word by the source's alpha
// times the opacity; the alpha bytes are mixed the same way. An opaque source
// at opacity 255 replaces the destination exactly.
constexpr std::uint32_t BlendPixel(std::uint32_t destination, std::uint32_t source, std::uint8_t opacity) {
    const std::uint32_t sourceShare = (((source >> 24) + 1) * (opacity + 1u)) >> 8;
    const std::uint32_t destinationShare = 256 - sourceShare;
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t d = (destination >> shift) & 0xFF;
        const std::uint32_t s = (source >> shift) & 0xFF;
        result |= ((d * destinationShare + s * sourceShare) >> 8) << shift;
    }
    return result;
}

// BlendPixel over a row: target[i] = BlendPixel(target[i], source[i], opacity),
// the same bytes computed two channels at a time.
void BlendPixels(std::uint32_t* target, const std::uint32_t* source, long count, std::uint8_t opacity);

// A rectangle in a picture of the source size mapped to a picture of the target size.
CRect MapRect(CSize targetSize, CSize sourceSize, const CRect& rect);
// A rectangle given relative to the reference rectangle, mapped from its size to the target size.
CRect MapRectRelative(CSize targetSize, const CRect& reference, const CRect& rect);
// e to the x for x at most 0, from a table in steps of 0.01.
double ExpLookup(double x);
