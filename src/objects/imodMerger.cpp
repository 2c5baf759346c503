#include "objects/imodMerger.h"

#include "foundation/ELog.h"
#include "foundation/EStringTable.h"
#include "foundation/hTruncate.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "objects/ObjectText.h"

#include <algorithm>
#include <array>
#include <iterator>

iFactoryProducerOf<imodMerger> imodMerger::Producer(iModifier::ClassType, "Composer");

namespace {

enum : EStringId {
    textBackground = 47410,
    textNoBackground = 47411,
    textLogContext = 47412,
    textLogSizeFailed = 47413,
    textLogRenderFailed = 47414,
    textContinued = 47415,
    textAborted = 47416,
    textNoteNoSize = 47417,
    textNoteRenderFailed = 47418,
    textNoteAccessDenied = 47419,
    textNoteNoData = 47420,
};

// How long a blend waits for either picture.
constexpr long pictureLockTimeoutMs = 2000;
// Layers whose blend factor lies below this are not drawn.
constexpr long smallestVisibleOpacity = 2;

std::string valueName(const iElement& parent, std::string_view key) {
    return qvrFormat("%s: %s", parent.GetName().c_str(), std::string(key).c_str());
}

// One axis of a layer's place cut to the background's span [low, high):
// `sectionLow` and `sectionHigh` are the visible span of the layer's extent.
void clipSpan(long& placeLow, long& placeHigh, long extent, long low, long high, long& sectionLow,
              long& sectionHigh) {
    sectionLow = 0;
    sectionHigh = extent;
    if (placeLow < low) {
        sectionLow = low - placeLow;
        placeLow = low;
    }
    if (placeHigh > high) {
        sectionHigh = extent - (placeHigh - high);
        placeHigh = high;
    }
}

// One axis of the target in a preview picture whose extent differs from the
// background's; a span that rounds to nothing keeps one pixel.
void scaleSpan(long& low, long& high, long pictureExtent, long backgroundExtent) {
    if (pictureExtent != backgroundExtent && backgroundExtent != 0) {
        low = low * pictureExtent / backgroundExtent;
        high = high * pictureExtent / backgroundExtent;
    }
    if (low != high) return;
    if (low < 1)
        ++high;
    else
        --low;
}

// The part of the layer's picture that shows `section`, given that the
// picture of `size` shows `delivered` of the layer.
CRect pictureSection(const CRect& section, const CRect& delivered, CSize size, bool fullSize) {
    if (fullSize && delivered == section) return {0, 0, size.cx, size.cy};
    const long width = delivered.Width();
    const long height = delivered.Height();
    if (width <= 0 || height <= 0) return {};
    const long a = std::max(section.left - delivered.left, 0L);
    const long b = std::max(section.top - delivered.top, 0L);
    const long c = std::min(section.right - delivered.left, width);
    const long d = std::min(section.bottom - delivered.top, height);
    return {a * size.cx / width, b * size.cy / height, c * size.cx / width, d * size.cy / height};
}

} // namespace

// ---------------------------------------------------------------- imodMergerLink

// In the order of the link's fields.
const iParameterEntry<imodMergerLink> imodMergerLink::parameterEntries[] = {
    {{"X position", iParameterKind::Animated, ObjectText::LabelXPosition}},
    {{"Y position", iParameterKind::Animated, ObjectText::LabelYPosition}},
    {{"Opacity", iParameterKind::Animated, ObjectText::LabelOpacity, 100.0, {0.0, 100.0}}},
    {{"Active", iParameterKind::Animated, ObjectText::LabelActive, 1.0, iLimitedValue::Switch, true}},
};
const iParameterTable<imodMergerLink> imodMergerLink::Parameters{parameterEntries};

imodMergerLink::imodMergerLink(iElement* parent, imodMerger* composer)
    : iElementLink(parent, composer),
      xPos(valueName(*parent, parameterEntries[0].Parameter.Key), parameterEntries[0].Parameter),
      yPos(valueName(*parent, parameterEntries[1].Parameter.Key), parameterEntries[1].Parameter),
      opacity(valueName(*parent, parameterEntries[2].Parameter.Key), parameterEntries[2].Parameter),
      active(valueName(*parent, parameterEntries[3].Parameter.Key), parameterEntries[3].Parameter) {}

imodMergerLink::~imodMergerLink() {
    Unlink(true);
}

std::array<iActiveValue*, 4> imodMergerLink::allValues() {
    return {&xPos, &yPos, &opacity, &active};
}

imodMerger* imodMergerLink::GetComposer() const {
    return static_cast<imodMerger*>(GetChild());
}

imodMergerLink* imodMergerLink::GetNextLink() const {
    return dynamic_cast<imodMergerLink*>(GetNextOfChild());
}

bool imodMergerLink::IsBackground() const {
    return IsLinked() && !GetPrevOfChild();
}

void imodMergerLink::Link(bool notify, iElementLink* before) {
    iElementLink::Link(notify, before);
    if (!IsBackground()) {
        linkValues();
        return;
    }
    unlinkValues();
    if (imodMergerLink* former = GetNextLink()) former->linkValues();
}

void imodMergerLink::Unlink(bool notify) {
    if (!IsLinked()) return;
    imodMergerLink* successor = IsBackground() ? GetNextLink() : nullptr;
    unlinkValues();
    if (successor) successor->unlinkValues();
    iElementLink::Unlink(notify);
}

void imodMergerLink::UpdateValues() {
    if (IsLinked() && !IsBackground())
        linkValues();
    else
        unlinkValues();
}

void imodMergerLink::linkValues() {
    qvrTraceVerbose("*** NOTE[imodMergerLink::linkValues()]: Registering the values of \"%s\".\n",
                    GetParent()->GetName().c_str());
    for (iActiveValue* value : allValues())
        if (value->GetOwner() != GetComposer()) value->Link(GetComposer());
}

void imodMergerLink::unlinkValues() {
    qvrTraceVerbose("*** NOTE[imodMergerLink::unlinkValues()]: Unregistering the values of \"%s\".\n",
                    GetParent()->GetName().c_str());
    for (iActiveValue* value : allValues())
        value->Unlink();
}

void imodMergerLink::RenameValues() {
    const std::array<iActiveValue*, 4> values = allValues();
    for (size_t i = 0; i < values.size(); ++i)
        values[i]->SetName(valueName(*GetParent(), parameterEntries[i].Parameter.Key), true);
}

CRect imodMergerLink::PlaceLayer(EImageSize layerSize, long frame, EImageSize composerSize) {
    const long x = hTruncate(xPos.GetValue(frame)) + composerSize.Width / 2;
    const long y = hTruncate(yPos.GetValue(frame)) + composerSize.Height / 2;
    const CRect place{x - layerSize.Width / 2, y - layerSize.Height / 2, x + (layerSize.Width + 1) / 2,
                      y + (layerSize.Height + 1) / 2};
    qvrCSingleLock lock(rectLock);
    lock.Lock();
    layerRect = place;
    return place;
}

long imodMergerLink::GetOpacityByte(long frame) const {
    return std::min(hTruncate(opacity.GetValue(frame) / 100 * 255 + 0.5), 255L);
}

CRect imodMergerLink::GetLayerRect() const {
    qvrCSingleLock lock(rectLock);
    lock.Lock();
    return layerRect;
}

void imodMergerLink::ClearLayerRectWidth() {
    qvrCSingleLock lock(rectLock);
    lock.Lock();
    layerRect.left = 0;
    layerRect.right = 0;
}

// ---------------------------------------------------------------- imodMerger

// What one render shares among its layers.
struct imodMerger::RenderPass {
    iRenderRequest& Request;
    iRenderResult& Result;
    EImage& Picture;
    CRect Background; // what the background delivered, in composer coordinates
    CSize PictureSize{};
    EImage Layer{EImage::Important};
    // The layers' results; the notes of all layers gather here.
    iRenderResult Sub{};
};

// Where a layer shows: its visible section in its own coordinates and the target in the picture.
struct imodMerger::LayerTarget {
    CRect Section;
    CRect Target;
};

imodMerger::imodMerger(std::string name) : iModifier(std::move(name)) {}

std::string imodMerger::GetStateText() const {
    const iElement* background = GetFirstParent();
    if (!background) return EStringTable::Load(textNoBackground);
    return qvrFormatMessage(EStringTable::Get(textBackground), {background->GetName()});
}

iElementLink* imodMerger::CreateLink(iElement* parent) {
    return new imodMergerLink(parent, this);
}

void imodMerger::OnParentLinked(iElement* parent) {
    if (imodMergerLink* link = GetLinkOf(parent)) link->UpdateValues();
    iModifier::OnParentLinked(parent);
}

void imodMerger::OnParentModified(iElement* sender, const EFrameRange* stamp) {
    if (imodMergerLink* link = GetLinkOf(sender)) {
        link->RenameValues();
        link->UpdateValues();
    }
    iModifier::OnParentModified(sender, stamp);
}

const iParameterEntry<imodMerger> imodMerger::parameterEntries[] = {
    {{"IgnoreSourceErrors", iParameterKind::Flag, ObjectText::LabelIgnoreSourceErrors},
     &imodMerger::ignoreSourceErrors},
};
const iParameterTable<imodMerger> imodMerger::Parameters{parameterEntries};

void imodMerger::doSaveData(qvrCTreeData& block, hReport&) {
    Parameters.SaveBlock(*this, block);
}

void imodMerger::doLoadData(const qvrCTreeData& block, hReport&) {
    Parameters.LoadBlock(*this, block);
}

std::unique_ptr<imodMerger> imodMerger::Clone() const {
    auto copy = std::make_unique<imodMerger>(GetName());
    Parameters.CopyTo(*this, *copy);
    return copy;
}

imodMergerLink* imodMerger::GetFirstLink() const {
    return dynamic_cast<imodMergerLink*>(GetFirstParentLink());
}

imodMergerLink* imodMerger::GetLinkOf(const iElement* parent) const {
    for (imodMergerLink* link = GetFirstLink(); link; link = link->GetNextLink())
        if (link->GetParent() == parent) return link;
    return nullptr;
}

imodMergerLink* imodMerger::GetLinkOfName(std::string_view name) const {
    for (imodMergerLink* link = GetFirstLink(); link; link = link->GetNextLink())
        if (qvrEqualNoCase(link->GetParent()->GetName(), name)) return link;
    return nullptr;
}

bool imodMerger::doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) {
    return parent->QueryImageSize(result, frame);
}

bool imodMerger::doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                  iRenderRequest& request) {
    if (!parent->Render(image, result, request)) return false;
    imodMergerLink* background = GetFirstLink();
    if (!background || !background->GetNextLink()) return true;
    RenderPass pass{.Request = request, .Result = result, .Picture = image, .Background = result.Rect};
    {
        EImageLock lock(image);
        if (!lock.Lock(-1)) {
            result.SetError(render_failed, this, text_virtual_memory_low);
            return false;
        }
        pass.PictureSize = image.GetSize();
    }
    for (imodMergerLink* link = background->GetNextLink(); link; link = link->GetNextLink())
        if (!renderLayer(*link, pass)) return false;
    std::move(pass.Sub.Notes.begin(), pass.Sub.Notes.end(), std::back_inserter(result.Notes));
    return true;
}

bool imodMerger::renderLayer(imodMergerLink& link, RenderPass& pass) const {
    link.ClearLayerRectWidth();
    const iElement& source = *link.GetParent();
    const long frame = pass.Request.Frame;
    iImageSizeResult size;
    if (!link.GetParent()->QueryImageSize(size, frame)) return sizeQueryFailed(source, size, pass);
    const CRect place = link.PlaceLayer(size.Size, frame, pass.Request.ImageSize);
    if (!link.IsActive(frame)) return true;
    const long opacity = link.GetOpacityByte(frame);
    if (opacity < smallestVisibleOpacity) return true;
    LayerTarget layer;
    if (!placeOnPicture(place, size.Size, pass, layer)) {
        qvrTraceVerbose("*** NOTE[imodMerger::doRender()]: Won't draw \"%s\": Image is out of scope.\n",
                        source.GetName().c_str());
        return true;
    }
    iRenderRequest layerRequest(pass.Request);
    layerRequest.Rect = layer.Section;
    layerRequest.ImageSize = size.Size;
    layerRequest.DisplaySize = {layer.Target.Width(), layer.Target.Height()};
    if (!link.GetParent()->Render(pass.Layer, pass.Sub, layerRequest)) return layerRenderFailed(source, pass);
    blendLayer(source, layer, static_cast<std::uint8_t>(opacity), pass);
    return true;
}

bool imodMerger::placeOnPicture(const CRect& place, EImageSize layerSize, const RenderPass& pass,
                                LayerTarget& layer) {
    const CRect& b = pass.Background;
    CRect destination = place;
    CRect& section = layer.Section;
    clipSpan(destination.left, destination.right, layerSize.Width, b.left, b.right, section.left,
             section.right);
    clipSpan(destination.top, destination.bottom, layerSize.Height, b.top, b.bottom, section.top,
             section.bottom);
    if (section.IsRectEmpty()) return false;
    CRect& target = layer.Target;
    target = {destination.left - b.left, destination.top - b.top, destination.right - b.left,
              destination.bottom - b.top};
    if (!pass.Request.FullSize) {
        scaleSpan(target.left, target.right, pass.PictureSize.cx, b.Width());
        scaleSpan(target.top, target.bottom, pass.PictureSize.cy, b.Height());
    }
    return true;
}

void imodMerger::blendLayer(const iElement& source, const LayerTarget& layer, std::uint8_t opacity,
                            RenderPass& pass) const {
    EImageLock layerLock(pass.Layer);
    EImageLock pictureLock(pass.Picture);
    EImageData* layerPicture = nullptr;
    EImageData* picture = nullptr;
    if (!layerLock.Lock(pictureLockTimeoutMs) || !pictureLock.Lock(pictureLockTimeoutMs)) {
        qvrTraceVerbose(
            "*** ERROR[imodMerger::doRender()]: Failed to clip \"%s\" into \"%s\": Access denied.\n",
            source.GetName().c_str(), GetName().c_str());
        addNote(pass, textNoteAccessDenied, source);
    } else if (!(layerPicture = layerLock.GetData()) || !(picture = pictureLock.GetData())) {
        qvrTraceVerbose("*** ERROR[imodMerger::doRender()]: Failed to clip \"%s\" into \"%s\": NO DATA.\n",
                        source.GetName().c_str(), GetName().c_str());
        addNote(pass, textNoteNoData, source);
    } else {
        const bool fullSize = pass.Request.FullSize;
        const CRect section = pictureSection(layer.Section, pass.Sub.Rect, layerPicture->GetSize(), fullSize);
        if (!section.IsRectEmpty() && !layer.Target.IsRectEmpty()) {
            layerPicture->opacity = opacity;
            picture->Stretch(*layerPicture, section, layer.Target, EImageBlend::Blend,
                             fullSize ? EImageFilter::Filtered : EImageFilter::Fast);
        }
    }
    layerLock.SetData(nullptr);
}

bool imodMerger::sizeQueryFailed(const iElement& source, const iImageSizeResult& failure,
                                 RenderPass& pass) const {
    qvrTraceVerbose("*** ERROR[imodMerger::doRender()]: Failed to query image size of parent \"%s\": %s.\n",
                    source.GetName().c_str(), failure.Message.c_str());
    logFailure(textLogSizeFailed, source, pass.Request.Frame, failure.Message);
    if (!ignoreSourceErrors) {
        pass.Result.SetError(failure.Code, failure.Element.Get(), failure.Message);
        return false;
    }
    addNote(pass, textNoteNoSize, source, failure.Message);
    return true;
}

bool imodMerger::layerRenderFailed(const iElement& source, RenderPass& pass) const {
    qvrTraceVerbose("*** ERROR[imodMerger::doRender()]: Failed to render image of parent \"%s\": %s.\n",
                    source.GetName().c_str(), pass.Sub.Message.c_str());
    logFailure(textLogRenderFailed, source, pass.Request.Frame, pass.Sub.Message);
    if (!ignoreSourceErrors) {
        pass.Result = pass.Sub;
        return false;
    }
    addNote(pass, textNoteRenderFailed, source, pass.Sub.Message);
    return true;
}

void imodMerger::logFailure(EStringId text, const iElement& source, long frame,
                            const std::string& message) const {
    const std::string context = qvrFormat(EStringTable::Load(textLogContext).c_str(), GetName().c_str());
    const std::string outcome = EStringTable::Load(ignoreSourceErrors ? textContinued : textAborted);
    ELog::Log(ELog::LevelWarning, context,
              qvrFormat(EStringTable::Load(text).c_str(), source.GetName().c_str(),
                        source.GetElementType().c_str(), frame, message.c_str(), outcome.c_str()));
}

void imodMerger::addNote(RenderPass& pass, EStringId text, const iElement& source,
                         const std::string& message) const {
    pass.Sub.Notes.push_back(
        qvrFormatMessage(EStringTable::Get(text), {GetName(), source.GetName(), message}));
}
