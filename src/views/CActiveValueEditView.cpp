#include "views/CActiveValueEditView.h"

#include "foundation/EStringTable.h"
#include "foundation/EUserInterface.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

#include <algorithm>

namespace {

enum : EStringId { textNoFurtherKeys = 46700, textNothingToDisplay = 46701, textTip = 46702 };

// The data's width takes an eighth of the window, its height a half.
constexpr double WidthShare = 8.0;
constexpr double HeightShare = 2.0;

} // namespace

bool CActiveValueEditView::Handle(const CActiveValueEditViewCmd& command) {
    switch (command.Command) {
    case cmd_zoom_in:
        return zoomIn(command);
    case cmd_zoom_out:
        return zoomOut(command);
    case cmd_zoom_normal:
        return setZoom({}, 1.0, 1.0);
    case cmd_fit_active: {
        const iActiveValue* value = GetActiveValue();
        if (!value) return false;
        double min = 0.0;
        double max = 0.0;
        long first = 0;
        long last = 0;
        value->GetDisplayRange(&min, &max, &first, &last);
        return fit(command, static_cast<double>(first), -max, static_cast<double>(last), -min);
    }
    case cmd_fit_world:
        return fit(command, static_cast<double>(World.left), static_cast<double>(World.top),
                   static_cast<double>(World.right), static_cast<double>(World.bottom));
    case cmd_set_zoom:
        return setZoom(command, command.zoomX, command.zoomY);
    case cmd_next_key:
        return nextKey();
    case cmd_previous_key:
        return previousKey();
    case cmd_reserved_first:
    case cmd_reserved_last:
        return false;
    default:
        if (command.Command < 0 || command.Command > cmd_reserved_last)
            qvrTrace("*** WARNING[CActiveValueEditView::Handle()]: Command was not valid.\n");
        else
            qvrTrace("*** TODO[CActiveValueEditView::Handle()]: Command %ld not implemented yet.\n",
                     command.Command);
        return false;
    }
}

bool CActiveValueEditView::HandlePending() {
    bool refit = false;
    while (!Queue.empty()) {
        const CActiveValueEditViewCmd command = Queue.front();
        Queue.pop_front();
        refit = Handle(command) || refit;
    }
    return refit;
}

bool CActiveValueEditView::zoomIn(const CActiveValueEditViewCmd& command) {
    if (command.affectX) zoomX *= ZoomStep;
    if (command.affectY) zoomY *= ZoomStep;
    return command.affectX || command.affectY;
}

bool CActiveValueEditView::zoomOut(const CActiveValueEditViewCmd& command) {
    bool changed = false;
    auto out = [&changed](double& zoom) {
        if (zoom < MinZoomOut) return;
        zoom = std::max(zoom / ZoomStep, MinZoomOut);
        changed = true;
    };
    if (command.affectX) out(zoomX);
    if (command.affectY) out(zoomY);
    return changed;
}

bool CActiveValueEditView::setZoom(const CActiveValueEditViewCmd& command, double newX, double newY) {
    bool changed = false;
    auto set = [&changed](double& zoom, double wanted) {
        if (wanted <= 0.0 || zoom == wanted) return;
        zoom = wanted;
        changed = true;
    };
    if (command.affectX) set(zoomX, newX);
    if (command.affectY) set(zoomY, newY);
    return changed;
}

bool CActiveValueEditView::fit(const CActiveValueEditViewCmd& command, double left, double top, double right,
                               double bottom) {
    if (command.affectX) fitAxis(zoomX, Position.x, left, right, ClientSize.cx, WidthShare);
    if (command.affectY) fitAxis(zoomY, Position.y, top, bottom, ClientSize.cy, HeightShare);
    return command.affectX || command.affectY;
}

void CActiveValueEditView::fitAxis(double& zoom, long& position, double start, double end, long pixels,
                                   double share) {
    // An axis without extent keeps its zoom and only scrolls.
    const double size = static_cast<double>(pixels);
    if (end > start && pixels > 0) zoom = size / ((end - start) * share);
    position = static_cast<long>((start + end) / 2.0 - size / zoom / 2.0);
}

bool CActiveValueEditView::nextKey() {
    const iActiveValue* value = GetActiveValue();
    if (!value) return noFurtherKey();
    const long rightEdge = Position.x + static_cast<long>(GetVisibleWidth());
    const iActiveKey* key = value->GetKey(value->IndexAtOrAfter(rightEdge + 1));
    if (!key) return noFurtherKey();
    centreFrame(key->frame);
    return true;
}

bool CActiveValueEditView::previousKey() {
    const iActiveValue* value = GetActiveValue();
    if (!value) return noFurtherKey();
    const long leftEdge = Position.x;
    const iActiveKey* key = value->GetKey(value->IndexAtOrBefore(leftEdge - 1));
    if (!key || key->frame >= leftEdge) return noFurtherKey();
    centreFrame(key->frame);
    return true;
}

void CActiveValueEditView::centreFrame(long frame) {
    Position.x = frame - static_cast<long>(GetVisibleWidth() / 2.0);
}

bool CActiveValueEditView::noFurtherKey() {
    EUserInterface::Get().SetStatusText(EStringTable::Load(textNoFurtherKeys));
    return false;
}

std::string CActiveValueEditView::GetEmptyText() {
    return EStringTable::Load(textNothingToDisplay);
}

std::string CActiveValueEditView::GetTipText(long frame, double value) {
    return qvrFormat(EStringTable::Load(textTip).c_str(), frame, value);
}
