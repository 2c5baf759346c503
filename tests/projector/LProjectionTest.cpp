#include "projector/LProjection.h"

#include "ProjectionTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace {

// Corners of the rectangle from (0,0) to (right,bottom), round from the top left.
LCorners rectangle(long right, long bottom) {
    return {CPoint{0, 0}, CPoint{right, 0}, CPoint{right, bottom}, CPoint{0, bottom}};
}

// A slanted quadrilateral whose coefficients are worked out by hand below.
const LCorners Slanted = {CPoint{1, 2}, CPoint{9, 1}, CPoint{8, 7}, CPoint{2, 6}};

// The point of the patch at (u, v).
void patchPoint(const LCorners& c, double u, double v, double& x, double& y) {
    auto at = [&](long p0, long p1, long p2, long p3) {
        return static_cast<double>(p0) + u * static_cast<double>(p1 - p0) + v * static_cast<double>(p3 - p0) +
               u * v * static_cast<double>(p2 - p3 - p1 + p0);
    };
    x = at(c[0].x, c[1].x, c[2].x, c[3].x);
    y = at(c[0].y, c[1].y, c[2].y, c[3].y);
}

double weightSum(const LQuickPixel& pixel) {
    return std::accumulate(std::begin(pixel.Weights), std::end(pixel.Weights), 0.0);
}

} // namespace

TEST(LProjection, VerifyFourPointsRefusesEqualPointsAndDiagonalsThatDontCross) {
    EXPECT_EQ(LProjection::VerifyFourPoints(rectangle(10, 8)), LProjection::VerifyGood);
    EXPECT_EQ(LProjection::VerifyFourPoints(Slanted), LProjection::VerifyGood);
    EXPECT_EQ(LProjection::VerifyFourPoints({CPoint{3, 3}, CPoint{3, 3}, CPoint{9, 9}, CPoint{0, 9}}),
              LProjection::VerifyEqualPoints);
    EXPECT_EQ(LProjection::VerifyFourPoints({CPoint{0, 0}, CPoint{9, 0}, CPoint{9, 9}, CPoint{9, 0}}),
              LProjection::VerifyEqualPoints);
    // P2 and P3 exchanged: a bow tie.
    EXPECT_EQ(LProjection::VerifyFourPoints({CPoint{0, 0}, CPoint{10, 0}, CPoint{0, 8}, CPoint{10, 8}}),
              LProjection::VerifyNotCrossing);
    // A dart: P3 lies inside the triangle of the others.
    EXPECT_EQ(LProjection::VerifyFourPoints({CPoint{0, 0}, CPoint{10, 0}, CPoint{10, 10}, CPoint{7, 3}}),
              LProjection::VerifyNotCrossing);
    // Parallel diagonals.
    EXPECT_EQ(LProjection::VerifyFourPoints({CPoint{0, 0}, CPoint{1, 0}, CPoint{2, 0}, CPoint{3, 0}}),
              LProjection::VerifyNotCrossing);
    // A convex kite whose diagonal P0-P2 runs straight down is refused all the same.
    EXPECT_EQ(LProjection::VerifyFourPoints({CPoint{5, 0}, CPoint{10, 5}, CPoint{5, 10}, CPoint{0, 5}}),
              LProjection::VerifyNotCrossing);
}

TEST(LProjection, PrepareSetsBothCoefficientBlocksAndNeedsASourceOfThreeByThree) {
    LProjection projection = PreparedProjection(Slanted, {11, 11});
    EXPECT_EQ(projection.GetDirect(), (LProjection::Coefficients{1, 2, -10, 2, 2, 33, -1, -2, -1, 8}));
    EXPECT_EQ(projection.GetSwapped(), (LProjection::Coefficients{2, 1, 10, -2, -2, -33, -4, 2, 8, -1}));
    EXPECT_FALSE(projection.GetSwapFirst());
    EXPECT_TRUE(projection.IsReady());

    EXPECT_FALSE(projection.Prepare(Slanted, {2, 11}));
    EXPECT_FALSE(projection.IsReady());
    EXPECT_FALSE(projection.Prepare(Slanted, {11, 2}));
    EXPECT_TRUE(projection.Prepare(Slanted, {3, 3}));

    projection.SetFilterLevel(0.09);
    EXPECT_FALSE(projection.IsReady()) << "a filter level below 0.1";
}

TEST(LProjection, CornersAtTheEndsOfThirtyTwoBitsPrepareWithoutOverflow) {
    const long low = -2147483647L - 1;
    const long high = 2147483647L;
    LProjection projection;
    ASSERT_TRUE(projection.Prepare(
        {CPoint{low, low}, CPoint{high, low}, CPoint{low, high}, CPoint{high, high}}, {10, 10}));
    double u = 0.0;
    double v = 0.0;
    projection.Solve(0.0, 0.0, false, u, v);
    SUCCEED() << "the sanitizers see no overflow";
}

TEST(LProjection, SolveInvertsThePatchInBothBranches) {
    LProjection projection = PreparedProjection(Slanted, {11, 11});
    double u = 0;
    double v = 0;
    // The centre of the patch, worked by hand through the quadratic: p = -4.5, D = 3.0625.
    ASSERT_TRUE(projection.Solve(5, 4, false, u, v));
    EXPECT_DOUBLE_EQ(u, 0.5);
    EXPECT_DOUBLE_EQ(v, 0.5);

    // A rectangle has no quadratic term: u = x / w and v = y / h.
    LProjection flat = PreparedProjection(rectangle(8, 4), {9, 5});
    EXPECT_EQ(flat.GetDirect()[2], 0.0);
    ASSERT_TRUE(flat.Solve(2, 3, false, u, v));
    EXPECT_DOUBLE_EQ(u, 0.25);
    EXPECT_DOUBLE_EQ(v, 0.75);

    EXPECT_FALSE(flat.Solve(9, 3, false, u, v)) << "right of the patch";
    EXPECT_FALSE(flat.Solve(2, -1, false, u, v)) << "above the patch";
}

TEST(LProjection, EveryPointOfConvexPatchesSolvesBackToItsPatchCoordinates) {
    const LCorners shapes[] = {Slanted,
                               {CPoint{0, 0}, CPoint{40, 0}, CPoint{30, 20}, CPoint{10, 20}},
                               {CPoint{10, 0}, CPoint{40, 12}, CPoint{28, 41}, CPoint{-3, 30}},
                               {CPoint{0, 0}, CPoint{0, 30}, CPoint{40, 35}, CPoint{45, 2}}};
    for (const LCorners& corners : shapes) {
        LProjection projection = PreparedProjection(corners, {50, 50});
        for (double expectedU = 0.0; expectedU <= 1.0; expectedU += 0.125)
            for (double expectedV = 0.0; expectedV <= 1.0; expectedV += 0.125) {
                double x = 0;
                double y = 0;
                patchPoint(corners, expectedU, expectedV, x, y);
                double u = -1;
                double v = -1;
                const bool swapFirst = projection.GetSwapFirst();
                ASSERT_TRUE(projection.Solve(x, y, swapFirst, u, v) ||
                            projection.Solve(x, y, !swapFirst, u, v))
                    << x << "," << y;
                EXPECT_NEAR(u, expectedU, 1e-9) << x << "," << y;
                EXPECT_NEAR(v, expectedV, 1e-9) << x << "," << y;
            }
    }
}

TEST(LProjection, CornersGoingRoundTheOtherWayTransposeThroughTheSwappedForm) {
    // P0 to P1 runs down: the direct form has no u term and the swapped one goes first.
    LProjection projection = PreparedProjection({CPoint{0, 0}, CPoint{0, 9}, CPoint{9, 9}, CPoint{9, 0}},
                                                {10, 10}, LProjection::FilterNearest);
    EXPECT_TRUE(projection.GetSwapFirst());
    LQuickPixel pixel;
    ASSERT_TRUE(projection.MapPixel(7, 2, pixel));
    EXPECT_EQ(pixel.x, 2);
    EXPECT_EQ(pixel.y, 7);
}

TEST(LProjection, AnIdentityQuadrilateralMapsEveryPixelOntoItself) {
    const CSize size{17, 11};
    LProjection projection =
        PreparedProjection(rectangle(size.cx - 1, size.cy - 1), size, LProjection::FilterNearest);
    for (long y = 0; y < size.cy; ++y)
        for (long x = 0; x < size.cx; ++x) {
            LQuickPixel pixel;
            ASSERT_TRUE(projection.MapPixel(x, y, pixel));
            EXPECT_EQ(pixel.x, x);
            EXPECT_EQ(pixel.y, y);
            EXPECT_EQ(pixel.Weights[LQuickPixel::Centre], 1.0);
            EXPECT_EQ(weightSum(pixel), 1.0);
        }
    LQuickPixel untouched;
    EXPECT_FALSE(projection.MapPixel(size.cx, 0, untouched));
    EXPECT_FALSE(projection.MapPixel(0, -1, untouched));
    EXPECT_EQ(untouched.Weights[LQuickPixel::Centre], 1.0) << "a pixel outside is left as it was";
}

TEST(LProjection, FilterModesWeighTheNeighboursAndSumToOne) {
    // Target and source alike 11 by 11: every pixel lies on the centre of its source pixel.
    auto weightsAt = [](std::int32_t mode, double level, long x, long y) {
        LQuickPixel pixel;
        EXPECT_TRUE(PreparedProjection(rectangle(10, 10), {11, 11}, mode, level).MapPixel(x, y, pixel));
        return pixel;
    };
    const double edge = 1.0 / 6.0;
    const LQuickPixel linear = weightsAt(LProjection::FilterLinear, 2.0, 5, 5);
    const double linearExpected[9] = {0, edge, 0, edge, 1.0 / 3.0, edge, 0, edge, 0};
    for (int i = 0; i < LQuickPixel::Count; ++i)
        EXPECT_NEAR(linear.Weights[i], linearExpected[i], 1e-15) << i;
    EXPECT_EQ(weightsAt(99, 2.0, 5, 5).Weights[1], linear.Weights[1]) << "unknown modes weigh linearly";

    const LQuickPixel square = weightsAt(LProjection::FilterSquare, 2.0, 5, 5);
    EXPECT_NEAR(square.Weights[1], edge, 1e-15);
    EXPECT_EQ(square.Weights[0], 0.0);

    const LQuickPixel root = weightsAt(LProjection::FilterRoot, 2.0, 5, 5);
    const double rootSum = 2.0 + 4 * 1.0 + 4 * (2.0 - std::sqrt(2.0));
    EXPECT_NEAR(root.Weights[0], (2.0 - std::sqrt(2.0)) / rootSum, 1e-15);
    EXPECT_NEAR(root.Weights[4], 2.0 / rootSum, 1e-15);

    const LQuickPixel bell = weightsAt(LProjection::FilterBell, 2.0, 5, 5);
    const double bellSum = 1.0 + 4 * std::exp(-1.0 / 16.0) + 4 * std::exp(-0.25);
    EXPECT_NEAR(bell.Weights[8], std::exp(-0.25) / bellSum, 1e-15);
    const LQuickPixel flatBell = weightsAt(LProjection::FilterBell, 0.001, 5, 5);
    EXPECT_NEAR(flatBell.Weights[8], std::exp(-4.0) / (1.0 + 4 * std::exp(-1.0) + 4 * std::exp(-4.0)), 1e-15)
        << "a level of 0.001 or less isn't divided by";

    for (double level : {0.2, 2.0, 50.0}) {
        const LQuickPixel nearest = weightsAt(LProjection::FilterNearest, level, 5, 5);
        EXPECT_EQ(nearest.Weights[LQuickPixel::Centre], 1.0);
        EXPECT_EQ(weightSum(nearest), 1.0);
    }
    for (const LQuickPixel& pixel : {linear, square, root, bell, flatBell})
        EXPECT_NEAR(weightSum(pixel), 1.0, 1e-15);
}

TEST(LProjection, NeighboursOffTheSourceWeighNothingAndTheRestAreRenormalised) {
    LQuickPixel corner;
    ASSERT_TRUE(PreparedProjection(rectangle(10, 10), {11, 11}).MapPixel(0, 0, corner));
    const double expected[9] = {0, 0, 0, 0, 0.5, 0.25, 0, 0.25, 0};
    for (int i = 0; i < LQuickPixel::Count; ++i)
        EXPECT_EQ(corner.Weights[i], expected[i]) << i;
}

TEST(LProjection, APointHalfwayBetweenFourPixelsWeighsThemAlikeOrFallsBackToTheCentre) {
    // Target 0 to 10, source 10 wide: column 5 lands on 5.0, the corner of four pixels.
    LQuickPixel between;
    ASSERT_TRUE(PreparedProjection(rectangle(10, 10), {10, 10}).MapPixel(5, 5, between));
    EXPECT_EQ(between.x, 5);
    EXPECT_EQ(between.y, 5);
    const double quarters[9] = {0.25, 0.25, 0, 0.25, 0.25, 0, 0, 0, 0};
    for (int i = 0; i < LQuickPixel::Count; ++i)
        EXPECT_EQ(between.Weights[i], quarters[i]) << i;

    // With level 0.1 no neighbour keeps a positive weight: the centre takes all.
    LQuickPixel alone;
    ASSERT_TRUE(PreparedProjection(rectangle(10, 10), {10, 10}, LProjection::FilterSquare, 0.1)
                    .MapPixel(5, 5, alone));
    const double centreOnly[9] = {0, 0, 0, 0, 1.0, 0, 0, 0, 0};
    for (int i = 0; i < LQuickPixel::Count; ++i)
        EXPECT_EQ(alone.Weights[i], centreOnly[i]) << i;
}
