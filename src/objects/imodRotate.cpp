#include "objects/imodRotate.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "objects/ObjectText.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <numbers>

iFactoryProducerOf<imodRotate> imodRotate::Producer(iModifier::ClassType, "Rotate");

namespace {

constexpr EStringId textDescription = 47500;

// Transparent black: what lies around the turned picture.
constexpr std::uint32_t Background = 0;

// Angles closer to 0 than this leave the picture level.
bool isLevel(double degrees) {
    return degrees > -0.00001 && degrees < 0.00001;
}

// The sine or cosine of an angle in degrees, times 256 and truncated.
long fixedPoint(double value) {
    return static_cast<long>(value * 256.0);
}

EImageFilter filterFor(ERotateQuality quality) {
    return quality == ERotateQuality::Filtered ? EImageFilter::Filtered : EImageFilter::Fast;
}

// A picture of the size showing nothing but background; null when memory is short.
std::unique_ptr<EImageData> emptyPicture(EImageSize size) {
    return EImageData::NewFilled(size.ToSize(), EImageMemory::MayFree, Background);
}

// The display size that a final render asks of the parent for the section: the
// section scaled by the request's zoom in whole numbers, at most 1; the
// section's own size when that would be below 5 pixels.
EImageSize zoomedDisplaySize(const iRenderRequest& request, const CRect& section) {
    const CRect& wanted = request.Rect;
    long zoom = 0;
    if (wanted.Width() > 0 && wanted.Height() > 0)
        zoom = std::min(
            (request.DisplaySize.Width / wanted.Width() + request.DisplaySize.Height / wanted.Height()) / 2,
            1L);
    const EImageSize zoomed{section.Width() * zoom, section.Height() * zoom};
    if (zoomed.Width >= 5 && zoomed.Height >= 5) return zoomed;
    qvrTraceVerbose(
        "*** NOTE[imodRotate::renderParentImg()]: Calculated display size too small; using normal size.\n");
    return {section.Width(), section.Height()};
}

} // namespace

iRotation::iRotation(double angle) {
    const double radians = angle * std::numbers::pi / 180.0;
    s = fixedPoint(std::sin(radians));
    c = fixedPoint(std::cos(radians));
}

CRect iRotation::Rotate(const CRect& rect) const {
    const CPoint corners[] = {
        {rect.left, rect.top}, {rect.right, rect.top}, {rect.left, rect.bottom}, {rect.right, rect.bottom}};
    CRect box{LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN};
    for (const CPoint& corner : corners) {
        const long x = (c * corner.x + s * corner.y) / 256;
        const long y = (c * corner.y - s * corner.x) / 256;
        box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x), std::max(box.bottom, y)};
    }
    return box;
}

const iParameterEntry<imodRotate> imodRotate::parameterEntries[] = {
    {{.Key = "Angle",
      .Kind = iParameterKind::Animated,
      .Label = ObjectText::LabelAngle,
      .ConstantWanted = true}},
    {{"UseQualityInPreview", iParameterKind::Flag, ObjectText::LabelQualityInPreview},
     &imodRotate::useQualityInPreview},
    {{"UseQualityWhenRendering", iParameterKind::Flag, ObjectText::LabelQualityWhenRendering},
     &imodRotate::useQualityWhenRendering},
};
const iParameterTable<imodRotate> imodRotate::Parameters{parameterEntries};

imodRotate::imodRotate(std::string name) : iModifier(std::move(name)), angle(this, Parameters.Get("Angle")) {}

std::string imodRotate::GetStateText() const {
    return EStringTable::Load(textDescription);
}

void imodRotate::doSaveData(qvrCTreeData& block, hReport&) {
    Parameters.SaveBlock(*this, block);
}

void imodRotate::doLoadData(const qvrCTreeData& block, hReport&) {
    Parameters.LoadBlock(*this, block);
}

std::unique_ptr<imodRotate> imodRotate::Clone() const {
    auto copy = std::make_unique<imodRotate>(GetName());
    Parameters.CopyTo(*this, *copy);
    return copy;
}

ERotateQuality imodRotate::GetQuality(const iRenderRequest& request) const {
    const bool filtered = (request.FullSize && useQualityWhenRendering) || useQualityInPreview;
    return filtered ? ERotateQuality::Filtered : ERotateQuality::Fast;
}

EImageSize imodRotate::GetSize() const {
    const std::lock_guard guard(sizeLock);
    return size;
}

bool imodRotate::doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) {
    if (!parent->QueryImageSize(result, frame)) return false;
    const long side = result.Size.Width + result.Size.Height;
    result.Size = {side, side};
    const std::lock_guard guard(sizeLock);
    size = result.Size;
    return true;
}

bool imodRotate::doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                  iRenderRequest& request) {
    std::unique_ptr<EImageData> picture =
        renderParentImg(parent, image, result, request, GetQuality(request), angle.GetValue(request.Frame));
    EImageLock lock(image);
    if (picture && lock.Lock(-1)) {
        lock.SetData(std::move(picture));
        result.Rect = request.Rect;
        return true;
    }
    if (result.Code == render_ok) result.SetError(render_out_of_memory, this, text_out_of_memory);
    return false;
}

std::unique_ptr<EImageData> imodRotate::renderParentImg(iElement* parent, EImage& image,
                                                        iRenderResult& result, const iRenderRequest& request,
                                                        ERotateQuality quality, double degrees) {
    iImageSizeResult parentAnswer;
    if (!parent->QueryImageSize(parentAnswer, request.Frame)) {
        result.SetError(parentAnswer.Code, parentAnswer.Element.Get(), parentAnswer.Message);
        return nullptr;
    }
    const EImageSize parentSize = parentAnswer.Size;
    const CPoint ownCentre{request.ImageSize.Width / 2, request.ImageSize.Height / 2};
    const CPoint parentCentre{parentSize.Width / 2, parentSize.Height / 2};

    const CRect wanted =
        OffsetRect(iRotation(-degrees).Rotate(OffsetRect(request.Rect, -ownCentre)), parentCentre);
    const CRect section = IntersectRectClamped(wanted, WholeRect(parentSize.ToSize()));
    if (section.IsRectEmpty()) {
        qvrTraceVerbose(
            "*** NOTE[imodRotate::renderParentImg()]: Entire image is outside parent's rotate area.\n");
        return emptyPicture(request.DisplaySize);
    }
    std::unique_ptr<EImageData> picture = renderSection(parent, image, result, request, section, parentSize);
    if (!picture) return nullptr;
    const CRect delivered = result.Rect;
    picture = evenScales(std::move(picture), SizeOfRect(delivered), quality);
    if (!picture) return nullptr;
    if (!isLevel(degrees)) {
        picture = EImgOperator::RotateImage(*picture, degrees, Background, quality);
        if (!picture) return nullptr;
    }

    const CRect box = OffsetRect(iRotation(degrees).Rotate(OffsetRect(delivered, -parentCentre)), ownCentre);
    const CRect visible = IntersectRectOrNull(request.Rect, box);
    if (visible.IsRectEmpty()) {
        qvrTraceVerbose(
            "*** ERROR[imodRotate::renderParentImg()]: Rendered image isn't of _any_ interest for "
            "our output !\n");
        return emptyPicture(request.DisplaySize);
    }
    return cutToRequest(std::move(picture), box, visible, request, quality);
}

std::unique_ptr<EImageData> imodRotate::renderSection(iElement* parent, EImage& image, iRenderResult& result,
                                                      const iRenderRequest& request, const CRect& section,
                                                      EImageSize parentSize) {
    iRenderRequest parentRequest(request);
    parentRequest.Rect = section;
    parentRequest.ImageSize = parentSize;
    parentRequest.DisplaySize = request.FullSize ? zoomedDisplaySize(request, section)
                                                 : EImageSize{section.Width(), section.Height()};
    if (!parent->Render(image, result, parentRequest)) return nullptr;
    EImageLock lock(image);
    if (!lock.Lock(-1)) return nullptr;
    // The picture leaves the holder: from here only this render touches it.
    return lock.SetData(nullptr);
}

std::unique_ptr<EImageData> imodRotate::evenScales(std::unique_ptr<EImageData> picture, CSize delivered,
                                                   ERotateQuality quality) {
    const CSize pictureSize = picture->GetSize();
    if (pictureSize == delivered || delivered.cx <= 0 || delivered.cy <= 0) return picture;
    // The scales are the ratios of the sizes in whole numbers.
    const long scaleX = pictureSize.cx / delivered.cx;
    const long scaleY = pictureSize.cy / delivered.cy;
    if (scaleX == scaleY) return picture;
    const long zoom = std::min(std::max(scaleX, scaleY), 1L);
    CSize even{delivered.cx * zoom, delivered.cy * zoom};
    if (even.cx < 5 || even.cy < 5) even = delivered;
    return picture->Resized(even, filterFor(quality));
}

std::unique_ptr<EImageData> imodRotate::cutToRequest(std::unique_ptr<EImageData> picture, const CRect& box,
                                                     const CRect& visible, const iRenderRequest& request,
                                                     ERotateQuality quality) {
    const CSize pictureSize = picture->GetSize();
    const CRect part =
        IntersectRectClamped(MapRectRelative(pictureSize, box, visible), WholeRect(pictureSize));
    if (visible != request.Rect) {
        const CSize display = request.DisplaySize.ToSize();
        const CRect target =
            IntersectRectClamped(MapRectRelative(display, request.Rect, visible), WholeRect(display));
        std::unique_ptr<EImageData> framed = EImageData::New(display, EImageMemory::MayFree);
        if (!framed) return nullptr;
        if (target.IsRectEmpty()) {
            framed->Fill(Background);
            return framed;
        }
        framed->Stretch(*picture, part, target, EImageBlend::Copy, filterFor(quality));
        framed->FillOutside(target, Background);
        return framed;
    }
    if (part != box) return picture->Extract(part);
    return picture;
}
