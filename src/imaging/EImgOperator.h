#pragma once
// Picture-to-picture operations beyond the pixel routines of EImageData: the
// turn of a picture by any angle, with a fast path (nearest pixel) and a
// quality path (exact quarter turns, then three shears with a linear filter in
// 8-bit integer channels). Scaling and blending stay with EImageData.
//
// Angles are degrees; a positive angle turns the picture counter-clockwise on
// the screen (y grows downward): the point x, y goes to x cos a + y sin a,
// -x sin a + y cos a. Every operation leaves its source alone and returns a
// new picture, or null when memory is short; nothing here throws or reports.
// The operations keep no state and are safe from any number of threads, each
// on pictures that it holds.

#include <cstdint>
#include <memory>
#include <span>

class EImageData;

// Whether RotateImage takes the quality path.
enum class ERotateQuality : bool { Fast = false, Filtered = true };

class EImgOperator {
public:
    virtual ~EImgOperator() = default;

    // The operation of a concrete operator: a new picture, the source itself
    // when there was nothing to do, or null when memory was short.
    virtual EImageData* Operate(EImageData& source) = 0;
    // Runs Operate on a picture that is handed over: it comes back when there
    // was nothing to do, and is deleted otherwise. Null for a null source.
    std::unique_ptr<EImageData> Apply(std::unique_ptr<EImageData> source);

    // Whole degrees from 0 to 359: tenths are looked at first and dropped at
    // the end, so 359.95 gives 359, -0.05 gives 0 and -0.15 gives 359.
    static double NormalizeAngle(double angle);
    // The public entry: turns by the normalised angle; a turn by 0 is a copy.
    static std::unique_ptr<EImageData> RotateImage(const EImageData& source, double angle,
                                                   std::uint32_t background, ERotateQuality quality);
    // Nearest-pixel turn into the bounding box of the turned corners, which are
    // computed in single precision and truncated; the rest is background. An
    // angle of no turn, or one that isn't a number, gives a copy.
    static std::unique_ptr<EImageData> FastRotate(const EImageData& source, double angle,
                                                  std::uint32_t background);
    // Three-shear turn with a linear filter. The result is the bounding box
    // plus the rounding of the shears; callers place it by its centre. Meant
    // for angles up to 45 degrees either way: a shear of a steeper angle makes
    // a picture far larger than the turn needs (null when it can't be made).
    static std::unique_ptr<EImageData> ShearRotate(const EImageData& source, double angle,
                                                   std::uint32_t background);
    // ShearRotate in its plain form, which defines the shear's bytes.
    // ShearRotate runs a faster loop that gives the same bytes; this one is
    // the reference that the faster one is tested against.
    static std::unique_ptr<EImageData> ShearRotateReference(const EImageData& source, double angle,
                                                            std::uint32_t background);
    // Exact quarter turns, counter-clockwise.
    static std::unique_ptr<EImageData> Rotate90(const EImageData& source);
    static std::unique_ptr<EImageData> Rotate180(const EImageData& source);
    static std::unique_ptr<EImageData> Rotate270(const EImageData& source);

    // One row of a shear: the source moves `offset` cells on, and a `weight`
    // (0 up to 1) of every pixel moves one cell further, alpha included. The
    // first pixel takes the whole background as its carry; cells before and
    // after the row get the background. A negative offset is allowed: pixels
    // before cell 0 are skipped but still carry.
    static void ShearRow(std::span<const std::uint32_t> source, std::span<std::uint32_t> target, long offset,
                         double weight, std::uint32_t background);
    // The same along column x, from the source's rows into the target's rows.
    // A column outside either picture is left alone.
    static void ShearColumn(long x, const EImageData& source, EImageData& target, long offset, double weight,
                            std::uint32_t background);
};
