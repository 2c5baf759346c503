#include "model/iGrid.h"

#include "foundation/qvrTrace.h"

unsigned iGrid::SnapToGrid(EImageSize size, CPoint& point, unsigned directions, long maxDistance) {
    directions &= grid_all;
    if (directions == 0 || maxDistance == 0) {
        qvrTrace("*** NOTE[iGrid::SnapToGrid()]: Useless function call - nothing to do.\n");
        return 0;
    }
    return doGetClosestPoint(size, point, directions, maxDistance);
}

bool iGridRects::doDraw(iGridCanvas& canvas, EImageSize size, const CRect& clip) {
    unsigned count = GetRectCount();
    if (count == 0) {
        qvrTrace("*** WARNING[iGridRects::doDraw()]: No rectangles defined.\n");
        return true;
    }
    for (unsigned i = 0; i < count; ++i) {
        CRect rect = GetRect(i, size);
        bool intersects = rect.left < clip.right && clip.left < rect.right && rect.top < clip.bottom &&
                          clip.top < rect.bottom;
        if (intersects) canvas.DrawOutline(rect);
    }
    return true;
}

namespace {

// The best distance so far along one axis and the edge that gives it.
struct AxisChoice {
    long Distance = 0x7FFFFFFF;
    unsigned Edge = 0;

    void Offer(long distance, unsigned edge, long maxDistance) {
        if (distance < Distance && distance <= maxDistance) {
            Distance = distance;
            Edge = edge;
        }
    }
};

// The nearer of two edges; `second` is taken only when strictly nearer.
void offerPair(AxisChoice& choice, unsigned directions, unsigned firstEdge, long firstDistance,
               unsigned secondEdge, long secondDistance, long maxDistance) {
    bool first = directions & firstEdge;
    bool second = directions & secondEdge;
    if (first && second) {
        if (secondDistance < firstDistance)
            choice.Offer(secondDistance, secondEdge, maxDistance);
        else
            choice.Offer(firstDistance, firstEdge, maxDistance);
    } else if (first) {
        choice.Offer(firstDistance, firstEdge, maxDistance);
    } else if (second) {
        choice.Offer(secondDistance, secondEdge, maxDistance);
    }
}

} // namespace

unsigned iGridRects::doGetClosestPoint(EImageSize size, CPoint& point, unsigned directions,
                                       long maxDistance) {
    unsigned count = GetRectCount();
    if (count == 0) {
        qvrTrace("*** WARNING[iGridRects::doGetClosestPoint()]: No rectangles defined.\n");
        return 0;
    }
    AxisChoice x, y;
    for (unsigned i = 0; i < count; ++i) {
        CRect rect = GetRect(i, size);
        if (point.x < rect.left || point.x > rect.right || point.y < rect.top || point.y > rect.bottom)
            continue;
        offerPair(x, directions, grid_left, point.x - rect.left, grid_right, rect.right - point.x,
                  maxDistance);
        // For y the bottom wins a tie: top is taken only when strictly nearer.
        offerPair(y, directions, grid_bottom, rect.bottom - point.y, grid_top, point.y - rect.top,
                  maxDistance);
    }
    if (x.Edge == grid_left) point.x -= x.Distance;
    if (x.Edge == grid_right) point.x += x.Distance;
    if (y.Edge == grid_top) point.y -= y.Distance;
    if (y.Edge == grid_bottom) point.y += y.Distance;
    return x.Edge | y.Edge;
}
