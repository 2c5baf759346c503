#pragma once
// The mapping between a view's window (client coordinates, pixels from the
// top left corner) and what it shows (pane or picture coordinates): the shown
// point `Center` lies in the middle of the window, and one unit shows as
// `ZoomX` by `ZoomY` pixels. Positions are rounded down in both directions,
// so that a point and its pixel agree. A plain value.

#include "foundation/qvrGeometry.h"

#include <cmath>

struct CPaneMapping {
    double ZoomX = 1.0;
    double ZoomY = 1.0;
    CPoint Center;
    CSize Client;

    CPoint ToClient(CPoint point) const {
        return {toClient(point.x, Center.x, ZoomX, Client.cx), toClient(point.y, Center.y, ZoomY, Client.cy)};
    }
    CPoint ToPane(CPoint point) const {
        return {toPane(point.x, Center.x, ZoomX, Client.cx), toPane(point.y, Center.y, ZoomY, Client.cy)};
    }
    CRect ToClient(const CRect& rect) const {
        const CPoint topLeft = ToClient(CPoint{rect.left, rect.top});
        const CPoint bottomRight = ToClient(CPoint{rect.right, rect.bottom});
        return {topLeft.x, topLeft.y, bottomRight.x, bottomRight.y};
    }

    // The smallest rectangle of pane units whose pixels cover the window rectangle.
    CRect ToPaneCovering(const CRect& rect) const {
        const CPoint topLeft = ToPane(CPoint{rect.left, rect.top});
        return {topLeft.x, topLeft.y, toPaneAbove(rect.right, Center.x, ZoomX, Client.cx),
                toPaneAbove(rect.bottom, Center.y, ZoomY, Client.cy)};
    }

private:
    static long toClient(long value, long center, double zoom, long extent) {
        return static_cast<long>(std::floor(static_cast<double>(value - center) * zoom)) + extent / 2;
    }
    static long toPane(long value, long center, double zoom, long extent) {
        return static_cast<long>(std::floor(static_cast<double>(value - extent / 2) / zoom)) + center;
    }
    static long toPaneAbove(long value, long center, double zoom, long extent) {
        return static_cast<long>(std::ceil(static_cast<double>(value - extent / 2) / zoom)) + center;
    }
};
