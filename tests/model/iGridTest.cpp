#include "model/iGrid.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class FixedRects : public iGridRects {
public:
    explicit FixedRects(std::vector<CRect> rects) : Rects(std::move(rects)) {}
    unsigned GetRectCount() const override { return static_cast<unsigned>(Rects.size()); }
    CRect GetRect(unsigned index, EImageSize) const override { return Rects[index]; }
    std::vector<CRect> Rects;
};

class Outlines : public iGridCanvas {
public:
    void DrawOutline(const CRect& rect) override { Drawn.push_back(rect); }
    std::vector<CRect> Drawn;
};

constexpr EImageSize anySize{100, 100};

} // namespace

TEST(GridRects, SnapsToTheNearestEdgeWithinReach) {
    FixedRects grid({{10, 10, 50, 50}});
    CPoint point{13, 45};
    EXPECT_EQ(grid.SnapToGrid(anySize, point, grid_all, 5), unsigned(grid_left | grid_bottom));
    EXPECT_EQ(point, (CPoint{10, 50}));
    CPoint far{30, 30};
    EXPECT_EQ(grid.SnapToGrid(anySize, far, grid_all, 5), 0u);
    EXPECT_EQ(far, (CPoint{30, 30}));
}

TEST(GridRects, TiesGoToLeftAndToBottom) {
    FixedRects grid({{0, 0, 20, 20}});
    CPoint middle{10, 10};
    EXPECT_EQ(grid.SnapToGrid(anySize, middle, grid_all, 10), unsigned(grid_left | grid_bottom));
    EXPECT_EQ(middle, (CPoint{0, 20}));
}

TEST(GridRects, PointsOutsideEveryRectangleAndUselessCallsSnapToNothing) {
    FixedRects grid({{0, 0, 20, 20}});
    CPoint outside{25, 5};
    EXPECT_EQ(grid.SnapToGrid(anySize, outside, grid_all, 10), 0u);
    CPoint inside{1, 1};
    EXPECT_EQ(grid.SnapToGrid(anySize, inside, 0x30, 10), 0u) << "only the four low bits count";
    EXPECT_EQ(grid.SnapToGrid(anySize, inside, grid_all, 0), 0u);
    FixedRects empty({});
    EXPECT_EQ(empty.SnapToGrid(anySize, inside, grid_all, 10), 0u);
}

TEST(GridRects, OnlyWantedEdgesMoveAndTheNearestRectangleWins) {
    FixedRects grid({{0, 0, 40, 40}, {5, 5, 30, 30}});
    CPoint point{8, 27};
    EXPECT_EQ(grid.SnapToGrid(anySize, point, grid_right | grid_top, 50), unsigned(grid_right | grid_top));
    EXPECT_EQ(point, (CPoint{30, 5}));
}

TEST(GridRects, DrawsOnlyRectanglesInsideTheClip) {
    FixedRects grid({{0, 0, 10, 10}, {50, 50, 60, 60}});
    Outlines canvas;
    grid.Draw(canvas, anySize, CRect{0, 0, 20, 20});
    ASSERT_EQ(canvas.Drawn.size(), 1u);
    EXPECT_EQ(canvas.Drawn[0], (CRect{0, 0, 10, 10}));
}
