#include "objects/imodCrop.h"

#include "foundation/qvrCTreeData.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/iElementContainer.h"
#include "objects/hTruncate.h"

#include <algorithm>

// Projects of earlier versions name the type "Cropper".
iFactoryProducerOf<imodCrop> imodCrop::Producer(iModifier::ClassType, "Crop", 0, "Cropper");

namespace {

CRect moved(const CRect& rect, CPoint by) {
    return {rect.left + by.x, rect.top + by.y, rect.right + by.x, rect.bottom + by.y};
}

CPoint negated(CPoint point) {
    return {-point.x, -point.y};
}

// The common part of two rectangles; empty ones are all zero.
CRect intersected(const CRect& a, const CRect& b) {
    const CRect common{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                       std::min(a.bottom, b.bottom)};
    return common.IsRectEmpty() ? CRect{} : common;
}

CRect wholeOf(CSize size) {
    return {0, 0, size.cx, size.cy};
}

// The display extent for the part of a preview section that the parent gives:
// the same scale as the section's, at least one pixel.
long partDisplayExtent(long partExtent, long sectionExtent, long displayExtent) {
    if (partExtent >= sectionExtent) return displayExtent;
    return std::max(displayExtent * partExtent / sectionExtent, 1L);
}

} // namespace

imodCrop::imodCrop(std::string name)
    : iModifier(std::move(name)), width(this, "Width", 720.0, false), height(this, "Heigth", 576.0, false),
      centerX(this, "Center X", 0.0, false), centerY(this, "Center Y", 0.0, false) {}

void imodCrop::doSaveData(qvrCTreeData& block, hReport&) {
    block.SetLong("BackgroundColor", static_cast<std::int32_t>(backgroundColor));
    block.SetBool("RelativeGUI", relativeGUI);
}

void imodCrop::doLoadData(const qvrCTreeData& block, hReport&) {
    long colour = 0;
    if (block.GetLong("BackgroundColor", colour) && colour >= INT32_MIN && colour <= UINT32_MAX)
        backgroundColor = static_cast<std::uint32_t>(colour);
    bool relative = false;
    if (block.GetBool("RelativeGUI", relative)) relativeGUI = relative;
}

EImageSize imodCrop::GetCropSize(long frame) const {
    return {hTruncate(width.GetValue(frame)), hTruncate(height.GetValue(frame))};
}

CPoint imodCrop::GetCenter(long frame) const {
    return {hTruncate(centerX.GetValue(frame)), hTruncate(centerY.GetValue(frame))};
}

CPoint imodCrop::GetOffset(EImageSize parentSize, long frame) const {
    const EImageSize crop = GetCropSize(frame);
    const CPoint center = GetCenter(frame);
    return {parentSize.Width / 2 - crop.Width / 2 - center.x,
            parentSize.Height / 2 - crop.Height / 2 - center.y};
}

void imodCrop::SetBackgroundColor(std::uint32_t colour) {
    if (colour == backgroundColor) return;
    backgroundColor = colour;
    if (GetProject()) GetProject()->SetChanged(true);
    NotifyChanged(nullptr, true);
}

bool imodCrop::doModifierQueryImageSize(iElement*, iImageSizeResult& result, long frame) {
    result.Size = GetCropSize(frame);
    return true;
}

bool imodCrop::doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                iRenderRequest& request) {
    iImageSizeResult parentSize;
    if (!parent->QueryImageSize(parentSize, request.Frame)) {
        result.SetError(parentSize.Code, parentSize.Element.Get(), parentSize.Message);
        return false;
    }
    const CPoint offset = GetOffset(parentSize.Size, request.Frame);
    const CRect available = intersected(moved(request.Rect, offset), wholeOf(parentSize.Size.ToSize()));
    if (available.IsRectEmpty()) return renderBackgroundOnly(image, result, request);
    iRenderRequest partRequest = parentRequest(request, parentSize.Size, available);
    if (!parent->Render(image, result, partRequest)) return false;
    return frameParentPicture(image, result, request, offset, moved(available, negated(offset)));
}

bool imodCrop::renderBackgroundOnly(EImage& image, iRenderResult& result, const iRenderRequest& request) {
    qvrTraceVerbose("*** NOTE[imodCrop::doModifierRender()]: Source image is not inside requested rectangle "
                    "[returning empty image].\n");
    EImageLock lock(image);
    if (!lock.Lock(-1)) {
        result.SetError(render_failed, this, text_virtual_memory_low);
        return false;
    }
    std::unique_ptr<EImageData> picture =
        EImageData::New(request.DisplaySize.ToSize(), EImageMemory::MayFree);
    if (!picture) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    picture->Fill(backgroundColor);
    lock.SetData(std::move(picture));
    result.Rect = request.Rect;
    return true;
}

iRenderRequest imodCrop::parentRequest(const iRenderRequest& request, EImageSize parentSize,
                                       const CRect& available) {
    iRenderRequest partRequest(request);
    partRequest.ImageSize = parentSize;
    partRequest.Rect = available;
    if (request.FullSize)
        partRequest.DisplaySize = {available.Width(), available.Height()};
    else
        partRequest.DisplaySize = {
            partDisplayExtent(available.Width(), request.Rect.Width(), request.DisplaySize.Width),
            partDisplayExtent(available.Height(), request.Rect.Height(), request.DisplaySize.Height)};
    return partRequest;
}

// `wanted` is the part of the window that the parent was asked for, in the
// window's coordinates; `offset` leads from them to the parent's.
bool imodCrop::frameParentPicture(EImage& image, iRenderResult& result, const iRenderRequest& request,
                                  CPoint offset, const CRect& wanted) {
    EImageLock lock(image);
    if (!lock.Lock(-1) || !lock.GetData()) {
        result.SetError(render_aborted, this, text_virtual_memory_low);
        return false;
    }
    CRect shown = moved(result.Rect, negated(offset));
    const CRect kept = intersected(shown, wanted);
    const CRect keptPart = MapRectRelative(lock.GetData()->GetSize(), shown, kept);
    if (keptPart != wholeOf(lock.GetData()->GetSize())) {
        std::unique_ptr<EImageData> extract = lock.GetData()->Extract(keptPart);
        if (!extract) {
            result.SetError(render_out_of_memory, this, text_out_of_memory);
            return false;
        }
        lock.SetData(std::move(extract));
        shown = kept;
    }
    const EImageData& picture = *lock.GetData();
    const CRect section = MapRectRelative(picture.GetSize(), shown, request.Rect);
    if (section != wholeOf(picture.GetSize())) {
        std::unique_ptr<EImageData> framed =
            EImageData::New({section.Width(), section.Height()}, EImageMemory::MayFree);
        if (!framed) {
            result.SetError(render_out_of_memory, this, text_out_of_memory);
            return false;
        }
        framed->CopyRectOnColour(picture, wholeOf(picture.GetSize()), {-section.left, -section.top},
                                 backgroundColor);
        lock.SetData(std::move(framed));
    }
    result.Rect = request.Rect;
    return true;
}
