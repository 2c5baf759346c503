#include "objects/imodScale.h"

#include "foundation/EStringTable.h"
#include "foundation/hTruncate.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "objects/ObjectText.h"

iFactoryProducerOf<imodScale> imodScale::Producer(iModifier::ClassType, "Scaler");

namespace {

enum : EStringId { textScalingIsAnimated = 47400 };

// Factors at or below the first count as none and are replaced by the second.
constexpr double smallestFactor = 0.00000001;
constexpr double factorOfNothing = 0.00001;

double scaleFactor(long target, long parent) {
    const double factor = parent != 0 ? static_cast<double>(target) / static_cast<double>(parent) : 0.0;
    return factor <= smallestFactor ? factorOfNothing : factor;
}

long scaled(long coordinate, double factor) {
    return hTruncate(static_cast<double>(coordinate) * factor);
}

// A collapsed span of the parent's section is made one pixel wide.
void widenCollapsed(long& low, long& high, const char* warning) {
    if (high != low) return;
    qvrTraceVerbose("%s", warning);
    if (low == 0)
        high = low + 1;
    else
        low = high - 1;
}

long atLeastOne(long extent, const char* warning) {
    if (extent != 0) return extent;
    qvrTraceVerbose("%s", warning);
    return 1;
}

} // namespace

// A copy keeps no size of its own, so that it takes over the size of its next parent.
const iParameterEntry<imodScale> imodScale::parameterEntries[] = {
    {{"Width", iParameterKind::Animated, ObjectText::LabelWidth, 720.0, {10.0, std::nullopt}}},
    {{"Heigth", iParameterKind::Animated, ObjectText::LabelHeight, 576.0, {10.0, std::nullopt}}},
    {{"UseQualityInPreview", iParameterKind::Flag, ObjectText::LabelQualityInPreview},
     &imodScale::useQualityInPreview},
    {{"UseQualityWhenRendering", iParameterKind::Flag, ObjectText::LabelQualityWhenRendering},
     &imodScale::useQualityWhenRendering},
    {{"LockAspect", iParameterKind::Flag, ObjectText::LabelLockAspect}, &imodScale::lockAspect},
    {{.Key = "IgnParentSize",
      .Kind = iParameterKind::Flag,
      .Label = ObjectText::LabelKeepOwnSize,
      .Copy = iParameterCopy::NotCopied},
     &imodScale::ignParentSize},
};
const iParameterTable<imodScale> imodScale::Parameters{parameterEntries};

imodScale::imodScale(std::string name)
    : iModifier(std::move(name)), width(this, Parameters.Get("Width")),
      height(this, Parameters.Get("Heigth")) {}

std::string imodScale::GetStateText() const {
    return EStringTable::Load(textScalingIsAnimated);
}

EImageSize imodScale::GetTargetSize(long frame) const {
    return {hTruncate(width.GetValue(frame) + 0.5), hTruncate(height.GetValue(frame) + 0.5)};
}

EImageSize imodScale::GetParentSize() const {
    std::lock_guard<std::mutex> guard(parentSizeLock);
    return parentSize;
}

bool imodScale::doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) {
    if (!parent->QueryImageSize(result, frame)) return false;
    {
        std::lock_guard<std::mutex> guard(parentSizeLock);
        parentSize = result.Size;
    }
    result.Size = GetTargetSize(frame);
    result.Code = render_ok;
    return true;
}

iRenderRequest imodScale::parentRequest(const iRenderRequest& request, double ix, double iy) const {
    iRenderRequest asked(request);
    asked.ImageSize = GetParentSize();
    asked.Rect = {scaled(request.Rect.left, ix), scaled(request.Rect.top, iy), scaled(request.Rect.right, ix),
                  scaled(request.Rect.bottom, iy)};
    return asked;
}

bool imodScale::doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                 iRenderRequest& request) {
    const EImageSize target = GetTargetSize(request.Frame);
    const EImageSize parentExtent = GetParentSize();
    const double fx = scaleFactor(target.Width, parentExtent.Width);
    const double fy = scaleFactor(target.Height, parentExtent.Height);
    const double ix = 1.0 / fx;
    const double iy = 1.0 / fy;
    iRenderRequest asked = parentRequest(request, ix, iy);
    if (asked.Rect == request.Rect) {
        qvrTraceVerbose(
            "*** NOTE[imodScale::doModifierRender()]: Scale factors are 1 - scaling to necessary.\n");
        return parent->Render(image, result, request);
    }
    CRect& section = asked.Rect;
    widenCollapsed(
        section.left, section.right,
        "*** WARNING[imodScale::doModifierRender()]: Parent section to render has no width (is now "
        "1).\n");
    widenCollapsed(
        section.top, section.bottom,
        "*** WARNING[imodScale::doModifierRender()]: Parent section to render has no height (is now "
        "1).\n");
    if (request.FullSize) {
        asked.DisplaySize = {section.Width(), section.Height()};
    } else {
        asked.DisplaySize = {
            atLeastOne(scaled(request.DisplaySize.Width, ix),
                       "*** WARNING[imodScale::doModifierRender()]: Display width for parent was zero.\n"),
            atLeastOne(scaled(request.DisplaySize.Height, iy),
                       "*** WARNING[imodScale::doModifierRender()]: Display height for parent was zero.\n")};
    }
    if (!parent->Render(image, result, asked)) return false;
    // A parent that gave less than asked (clipped) decides the target section.
    // The +1 and -1 around the scaling belong to the rounding.
    const CRect& delivered = result.Rect;
    const CRect outcome = delivered == section ? request.Rect
                                               : CRect{scaled(delivered.left, fx), scaled(delivered.top, fy),
                                                       scaled(delivered.right + 1, fx) - 1,
                                                       scaled(delivered.bottom + 1, fy) - 1};
    if (!resizePicture(image, {outcome.Width(), outcome.Height()}, request.FullSize)) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    result.Rect = outcome;
    result.Code = render_ok;
    return true;
}

bool imodScale::resizePicture(EImage& image, CSize size, bool fullSize) const {
    const bool quality = fullSize ? useQualityWhenRendering : useQualityInPreview;
    EImageLock lock(image);
    lock.Lock(-1);
    const EImageData* picture = lock.GetData();
    std::unique_ptr<EImageData> resized =
        picture ? picture->Resized(size, quality ? EImageFilter::Filtered : EImageFilter::Fast) : nullptr;
    const bool made = resized != nullptr;
    lock.SetData(std::move(resized));
    lock.Unlock(false);
    return made;
}

void imodScale::OnParentLinked(iElement* parent) {
    iModifier::OnParentLinked(parent);
    if (ignParentSize || width.GetKeyCount() > 1 || height.GetKeyCount() > 1) return;
    iImageSizeResult size;
    if (!parent->QueryImageSize(size, 0)) {
        qvrTraceVerbose("*** NOTE[imodScale::OnParentLinked()]: Can't set to parent's initial size - parent "
                        "has no size.\n");
        return;
    }
    width.SetSingleKey(0, static_cast<double>(size.Size.Width), true);
    height.SetSingleKey(0, static_cast<double>(size.Size.Height), true);
    ignParentSize = true;
}

void imodScale::doSaveData(qvrCTreeData& block, hReport&) {
    Parameters.SaveBlock(*this, block);
}

void imodScale::doLoadData(const qvrCTreeData& block, hReport&) {
    Parameters.LoadBlock(*this, block);
    // An older form of the block had one switch for both cases, which wins.
    bool always = false;
    if (block.GetBool("UseQualityScaleAlways", always)) {
        useQualityInPreview = always;
        useQualityWhenRendering = always;
    }
}

std::unique_ptr<imodScale> imodScale::Clone() const {
    auto copy = std::make_unique<imodScale>(GetName());
    Parameters.CopyTo(*this, *copy);
    return copy;
}
