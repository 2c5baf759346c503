#include "views/CObjectMergerView.h"

#include "foundation/hTruncate.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "model/iGrid.h"
#include "objects/imodMerger.h"
#include "views/CObjectViewCanvas.h"
#include "views/CViewHost.h"
#include "views/CViewText.h"

#include <algorithm>
#include <vector>

namespace {

// The composer's layers, bottom first: every link after the background's.
std::vector<imodMergerLink*> layersOf(const imodMerger& composer) {
    std::vector<imodMergerLink*> layers;
    imodMergerLink* background = composer.GetFirstLink();
    for (imodMergerLink* link = background ? background->GetNextLink() : nullptr; link;
         link = link->GetNextLink())
        layers.push_back(link);
    return layers;
}

} // namespace

imodMerger* CObjectMergerView::composer() const {
    return dynamic_cast<imodMerger*>(GetElement());
}

bool CObjectMergerView::isSelectable(const imodMergerLink& link) {
    return link.GetParent()->GetProject() && !link.GetLayerRect().IsRectEmpty();
}

imodMergerLink* CObjectMergerView::selectedLink() const {
    const imodMerger* merger = composer();
    imodMergerLink* link = merger && Selected.Get() ? merger->GetLinkOf(Selected.Get()) : nullptr;
    return link && !link->IsBackground() ? link : nullptr;
}

iElement* CObjectMergerView::GetSelectedLayer() const {
    imodMergerLink* link = selectedLink();
    return link ? link->GetParent() : nullptr;
}

imodMergerLink* CObjectMergerView::layerAt(CPoint point) const {
    const imodMerger* merger = composer();
    if (!merger) return nullptr;
    const std::vector<imodMergerLink*> layers = layersOf(*merger);
    for (auto it = layers.rbegin(); it != layers.rend(); ++it)
        if (isSelectable(**it) && PtInRect((*it)->GetLayerRect(), point)) return *it;
    return nullptr;
}

void CObjectMergerView::DrawOverlay(CObjectViewCanvas& target) {
    const imodMerger* merger = composer();
    if (!merger) return;
    for (const imodMergerLink* link : layersOf(*merger)) {
        if (isSelectable(*link)) {
            target.DrawOutline(GetMapping().ToClient(link->GetLayerRect()));
            continue;
        }
        qvrTraceVerbose(
            "*** NOTE[CObjectMergerView::DoDrawRects()]: \"%s\" is not selectable - won't draw rect.\n",
            link->GetParent()->GetName().c_str());
    }
}

void CObjectMergerView::OnLButtonDown(CPoint client, unsigned) {
    const CPoint point = GetMapping().ToPane(client);
    imodMergerLink* link = layerAt(point);
    if (!link) return;
    iElement* layer = link->GetParent();
    if (layer != Selected.Get()) {
        qvrTraceVerbose("*** NOTE[CObjectMergerView::OnLButtonDown()]: Newly selected object.\n");
        Selected.Set(layer);
        Host.Invalidate();
        return;
    }
    qvrTraceVerbose("*** NOTE[CObjectMergerView::OnLButtonDown()]: Starting to drag \"%s\".\n",
                    layer->GetName().c_str());
    Dragging = true;
    DragStart = point;
    StartPlace = link->GetLayerRect();
    StartX = link->GetXPosition().GetValue(GetFrame());
    StartY = link->GetYPosition().GetValue(GetFrame());
}

void CObjectMergerView::OnMouseMove(CPoint client, unsigned) {
    if (!Dragging) return;
    imodMergerLink* link = selectedLink();
    if (!link) {
        Dragging = false;
        return;
    }
    const CPoint point = GetMapping().ToPane(client);
    const CPoint offset = snapped({point.x - DragStart.x, point.y - DragStart.y});
    placeLayer(*link, StartX + static_cast<double>(offset.x), StartY + static_cast<double>(offset.y));
}

void CObjectMergerView::OnLButtonUp(CPoint, unsigned) {
    Dragging = false;
}

void CObjectMergerView::placeLayer(imodMergerLink& link, double x, double y) {
    link.GetXPosition().SetKeyAuto(GetFrame(), x, true, false);
    link.GetYPosition().SetKeyAuto(GetFrame(), y, true, false);
    Host.Invalidate();
}

CPoint CObjectMergerView::snapped(CPoint offset) const {
    const imodMerger* merger = composer();
    auto* grid = merger ? dynamic_cast<iGrid*>(merger->GetGridReference().Get()) : nullptr;
    if (!grid) return offset;
    const long reach = std::max(1L, hTruncate(SnapReach / GetZoom()));
    CPoint corner{StartPlace.left + offset.x, StartPlace.top + offset.y};
    const unsigned near = grid->SnapToGrid(GetImageSize(), corner, grid_left | grid_top, reach);
    if (near & grid_left) offset.x = corner.x - StartPlace.left;
    if (near & grid_top) offset.y = corner.y - StartPlace.top;
    const unsigned farEdges =
        ((near & grid_left) ? 0u : unsigned(grid_right)) | ((near & grid_top) ? 0u : unsigned(grid_bottom));
    CPoint far{StartPlace.right + offset.x, StartPlace.bottom + offset.y};
    const unsigned moved = farEdges ? grid->SnapToGrid(GetImageSize(), far, farEdges, reach) : 0u;
    if (moved & grid_right) offset.x = far.x - StartPlace.right;
    if (moved & grid_bottom) offset.y = far.y - StartPlace.bottom;
    return offset;
}

std::string CObjectMergerView::GetPointStatus(CPoint client) const {
    const CPoint point = GetMapping().ToPane(client);
    imodMergerLink* link = layerAt(point);
    if (!link) return qvrFormat(EStringTable::Load(text_point_status).c_str(), point.x, point.y);
    const iElement* layer = link->GetParent();
    const CRect place = link->GetLayerRect();
    const CViewText text = layer == Selected.Get() ? text_layer_status : text_layer_select_status;
    return qvrFormat(EStringTable::Load(text).c_str(), point.x, point.y, layer->GetName().c_str(),
                     layer->GetElementType().c_str(), hTruncate(link->GetXPosition().GetValue(GetFrame())),
                     hTruncate(link->GetYPosition().GetValue(GetFrame())), place.left, place.top, place.right,
                     place.bottom);
}

std::string CObjectMergerView::GetListLine() const {
    const iElement* layer = GetSelectedLayer();
    if (!layer) return EStringTable::Load(text_no_layer_selected);
    return qvrFormat(EStringTable::Load(text_layer_line).c_str(), layer->GetName().c_str(),
                     layer->GetElementType().c_str());
}

bool CObjectMergerView::CenterSelectedLayer() {
    imodMergerLink* link = selectedLink();
    if (!link) {
        SetStatusText(EStringTable::Load(text_select_layer));
        return false;
    }
    placeLayer(*link, 0.0, 0.0);
    return true;
}
