#include "objects/imodCrop.h"

#include "foundation/hTruncate.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/iElementContainer.h"
#include "objects/ObjectText.h"

#include <algorithm>

// Projects of earlier versions name the type "Cropper".
iFactoryProducerOf<imodCrop> imodCrop::Producer(iModifier::ClassType, "Crop", 0, "Cropper");

namespace {

// The display extent for the part of a preview section that the parent gives:
// the same scale as the section's, at least one pixel.
long partDisplayExtent(long partExtent, long sectionExtent, long displayExtent) {
    if (partExtent >= sectionExtent) return displayExtent;
    return std::max(displayExtent * partExtent / sectionExtent, 1L);
}

} // namespace

const iParameterEntry<imodCrop> imodCrop::parameterEntries[] = {
    {{"Width", iParameterKind::Animated, ObjectText::LabelWidth, 720.0}},
    {{"Heigth", iParameterKind::Animated, ObjectText::LabelHeight, 576.0}},
    {{"Center X", iParameterKind::Animated, ObjectText::LabelCenterX}},
    {{"Center Y", iParameterKind::Animated, ObjectText::LabelCenterY}},
    {{"BackgroundColor", iParameterKind::ColourWord, ObjectText::LabelBackgroundColor},
     &imodCrop::backgroundColor},
    {{"RelativeGUI", iParameterKind::Flag, ObjectText::LabelRelativeEdges}, &imodCrop::relativeGUI},
};
const iParameterTable<imodCrop> imodCrop::Parameters{parameterEntries};

imodCrop::imodCrop(std::string name)
    : iModifier(std::move(name)), width(this, Parameters.Get("Width")),
      height(this, Parameters.Get("Heigth")), centerX(this, Parameters.Get("Center X")),
      centerY(this, Parameters.Get("Center Y")) {}

void imodCrop::doSaveData(qvrCTreeData& block, hReport&) {
    Parameters.SaveBlock(*this, block);
}

void imodCrop::doLoadData(const qvrCTreeData& block, hReport&) {
    Parameters.LoadBlock(*this, block);
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
    const CRect available =
        IntersectRectOrNull(OffsetRect(request.Rect, offset), WholeRect(parentSize.Size.ToSize()));
    if (available.IsRectEmpty()) return renderBackgroundOnly(image, result, request);
    iRenderRequest partRequest = parentRequest(request, parentSize.Size, available);
    if (!parent->Render(image, result, partRequest)) return false;
    return frameParentPicture(image, result, request, offset, OffsetRect(available, -offset));
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
    CRect shown = OffsetRect(result.Rect, -offset);
    const CRect kept = IntersectRectOrNull(shown, wanted);
    const CRect keptPart = MapRectRelative(lock.GetData()->GetSize(), shown, kept);
    if (keptPart != WholeRect(lock.GetData()->GetSize())) {
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
    if (section != WholeRect(picture.GetSize())) {
        std::unique_ptr<EImageData> framed =
            EImageData::New({section.Width(), section.Height()}, EImageMemory::MayFree);
        if (!framed) {
            result.SetError(render_out_of_memory, this, text_out_of_memory);
            return false;
        }
        framed->CopyRectOnColour(picture, WholeRect(picture.GetSize()), {-section.left, -section.top},
                                 backgroundColor);
        lock.SetData(std::move(framed));
    }
    result.Rect = request.Rect;
    return true;
}
