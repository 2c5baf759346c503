#pragma once
// The composer's view: over the picture it frames each layer where the last
// render placed it, a press on a layer selects it and a press on the
// selected layer starts dragging it. While it is dragged, the layer's "X
// position" and "Y position" follow the pointer through the zoom, written as
// keys at the view's frame (a value with one key moves that key), and its
// edges snap to the composer's grid. The selected layer is held by a
// reference that clears itself. Main thread only; the layers' places are
// read under their lock, as a saver may render the same composer meanwhile.

#include "views/CObjectView.h"

class imodMerger;
class imodMergerLink;

class CObjectMergerView : public CObjectView {
public:
    // How near, in window pixels, an edge must come to a grid line to snap to it.
    static constexpr double SnapReach = 8.0;

    using CObjectView::CObjectView;

    std::string_view GetViewClass() const override { return "CObjectMergerView"; }

    void OnLButtonDown(CPoint client, unsigned keys) override;
    void OnMouseMove(CPoint client, unsigned keys) override;
    void OnLButtonUp(CPoint client, unsigned keys) override;
    std::string GetPointStatus(CPoint client) const override;

    // "name (type)" of the selected layer, or that none is selected.
    std::string GetListLine() const;
    iElement* GetSelectedLayer() const;
    bool IsDragging() const { return Dragging; }
    // Puts the selected layer in the middle at the view's frame; needs a selected layer.
    bool CenterSelectedLayer();

protected:
    void DrawOverlay(CObjectViewCanvas& target) override;

private:
    imodMerger* composer() const;
    imodMergerLink* selectedLink() const;
    // The topmost selectable layer whose place holds the point, in picture coordinates.
    imodMergerLink* layerAt(CPoint point) const;
    static bool isSelectable(const imodMergerLink& link);
    // Moves the dragged place's edges onto the composer's grid, as far as one is in reach.
    CPoint snapped(CPoint offset) const;
    void placeLayer(imodMergerLink& link, double x, double y);

    iReference<iElement> Selected;
    bool Dragging = false;
    CPoint DragStart;
    CRect StartPlace;
    double StartX = 0.0;
    double StartY = 0.0;
};
