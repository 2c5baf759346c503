#pragma once
// Snapping aids: a composer or any element that accepts a grid asks it for
// the nearest snapping point while an object is dragged. iGridRects snaps to
// the edges of the rectangles a class lists by index. Main thread only.

#include "foundation/qvrGeometry.h"
#include "model/iBase.h"
#include "model/iRenderRequest.h"

// Which edges of the dragged object may snap, and which moved.
enum iGridDirection : unsigned {
    grid_top = 1,
    grid_left = 2,
    grid_bottom = 4,
    grid_right = 8,
    grid_all = 15,
};

// Where a grid draws itself: the front end's drawing surface.
class iGridCanvas {
public:
    virtual ~iGridCanvas() = default;
    virtual void DrawOutline(const CRect& rect) = 0;
};

class iGrid : public iBase {
public:
    using iBase::iBase;

    // Moves `point` to the nearest snapping point within `maxDistance`; the
    // result is the mask of the edges that moved.
    unsigned SnapToGrid(EImageSize size, CPoint& point, unsigned directions, long maxDistance);
    bool Draw(iGridCanvas& canvas, EImageSize size, const CRect& clip) { return doDraw(canvas, size, clip); }

protected:
    virtual bool doDraw(iGridCanvas&, EImageSize, const CRect&) { return true; }
    virtual unsigned doGetClosestPoint(EImageSize size, CPoint& point, unsigned directions,
                                       long maxDistance) = 0;
};

class iGridRects : public iGrid {
public:
    using iGrid::iGrid;

    virtual unsigned GetRectCount() const = 0;
    // The rectangle of that index, scaled for `size`.
    virtual CRect GetRect(unsigned index, EImageSize size) const = 0;

protected:
    bool doDraw(iGridCanvas& canvas, EImageSize size, const CRect& clip) override;
    unsigned doGetClosestPoint(EImageSize size, CPoint& point, unsigned directions,
                               long maxDistance) override;
};
