#include "projector/isvrVitrea.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "output/EImageOutputStream.h"
#include "projector/ProjectorText.h"

#include <algorithm>

iFactoryProducerOf<isvrVitrea> isvrVitrea::Producer(iSaver::ClassType, "Vitrea:18");

namespace {

constexpr const char* TextOutOfMemory = "Out of memory.";
// Black with alpha 0: what a projector shows where it has no picture.
constexpr std::uint32_t EmptyColour = 0x00000000;

// A picture of the size in the empty colour; null when memory is short.
std::unique_ptr<EImageData> emptyPicture(CSize size) {
    return EImageData::NewFilled(size, EImageMemory::MayFree, EmptyColour);
}

// A render request that gives up once the run's stop event is set.
class StoppableRequest : public iRenderRequest {
public:
    explicit StoppableRequest(const qvrCEvent* stop) : Stop(stop) {}
    bool IsAborted() const override { return Stop && Stop->IsSet(); }

private:
    const qvrCEvent* Stop;
};

} // namespace

isvrVitrea::isvrVitrea(std::string name) : iSaver(std::move(name)) {}

// ---------------------------------------------------------------- the project file

// Besides these, the block holds the render settings and the projector
// configuration, which write and read themselves. The mask colour is written
// as an unsigned number.
const iParameterEntry<isvrVitrea> isvrVitrea::parameterEntries[] = {
    {{"DisplayWindows", iParameterKind::Flag, ProjectorText::LabelDisplayWindows},
     &isvrVitrea::DisplayWindows},
    {{"MaskColor", iParameterKind::Number, ProjectorText::LabelMaskColor}, &isvrVitrea::MaskColor},
};
const iParameterTable<isvrVitrea> isvrVitrea::Parameters{parameterEntries};

void isvrVitrea::doSaveData(qvrCTreeData& block, hReport&) {
    Setup.Save(block);
    Configuration.Save(block);
    Parameters.SaveBlock(*this, block);
}

void isvrVitrea::doLoadData(const qvrCTreeData& block, hReport& report) {
    Setup.Load(block, report);
    Configuration.Load(block, report);
    Parameters.LoadBlock(*this, block);
}

// ---------------------------------------------------------------- the run's pictures

CRect isvrVitrea::GetSourceWindow(std::size_t projector, EImageSize sourceSize) const {
    const LMetrics& metrics = Configuration.Metrics;
    const CRect& window = metrics.PixelWindows[projector];
    const long dx = (sourceSize.Width - metrics.TotalWidth) / 2;
    const long dy = (sourceSize.Height - metrics.TotalHeight) / 2;
    return {window.left + dx, window.top + dy, window.right + dx, window.bottom + dy};
}

std::string isvrVitrea::CheckRender(const iSaverSetup& setup) const {
    const LOutputFiles& outputs = Configuration.OutputFiles;
    if (!outputs.GetStream())
        return qvrFormatMessage(EStringTable::Get(text_unknown_stream), {outputs.StreamType});
    if (std::none_of(outputs.ProjectorActive.begin(), outputs.ProjectorActive.end(),
                     [](bool on) { return on; }))
        return EStringTable::Load(text_all_projectors_off);
    if (setup.VideoStart > setup.VideoEnd) return EStringTable::Load(text_first_past_last);
    return {};
}

std::unique_ptr<EImageData> isvrVitrea::RenderSaverImage(long frame, std::size_t projector,
                                                         const qvrCEvent* stop, std::string& status,
                                                         bool& fatal, std::vector<std::string>* warnings) {
    fatal = false;
    if (projector >= LVitrea::ProjectorCount) {
        status = "*** INTERNAL ERROR ***";
        fatal = true;
        return nullptr;
    }
    iImageSizeResult size;
    if (!QueryImageSize(size, frame)) {
        status = size.Message;
        fatal = size.Code != render_failed;
        return nullptr;
    }
    const CRect window = GetSourceWindow(projector, size.Size);
    const CRect clip = IntersectRect(window, {0, 0, size.Size.Width, size.Size.Height});
    if (clip.IsRectEmpty()) {
        qvrTraceVerbose(
            "*** NOTE[isvrVitrea::RenderSaverImage()]: Clipped rectangle lays out of sight :O !\n");
        auto empty = emptyPicture(SizeOfRect(window));
        if (!empty) status = TextOutOfMemory;
        return empty;
    }
    EImage image(0);
    iRenderResult result;
    if (!renderSource(image, result, frame, size.Size, clip, stop)) {
        status = result.Message;
        fatal = result.Code != render_failed;
        return nullptr;
    }
    if (warnings) warnings->insert(warnings->end(), result.Notes.begin(), result.Notes.end());
    EImageLock lock(image);
    std::unique_ptr<EImageData> picture = lock.Lock(-1) ? lock.SetData(nullptr) : nullptr;
    if (!picture) {
        status = TextOutOfMemory;
        return nullptr;
    }
    if (clip == window) return picture;
    auto whole = emptyPicture(SizeOfRect(window));
    if (!whole) {
        status = TextOutOfMemory;
        return nullptr;
    }
    whole->CopyRect(*picture, {0, 0, picture->GetWidth(), picture->GetHeight()},
                    {clip.left - window.left, clip.top - window.top}, EImageBlend::Copy);
    return whole;
}

bool isvrVitrea::renderSource(EImage& image, iRenderResult& result, long frame, EImageSize sourceSize,
                              const CRect& part, const qvrCEvent* stop) {
    iElement* source = GetSource(result);
    if (!source) return false;
    StoppableRequest request(stop);
    request.ImageSize = sourceSize;
    request.Rect = part;
    request.DisplaySize = {part.Width(), part.Height()};
    request.Frame = frame;
    request.FullSize = true;
    qvrCSingleLock guard(RenderGuard);
    if (!guard.Lock(0)) {
        qvrTraceVerbose(
            "*** NOTE[isvrVitrea::RenderSaverImage()]: Failed to lock saver - waiting for access.\n");
        guard.Lock();
    }
    return source->Render(image, result, request);
}

// ---------------------------------------------------------------- the picture in views

bool isvrVitrea::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    if (!iSaver::doRender(image, result, request)) return false;
    return !DisplayWindows || maskWindows(image, result, request);
}

bool isvrVitrea::maskWindows(EImage& image, iRenderResult& result, const iRenderRequest& request) {
    EImageLock lock(image);
    if (!lock.Lock(-1) || !lock.GetData()) return true;
    const EImageData& picture = *lock.GetData();
    auto masked = EImageData::New(picture.GetSize(), EImageMemory::MayFree);
    if (!masked) {
        result.SetError(render_out_of_memory, this, "Vitrea:18: Can't render window mask: Out of memory");
        return false;
    }
    masked->Fill(MaskColor);
    masked->position = picture.position;
    masked->opacity = picture.opacity;
    const CRect whole{0, 0, picture.GetWidth(), picture.GetHeight()};
    bool anyVisible = false;
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
        const CRect part = IntersectRect(GetSourceWindow(projector, request.ImageSize), request.Rect);
        if (part.IsRectEmpty()) {
            qvrTraceVerbose(
                "*** NOTE[isvrVitrea::doRender()]: Projector #%ld is not contained in the requested "
                "rectangle (1).\n",
                static_cast<long>(projector));
            continue;
        }
        const CRect shown = IntersectRect(MapRectRelative(picture.GetSize(), request.Rect, part), whole);
        if (shown.IsRectEmpty()) {
            qvrTraceVerbose(
                "*** NOTE[isvrVitrea::doRender()]: Projector #%ld is not contained in the requested "
                "rectangle (2).\n",
                static_cast<long>(projector));
            continue;
        }
        masked->CopyRect(picture, shown, {shown.left, shown.top}, EImageBlend::Copy);
        anyVisible = true;
    }
    if (!anyVisible) qvrTraceVerbose("*** NOTE[[isvrVitrea::doRender()]: NO projector visible...\n");
    lock.SetData(std::move(masked));
    return true;
}
