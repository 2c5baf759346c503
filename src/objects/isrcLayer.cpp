#include "objects/isrcLayer.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/iElementContainer.h"
#include "objects/ObjectText.h"

iFactoryProducerOf<isrcLayer> isrcLayer::Producer(iSource::ClassType, "Solid");

namespace {

// A channel's value at the frame as a whole number: truncated, 8 bits.
std::uint32_t channelByte(const iActiveValue& value, long frame) {
    return static_cast<std::uint32_t>(static_cast<long>(value.GetValue(frame))) & 0xFF;
}

} // namespace

// The colour channels run from 0 to 255, white and opaque at first. The size
// is read by the layer's own rule, which refuses a size without area.
const iParameterEntry<isrcLayer> isrcLayer::parameterEntries[] = {
    {{"Color Red", iParameterKind::Animated, ObjectText::LabelRed, 255.0, {0.0, 255.0}, true, 0x0000DC}},
    {{"Color Green", iParameterKind::Animated, ObjectText::LabelGreen, 255.0, {0.0, 255.0}, true, 0x00C800}},
    {{"Color Blue", iParameterKind::Animated, ObjectText::LabelBlue, 255.0, {0.0, 255.0}, true, 0xFF0000}},
    {{"Color Alpha", iParameterKind::Animated, ObjectText::LabelAlpha, 255.0, {0.0, 255.0}, true, 0x0096DC}},
    {{.Key = "Size",
      .Kind = iParameterKind::Size,
      .Label = ObjectText::LabelSize,
      .Limits = {10.0, 35000.0},
      .Load = iParameterLoad::ByClass},
     &isrcLayer::size},
};
const iParameterTable<isrcLayer> isrcLayer::Parameters{parameterEntries};

isrcLayer::isrcLayer(std::string name)
    : iSource(std::move(name)), colorRed(this, Parameters.Get("Color Red")),
      colorGreen(this, Parameters.Get("Color Green")), colorBlue(this, Parameters.Get("Color Blue")),
      colorAlpha(this, Parameters.Get("Color Alpha")) {}

isrcLayer::~isrcLayer() {
    colorRed.Unlink();
    colorGreen.Unlink();
    colorBlue.Unlink();
    colorAlpha.Unlink();
}

void isrcLayer::doSaveData(qvrCTreeData& block, hReport&) {
    Parameters.SaveBlock(*this, block);
}

void isrcLayer::doLoadData(const qvrCTreeData& block, hReport& report) {
    CSize read;
    if (!block.GetSize("Size", read) || read.cx == 0 || read.cy == 0) {
        report.Report("Can't read correct size information.", hReportError);
        return;
    }
    size = {read.cx, read.cy};
}

std::unique_ptr<isrcLayer> isrcLayer::Clone() const {
    auto copy = std::make_unique<isrcLayer>(GetName());
    Parameters.CopyTo(*this, *copy);
    return copy;
}

EImageSize isrcLayer::GetSize(long) const {
    return size;
}

void isrcLayer::SetSize(EImageSize newSize) {
    if (newSize == size) return;
    size = newSize;
    if (GetProject()) GetProject()->SetChanged(true);
    NotifyChanged(nullptr, true);
}

std::uint32_t isrcLayer::GetColor(long frame) const {
    return channelByte(colorAlpha, frame) << 24 | channelByte(colorRed, frame) << 16 |
           channelByte(colorGreen, frame) << 8 | channelByte(colorBlue, frame);
}

long isrcLayer::GetRed(long frame) const {
    return static_cast<long>(colorRed.GetValue(frame));
}

long isrcLayer::GetGreen(long frame) const {
    return static_cast<long>(colorGreen.GetValue(frame));
}

long isrcLayer::GetBlue(long frame) const {
    return static_cast<long>(colorBlue.GetValue(frame));
}

long isrcLayer::GetAlpha(long frame) const {
    return static_cast<long>(colorAlpha.GetValue(frame));
}

bool isrcLayer::doQueryImageSize(iImageSizeResult& result, long) {
    if (hasEmptySize()) {
        result.SetError(render_failed, this, text_invalid_size);
        return false;
    }
    result.Size = size;
    return true;
}

bool isrcLayer::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    if (hasEmptySize()) {
        qvrTraceVerbose("*** WARNING[isrcLayer::doRender()]: Tried to render empty layer \"%s\".\n",
                        GetName().c_str());
        image.Clear();
        result.SetError(render_failed, this, text_invalid_size);
        return false;
    }
    const CSize pictureSize =
        request.FullSize ? CSize{request.Rect.Width(), request.Rect.Height()} : request.DisplaySize.ToSize();
    std::unique_ptr<EImageData> picture =
        EImageData::NewFilled(pictureSize, EImageMemory::MayFree, GetColor(request.Frame));
    if (!picture) {
        qvrTraceVerbose(
            "*** ERROR[isrcLayer::doRender()]: Can't allocate memory for rendering layer \"%s\" !\n",
            GetName().c_str());
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    EImageLock lock(image);
    lock.Lock(-1);
    lock.SetData(std::move(picture));
    lock.Unlock(false);
    result.Rect = request.Rect;
    return true;
}
