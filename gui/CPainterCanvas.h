#pragma once
// An object view's drawing surface over a QPainter: a window's painter for
// the overlay, or an image's painter on the drawing thread. Pictures are
// copied as they are, alpha left out, as a view always showed them.

#include "views/CObjectViewCanvas.h"

#include <QImage>
#include <QPainter>

class CPainterCanvas : public CObjectViewCanvas {
public:
    CPainterCanvas(QPainter& painter, const CRect& clip) : Painter(painter), Clip(clip) {}

    CRect GetClipBox() const override { return Clip; }
    void FillRect(const CRect& rect, std::uint32_t colour) override;
    void DrawText(const CRect& rect, const std::string& text) override;
    void DrawPicture(const CRect& rect, const EImageData& picture) override;
    void DrawOutline(const CRect& rect) override;

    static QRect ToQRect(const CRect& rect) {
        return {int(rect.left), int(rect.top), int(rect.Width()), int(rect.Height())};
    }
    // The picture's pixels, top row first, without alpha.
    static QImage ToImage(const EImageData& picture);

private:
    QPainter& Painter;
    CRect Clip;
};
