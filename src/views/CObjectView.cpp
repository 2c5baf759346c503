#include "views/CObjectView.h"

#include "foundation/EUserInterface.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/iElement.h"
#include "model/iGrid.h"
#include "views/CObjectViewCanvas.h"
#include "views/CViewHost.h"
#include "views/CViewText.h"

#include <algorithm>
#include <cmath>

namespace {

// Hands a grid's outlines, given in picture coordinates, to the window's canvas.
class PictureOutlines : public iGridCanvas {
public:
    PictureOutlines(CObjectViewCanvas& target, const CPaneMapping& mapping)
        : Target(target), Mapping(mapping) {}
    void DrawOutline(const CRect& rect) override { Target.DrawOutline(Mapping.ToClient(rect)); }

private:
    CObjectViewCanvas& Target;
    const CPaneMapping& Mapping;
};

} // namespace

CObjectView::CObjectView(CViewHost& host) : Host(host), Text(EStringTable::Load(text_drag_hint)) {}

void CObjectView::SetElement(iElement* element) {
    Element.Set(element);
    Text = element ? std::string() : EStringTable::Load(text_drag_hint);
    Host.Invalidate();
}

void CObjectView::OnElementGone() {
    Element.Set(nullptr);
    Text = EStringTable::Load(text_no_element);
    Host.Invalidate();
}

void CObjectView::SetZoom(double zoom) {
    if (!(zoom > 0.0) || !std::isfinite(zoom)) return;
    Mapping.ZoomX = Mapping.ZoomY = zoom;
    Host.Invalidate();
}

void CObjectView::TakeViewState(const CObjectView& other) {
    Mapping = other.Mapping;
    Frame = other.Frame;
}

// ---------------------------------------------------------------- drawing

void CObjectView::paintText(CObjectViewCanvas& target, const CRect& area) const {
    target.FillRect(area, TextGround);
    target.DrawText(area, Text);
}

void CObjectView::paintAround(CObjectViewCanvas& target, const CRect& area, const CRect& picture) const {
    const CRect bands[] = {
        {area.left, area.top, area.right, picture.top},
        {area.left, picture.bottom, area.right, area.bottom},
        {area.left, picture.top, picture.left, picture.bottom},
        {picture.right, picture.top, area.right, picture.bottom},
    };
    for (const CRect& band : bands)
        if (!band.IsRectEmpty()) target.FillRect(band, Ground);
}

void CObjectView::OnDraw(CObjectViewCanvas& target) {
    const CRect area = InflateRect(target.GetClipBox(), 1);
    iElement* element = GetElement();
    if (!element) {
        qvrTraceVerbose("*** NOTE[CObjectView::OnDraw()]: No element to draw.\n");
        paintText(target, area);
        return;
    }
    iImageSizeResult size;
    if (!element->QueryImageSize(size, Frame)) {
        Text = size.Message;
        paintText(target, area);
        return;
    }
    ImageSize = size.Size;
    const CRect section =
        IntersectRect(Mapping.ToClient(CRect{0, 0, ImageSize.Width, ImageSize.Height}), area);
    if (section.IsRectEmpty()) {
        target.FillRect(area, Ground);
        return;
    }
    renderSection(target, *element, section);
    paintAround(target, area, section);
    drawGrid(target, *element, area);
    DrawOverlay(target);
}

std::unique_ptr<CObjectView> CObjectView::MakeDrawingCopy(CViewHost& host) const {
    auto copy = std::make_unique<CObjectView>(host);
    copy->TakeViewState(*this);
    copy->SetElement(GetElement());
    copy->ImageSize = ImageSize;
    return copy;
}

void CObjectView::TakeDrawOutcome(const CObjectView& drawn) {
    ImageSize = drawn.ImageSize;
    Text = drawn.Text;
}

void CObjectView::PaintOverlay(CObjectViewCanvas& target) {
    if (GetElement() && Text.empty() && !ImageSize.IsEmpty()) DrawOverlay(target);
}

void CObjectView::renderSection(CObjectViewCanvas& target, iElement& element, const CRect& section) {
    const CRect shown = Mapping.ToPaneCovering(section);
    iRenderRequest request;
    request.ImageSize = ImageSize;
    request.Rect = IntersectRect(shown, CRect{0, 0, ImageSize.Width, ImageSize.Height});
    request.DisplaySize = {std::max(section.Width(), MinDisplaySide),
                           std::max(section.Height(), MinDisplaySide)};
    request.FullSize = false;
    request.Frame = Frame;
    EImage image(EImage::Discardable | EImage::Important);
    iRenderResult result;
    if (element.Render(image, result, request)) {
        showPicture(target, image, section);
        return;
    }
    Text = result.Message;
    qvrTraceVerbose("*** ERROR[CObjectView::OnDraw()]: Error rendering image: %s\n", Text.c_str());
    paintText(target, section);
}

void CObjectView::showPicture(CObjectViewCanvas& target, EImage& image, const CRect& section) {
    EImageLock lock(image);
    const EImageData* picture = lock.Lock(PictureLockTimeoutMs) ? lock.GetData() : nullptr;
    if (!picture) {
        Text = EStringTable::Load(text_access_conflict);
        paintText(target, section);
        return;
    }
    Text.clear();
    target.DrawPicture(section, *picture);
    lock.SetData(nullptr);
}

void CObjectView::drawGrid(CObjectViewCanvas& target, iElement& element, const CRect& area) {
    auto* grid = dynamic_cast<iGrid*>(element.GetGrid());
    if (!grid) return;
    PictureOutlines outlines(target, Mapping);
    grid->Draw(outlines, ImageSize, Mapping.ToPaneCovering(area));
}

void CObjectView::DrawOverlay(CObjectViewCanvas&) {}

// ---------------------------------------------------------------- status and commands

std::string CObjectView::GetZoomStatus() const {
    return qvrFormat(EStringTable::Load(text_zoom_status).c_str(), Mapping.ZoomX * 100.0);
}

std::string CObjectView::GetSizeStatus() const {
    return qvrFormat(EStringTable::Load(text_size_status).c_str(), ImageSize.Width, ImageSize.Height);
}

std::string CObjectView::GetPointStatus(CPoint) const {
    return {};
}

void CObjectView::SetStatusText(std::string text) {
    StatusText = std::move(text);
    EUserInterface::Get().SetStatusText(StatusText);
}

bool CObjectView::NeedElement() {
    if (GetElement()) return true;
    SetStatusText(EStringTable::Load(text_select_object));
    return false;
}

bool CObjectView::ZoomToFit() {
    if (!NeedElement()) return false;
    iImageSizeResult size;
    if (!GetElement()->QueryImageSize(size, Frame) || size.Size.IsEmpty()) return false;
    ImageSize = size.Size;
    const double zoomX = static_cast<double>(Mapping.Client.cx) / static_cast<double>(ImageSize.Width);
    const double zoomY = static_cast<double>(Mapping.Client.cy) / static_cast<double>(ImageSize.Height);
    Mapping.Center = {ImageSize.Width / 2, ImageSize.Height / 2};
    SetZoom(std::min(zoomX, zoomY));
    return true;
}

void CObjectView::OnLButtonDown(CPoint, unsigned) {}
void CObjectView::OnMouseMove(CPoint, unsigned) {}
void CObjectView::OnLButtonUp(CPoint, unsigned) {}

// ---------------------------------------------------------------- window block

void CObjectView::SaveWindow(qvrCTreeData& block) const {
    block.SetPoint("Center", Mapping.Center);
    block.SetText("Zoom", qvrFormat("%.17g", Mapping.ZoomX));
}

void CObjectView::LoadWindow(const qvrCTreeData& block) {
    block.GetPoint("Center", Mapping.Center);
    double zoom = 0.0;
    if (const std::string* text = block.GetText("Zoom"); text && qvrParseDouble(*text, zoom)) SetZoom(zoom);
}
