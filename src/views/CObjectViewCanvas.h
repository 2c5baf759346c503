#pragma once
// The drawing surface that an object view paints on, in window coordinates:
// the windowing layer implements it over its own painter. Outlines (grids,
// the composer's layer frames) come through iGridCanvas. Main thread only.

#include "foundation/qvrGeometry.h"
#include "model/iGrid.h"

#include <cstdint>
#include <string>

class EImageData;

class CObjectViewCanvas : public iGridCanvas {
public:
    // The part of the window that needs painting.
    virtual CRect GetClipBox() const = 0;
    // A plain area in the colour word 0x00RRGGBB.
    virtual void FillRect(const CRect& rect, std::uint32_t colour) = 0;
    virtual void DrawText(const CRect& rect, const std::string& text) = 0;
    // The picture stretched over the rectangle.
    virtual void DrawPicture(const CRect& rect, const EImageData& picture) = 0;
};
