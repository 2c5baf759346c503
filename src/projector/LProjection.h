#pragma once
// The warp of one projector: the four corners P0 to P3 of a quadrilateral in
// the projector's own picture span a bilinear patch, P(u, v) = P0 + u (P1 - P0)
// + v (P3 - P0) + u v (P2 - P3 - P1 + P0), over the unit square. MapPixel
// inverts the patch for one target pixel by solving a quadratic, finds the
// source pixel that u and v point at in a picture of the source size, and
// weighs its 3 by 3 neighbourhood by the filter. The quadratic is solved once
// per target pixel and run (LQuickTable); frames only multiply by the weights.
//
// A value object without locks: one projection belongs to one render thread.
// Nothing here throws; a point outside the patch is a false answer, not an error.

#include "foundation/qvrGeometry.h"

#include <array>
#include <cstdint>

// The corners P0, P1, P2, P3 of a projector, going round the quadrilateral in target pixels.
using LCorners = std::array<CPoint, 4>;

// One target pixel of the table: the source pixel it lies on and the weights
// of that pixel's neighbours, in the order of LNeighbours. Cleared, it takes
// the centre alone.
struct LQuickPixel {
    static constexpr int Count = 9;
    static constexpr int Centre = 4;

    void Clear();

    std::int32_t x = 0;
    std::int32_t y = 0;
    double Weights[Count] = {0, 0, 0, 0, 1.0, 0, 0, 0, 0};
};

// The neighbours of a source pixel as (dx, dy), row by row; index 4 is the pixel itself.
inline constexpr CPoint LNeighbours[LQuickPixel::Count] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {0, 0},
                                                           {1, 0},   {-1, 1}, {0, 1},  {1, 1}};

class LProjection {
public:
    // Answers of VerifyFourPoints.
    enum Verify : int { VerifyGood = 0, VerifyEqualPoints = 1, VerifyNotCrossing = 2 };
    // The filter modes: how a neighbour at squared distance q weighs, L being the level.
    enum Filter : std::int32_t {
        FilterSquare = 0, // L - q squared
        FilterRoot = 1,   // L - square root of q
        FilterLinear = 2, // L - q (also any unknown mode)
        FilterBell = 3,   // e to the -(q / L squared) squared
        FilterNearest = 4 // the centre alone
    };
    static constexpr double DefaultFilterLevel = 2.0;

    // Whether the corners make a usable quadrilateral. A diagonal P0-P2 that
    // runs straight down is refused too, even where it crosses the other.
    static Verify VerifyFourPoints(const LCorners& corners);

    // Takes the corners and the size of the picture to be sampled, and sets up
    // both forms of the quadratic. False when a side of the size is below 3.
    bool Prepare(const LCorners& corners, CSize sourceSize);
    // The source is at least 3 by 3 and the filter level at least 0.1.
    bool IsReady() const;

    // The patch coordinates u and v (each 0 to 1) of the target point; with
    // `swapped` the quadratic is solved for x and y exchanged. False when the
    // point lies outside the patch or the quadratic gives no answer.
    bool Solve(double x, double y, bool swapped, double& u, double& v) const;
    // The source pixel and neighbour weights of a target pixel, the weights
    // summing to 1. False when the pixel lies outside the patch.
    bool MapPixel(long x, long y, LQuickPixel& pixel) const;

    std::int32_t GetFilter() const { return FilterMode; }
    void SetFilter(std::int32_t mode) { FilterMode = mode; }
    double GetFilterLevel() const { return FilterLevel; }
    void SetFilterLevel(double level) { FilterLevel = level; }
    CSize GetSourceSize() const { return SourceSize; }
    const LCorners& GetCorners() const { return Corners; }
    bool GetSwapFirst() const { return SwapFirst; }

    using Coefficients = std::array<double, 10>;
    // The quadratic's coefficients for x and y as they are, and exchanged.
    const Coefficients& GetDirect() const { return Direct; }
    const Coefficients& GetSwapped() const { return Swapped; }

private:
    // The unnormalised weight of a neighbour at squared distance q.
    double filterWeight(int neighbour, double q) const;
    // Divides the weights by their sum, the centre taking what rounding left over.
    static void normalise(double (&weights)[LQuickPixel::Count]);

    std::int32_t FilterMode = FilterSquare;
    double FilterLevel = DefaultFilterLevel;
    CSize SourceSize;
    LCorners Corners{};
    bool SwapFirst = false;
    long LastColumn = -1;
    long LastRow = -1;
    Coefficients Direct{};
    Coefficients Swapped{};
};
