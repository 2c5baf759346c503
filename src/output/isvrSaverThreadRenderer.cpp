#include "output/isvrSaverThreadRenderer.h"

#include "foundation/qvrString.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "output/EImageOutputHandle.h"
#include "output/isvrSaver.h"
#include "output/isvrSaverWorkData.h"

#include <exception>

namespace {

constexpr unsigned long StopTestMs = 1;

// The whole frame at full size, as every frame of a run is asked for.
iRenderRequest frameRequest(CSize size, std::uint32_t frame) {
    iRenderRequest request;
    request.ImageSize = {size.cx, size.cy};
    request.DisplaySize = request.ImageSize;
    request.Rect = {0, 0, size.cx, size.cy};
    request.Frame = static_cast<long>(frame);
    request.FullSize = true;
    return request;
}

// The picture that a render left in the holder, taken out of it; null when
// there is none or the holder can't be locked.
std::unique_ptr<EImageData> takePicture(EImage& image) {
    EImageLock lock(image);
    if (!lock.Lock(-1)) return nullptr;
    return lock.SetData(nullptr);
}

} // namespace

// The thread's run. It lives on the thread's own stack and holds the run's
// data by shared pointer, so it stays valid even if the thread is given up.
class isvrSaverThreadRenderer::Loop {
public:
    Loop(isvrSaverWorkData& work, Control& control, std::shared_ptr<const EImageOutputSetup> setup,
         std::shared_ptr<EImageOutputHandle> sharedHandle)
        : Work(work), Index(control.Index), StopEvent(control.StopEvent), Setup(std::move(setup)),
          SharedHandle(std::move(sharedHandle)) {}

    void Run() {
        if (initialise()) renderFrames();
    }

private:
    bool initialise();
    void renderFrames();
    // Renders the frame into Picture.
    FrameResult renderFrame(std::uint32_t frame);
    FrameResult renderFailed(std::uint32_t frame, const iRenderResult& result);
    bool saveFrame(std::uint32_t frame);
    // Takes the stop signal, waiting 1 ms for it.
    bool stopRequested() { return StopEvent.Lock(StopTestMs); }
    void report(const std::string& text, int level) { Work.Report(Index, text, level); }

    isvrSaverWorkData& Work;
    const unsigned Index;
    qvrCEvent& StopEvent;
    const std::shared_ptr<const EImageOutputSetup> Setup;
    const std::shared_ptr<EImageOutputHandle> SharedHandle;
    // A movie's output, opened by the thread that writes it.
    std::unique_ptr<EImageOutputHandle> OwnHandle;
    // The last good frame; a blank picture stands in before the first.
    std::unique_ptr<EImageData> Picture;
};

bool isvrSaverThreadRenderer::Loop::initialise() {
    const CSize size = Work.GetFrameSize();
    if (size.cx <= 0 || size.cy <= 0) {
        report("Bad size of target image(s).", isvrSaverRunWindow::LevelError);
        return false;
    }
    Picture = EImageData::New(size, EImageMemory::MayFree);
    if (!Picture) {
        report("Out of memory.", isvrSaverRunWindow::LevelError);
        return false;
    }
    if (SharedHandle) return true;
    OwnHandle = std::make_unique<EImageOutputHandle>(*Work.GetStream());
    if (!OwnHandle->Open(Work.GetFileName(), size, Setup.get(), Work.GetRate(), Work.GetRateStep())) {
        report(qvrFormat("Failed to open stream: %s.", OwnHandle->GetLastError().Describe().c_str()),
               isvrSaverRunWindow::LevelError);
        return false;
    }
    return true;
}

void isvrSaverThreadRenderer::Loop::renderFrames() {
    std::uint32_t frame = 0;
    try {
        while (Work.NextFrame(frame)) {
            const FrameResult rendered = renderFrame(frame);
            if (rendered == FrameFatal) {
                Work.FrameDone(Index, frame, false);
                return;
            }
            if (stopRequested()) {
                report("Aborted.", isvrSaverRunWindow::LevelError);
                Work.FrameDone(Index, frame, false);
                return;
            }
            if (rendered != FrameSkip && !saveFrame(frame)) {
                Work.FrameDone(Index, frame, false);
                return;
            }
            // A skipped frame counts as failed; a save that failed while
            // errors are ignored counts as done.
            Work.FrameDone(Index, frame, rendered != FrameSkip);
            if (stopRequested()) {
                report("Aborted.", isvrSaverRunWindow::LevelError);
                return;
            }
        }
    } catch (const std::exception& error) {
        Work.FrameDone(Index, frame, false);
        report(qvrFormatMessage("Unexpected system error: %1.", {std::string(error.what())}),
               isvrSaverRunWindow::LevelError);
    }
}

isvrSaverThreadRenderer::FrameResult isvrSaverThreadRenderer::Loop::renderFrame(std::uint32_t frame) {
    report(qvrFormatMessage("Rendering frame %1!ld!.", {static_cast<long>(frame)}),
           isvrSaverRunWindow::LevelInformation);
    iRenderRequest request = frameRequest(Work.GetFrameSize(), frame);
    iRenderResult result;
    EImage image(0);
    if (!Work.GetSaver().RenderFrame(image, result, request)) return renderFailed(frame, result);
    std::unique_ptr<EImageData> picture = takePicture(image);
    if (!picture && !Picture) {
        report(qvrFormat("Failed to render frame %ld: Out of memory.", static_cast<long>(frame)),
               isvrSaverRunWindow::LevelError);
        return FrameFatal;
    }
    if (picture) Picture = std::move(picture);
    for (const std::string& note : result.Notes)
        report(qvrFormat("Frame %ld: %s !", static_cast<long>(frame), note.c_str()),
               isvrSaverRunWindow::LevelWarning);
    return FrameGood;
}

isvrSaverThreadRenderer::FrameResult
isvrSaverThreadRenderer::Loop::renderFailed(std::uint32_t frame, const iRenderResult& result) {
    const long number = static_cast<long>(frame);
    const char* message = result.Message.c_str();
    if (Work.GetStopOnError() || result.Code < 0 || !Picture) {
        report(qvrFormat("Failed to render frame %ld: %s.", number, message), isvrSaverRunWindow::LevelError);
        return FrameFatal;
    }
    if (!Work.GetReplaceBadFrames()) {
        report(qvrFormat("Failed to render frame %ld: %s - skipping frame", number, message),
               isvrSaverRunWindow::LevelError);
        return FrameSkip;
    }
    report(qvrFormat("Failed to render frame %ld: %s - using previous frame", number, message),
           isvrSaverRunWindow::LevelError);
    return FrameGood;
}

bool isvrSaverThreadRenderer::Loop::saveFrame(std::uint32_t frame) {
    EImageOutputHandle* handle = OwnHandle ? OwnHandle.get() : SharedHandle.get();
    if (!handle || !Picture) return false;
    const long number = static_cast<long>(frame);
    report(qvrFormatMessage("Saving frame %1!ld!.", {number}), isvrSaverRunWindow::LevelInformation);
    EImageOutputError error;
    if (handle->Write(*Picture, number, &error)) return true;
    Work.SaveFailed();
    report(qvrFormatMessage("Failed to save frame %1!ld! to \"%2\": %3.",
                            {number, Work.GetFileName(), error.Describe()}),
           isvrSaverRunWindow::LevelError);
    return !Work.GetStopOnError();
}

// ---------------------------------------------------------------- the thread object

isvrSaverThreadRenderer::isvrSaverThreadRenderer(std::shared_ptr<isvrSaverWorkData> work, unsigned index,
                                                 std::shared_ptr<const EImageOutputSetup> setup,
                                                 std::shared_ptr<EImageOutputHandle> sharedHandle)
    : iSaverThread(work, index, qvrCEvent::ResetMode::Auto, "isvrSaverThreadRenderer") {
    setBody([work, setup = std::move(setup), sharedHandle = std::move(sharedHandle)](Control& control) {
        Loop(*work, control, setup, sharedHandle).Run();
    });
}
