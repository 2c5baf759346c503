#include "projector/LProjection.h"

#include "foundation/qvrTrace.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

// Below this a coefficient, a discriminant or a divisor counts as zero.
constexpr double Epsilon = 1e-07;
// How far u and v may stray outside 0 to 1 before a point counts as outside.
constexpr double Tolerance = 0.0001;
constexpr double LowestLevel = 0.1;
// A bell filter's level at or below this is not divided by.
constexpr double SmallestBellLevel = 0.001;

bool outsideUnit(double value) {
    return value < -Tolerance || value > 1.0 + Tolerance;
}

double squared(double value) {
    return value * value;
}

void traceNotCrossing(int step) {
    qvrTraceVerbose("*** ERROR[LProjection::VerifyFourPoints()]: Diagonals don't cross (#%d) !\n", step);
}

} // namespace

void LQuickPixel::Clear() {
    x = 0;
    y = 0;
    std::fill(std::begin(Weights), std::end(Weights), 0.0);
    Weights[Centre] = 1.0;
}

LProjection::Verify LProjection::VerifyFourPoints(const LCorners& corners) {
    for (long first = 0; first < 4; ++first)
        for (long second = first + 1; second < 4; ++second)
            if (corners[first] == corners[second]) {
                qvrTraceVerbose("*** ERROR[LProjection::VerifyFourPoints()]: Point %ld and %ld are equal !\n",
                                first, second);
                return VerifyEqualPoints;
            }
    const CPoint& p0 = corners[0];
    const CPoint& p1 = corners[1];
    const CPoint& p2 = corners[2];
    const CPoint& p3 = corners[3];
    const long d = (p3.x - p1.x) * (p2.y - p0.y) - (p2.x - p0.x) * (p3.y - p1.y);
    if (d == 0) {
        traceNotCrossing(1);
        return VerifyNotCrossing;
    }
    const double t = static_cast<double>((p1.y - p0.y) * (p2.x - p0.x) - (p1.x - p0.x) * (p2.y - p0.y)) /
                     static_cast<double>(d);
    if (t < 0.0 || t > 1.0) {
        traceNotCrossing(2);
        return VerifyNotCrossing;
    }
    if (p2.x - p0.x == 0) {
        traceNotCrossing(3);
        return VerifyNotCrossing;
    }
    const double s = (static_cast<double>(p1.x - p0.x) + static_cast<double>(p3.x - p1.x) * t) /
                     static_cast<double>(p2.x - p0.x);
    if (s < 0.0 || s > 1.0) {
        traceNotCrossing(4);
        return VerifyNotCrossing;
    }
    return VerifyGood;
}

bool LProjection::Prepare(const LCorners& corners, CSize sourceSize) {
    Corners = corners;
    SourceSize = sourceSize;
    if (sourceSize.cx < 3 || sourceSize.cy < 3) return false;
    LastColumn = sourceSize.cx - 1;
    LastRow = sourceSize.cy - 1;

    // The differences and products are taken in doubles: they are exact for
    // corners of any real picture, and corners near the ends of 32 bits can't
    // overflow them.
    auto at = [&corners](std::size_t corner) {
        return std::array<double, 2>{static_cast<double>(corners[corner].x),
                                     static_cast<double>(corners[corner].y)};
    };
    const auto p0 = at(0);
    const auto p1 = at(1);
    const auto p2 = at(2);
    const auto p3 = at(3);
    const double e1x = p3[0] - p0[0], e1y = p3[1] - p0[1];
    const double e3x = p1[0] - p0[0], e3y = p1[1] - p0[1];
    const double dx = (p2[0] - p3[0]) - e3x, dy = (p2[1] - p3[1]) - e3y;
    Direct = {p0[0], p0[1], e1y * dx - e1x * dy, dy, -dx, e1y * e3x - e1x * e3y, -e1x, dx, e3y, e3x};
    Swapped = {p0[1], p0[0], e1x * dy - e1y * dx, dx, -dy, e1x * e3y - e1y * e3x, -e1y, dy, e3x, e3y};
    // Adding zero turns a negative zero into the zero that whole numbers give.
    for (double& coefficient : Direct)
        coefficient += 0.0;
    for (double& coefficient : Swapped)
        coefficient += 0.0;
    if (std::fabs(Direct[7]) < Epsilon) Direct[7] = 0.0;
    if (std::fabs(Direct[9]) < Epsilon) Direct[9] = 0.0;
    SwapFirst = Direct[7] == 0.0 && Direct[9] == 0.0;
    return true;
}

bool LProjection::IsReady() const {
    return SourceSize.cx > 2 && SourceSize.cy > 2 && FilterLevel >= LowestLevel;
}

bool LProjection::Solve(double x, double y, bool swapped, double& u, double& v) const {
    const Coefficients& b = swapped ? Swapped : Direct;
    const double dX = (swapped ? y : x) - b[0];
    const double dY = (swapped ? x : y) - b[1];
    const double B = dY * b[4] + dX * b[3] + b[5];
    const double C = dX * b[8] - dY * b[9];
    if (std::fabs(b[2]) >= Epsilon) {
        const double p = B / b[2];
        const double D = p * p / 4.0 - C / b[2];
        if (std::fabs(D) >= Epsilon) {
            if (D < 0.0) return false;
            const double r = std::sqrt(D);
            v = -p / 2.0 - r;
            if (outsideUnit(v)) v = -p / 2.0 + r;
        } else {
            v = -p / 2.0;
        }
    } else {
        if (std::fabs(B) < Epsilon) return false;
        v = -C / B;
    }
    const double n = v * b[7] + b[9];
    if (std::fabs(n) < Epsilon) return false;
    u = (dX + v * b[6]) / n;
    if (outsideUnit(u)) return false;
    u = std::clamp(u, 0.0, 1.0);
    if (outsideUnit(v)) return false;
    v = std::clamp(v, 0.0, 1.0);
    return true;
}

bool LProjection::MapPixel(long x, long y, LQuickPixel& pixel) const {
    const double column = static_cast<double>(x);
    const double row = static_cast<double>(y);
    double u = 0.0;
    double v = 0.0;
    if (!Solve(column, row, SwapFirst, u, v) && !Solve(column, row, !SwapFirst, u, v)) return false;
    const double fx = static_cast<double>(LastColumn) * u + 0.5;
    const double fy = static_cast<double>(LastRow) * v + 0.5;
    const long sx = static_cast<long>(fx);
    const long sy = static_cast<long>(fy);
    const double ox = fx - (static_cast<double>(sx) + 0.5);
    const double oy = fy - (static_cast<double>(sy) + 0.5);
    pixel.x = static_cast<std::int32_t>(sx);
    pixel.y = static_cast<std::int32_t>(sy);
    for (int i = 0; i < LQuickPixel::Count; ++i) {
        const CPoint offset = LNeighbours[i];
        const long nx = sx + offset.x;
        const long ny = sy + offset.y;
        double weight = 0.0;
        if (nx >= 0 && nx <= LastColumn && ny >= 0 && ny <= LastRow) {
            const double q =
                squared(ox - static_cast<double>(offset.x)) + squared(oy - static_cast<double>(offset.y));
            weight = std::max(filterWeight(i, q), 0.0);
        }
        pixel.Weights[i] = weight;
    }
    normalise(pixel.Weights);
    return true;
}

double LProjection::filterWeight(int neighbour, double q) const {
    const double level = FilterLevel;
    switch (FilterMode) {
    case FilterSquare:
        return level - q * q;
    case FilterRoot:
        return level - std::sqrt(q);
    case FilterBell: {
        const double spread = level > SmallestBellLevel ? q / (level * level) : q;
        return std::exp(-(spread * spread));
    }
    case FilterNearest:
        return neighbour == LQuickPixel::Centre ? level : 0.0;
    default:
        return level - q;
    }
}

void LProjection::normalise(double (&weights)[LQuickPixel::Count]) {
    double sum = 0.0;
    for (double weight : weights)
        sum += weight;
    if (!(sum > 0.0)) {
        weights[LQuickPixel::Centre] = 1.0;
        return;
    }
    double total = 0.0;
    for (double& weight : weights) {
        weight /= sum;
        total += weight;
    }
    if (total != 1.0) weights[LQuickPixel::Centre] += 1.0 - total;
}
