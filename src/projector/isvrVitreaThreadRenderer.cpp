#include "projector/isvrVitreaThreadRenderer.h"

#include "foundation/qvrString.h"
#include "imaging/EImageData.h"
#include "output/EImageOutputHandle.h"
#include "projector/LConfiguration.h"
#include "projector/LQuickTable.h"
#include "projector/isvrVitrea.h"
#include "projector/isvrVitreaWorkData.h"

#include <exception>

namespace {

constexpr unsigned long StopTestMs = 1;
constexpr int Information = isvrSaverRunWindow::LevelInformation;
constexpr int Warning = isvrSaverRunWindow::LevelWarning;
constexpr int Error = isvrSaverRunWindow::LevelError;

// Thrown to end the thread once the reason has been reported.
struct ThreadEnds {};

std::string frameText(const char* format, std::uint32_t frame) {
    return qvrFormatMessage(format, {static_cast<long>(frame)});
}

} // namespace

// The thread's run. It lives on the thread's own stack and holds the run's
// data by shared pointer, so it stays valid even if the thread is given up.
class isvrVitreaThreadRenderer::Loop {
public:
    Loop(isvrVitreaWorkData& work, Control& control, std::shared_ptr<const EImageOutputSetup> setup)
        : Work(work), Configuration(work.GetConfiguration()), StopEvent(control.StopEvent),
          Setup(std::move(setup)) {}

    void Run();

private:
    bool initialise();
    void workOnProjectors();
    // Opens the current projector's stream and builds its map; false when the projector can't be done.
    bool prepare();
    bool buildTable();
    void renderFrames();
    // Renders the window into Source; false when the frame failed.
    bool loadFrame(std::uint32_t frame);
    // Resamples Source into Target.
    void transform(std::uint32_t frame);
    bool saveFrame(std::uint32_t frame);
    void closeStream();
    // Reports at level 2 and ends the thread.
    [[noreturn]] void end(const std::string& text);
    void report(const std::string& text, int level) {
        Work.Report(static_cast<unsigned>(Current), text, level);
    }

    isvrVitreaWorkData& Work;
    const LConfiguration& Configuration;
    qvrCEvent& StopEvent;
    const std::shared_ptr<const EImageOutputSetup> Setup;
    std::size_t Current = LVitrea::ProjectorCount;
    bool InProjector = false;
    LProjection Projection;
    LQuickTable Table;
    std::unique_ptr<EImageOutputHandle> Handle;
    // The projector's window as rendered for the frame.
    std::unique_ptr<EImageData> Source;
    CSize SourceSize;
    CSize TargetSize;
    std::unique_ptr<EImageData> Target;
};

void isvrVitreaThreadRenderer::Loop::Run() {
    if (!initialise()) return;
    try {
        workOnProjectors();
    } catch (const ThreadEnds&) {
    } catch (const std::exception& error) {
        report(qvrFormatMessage("Unexpected system error: %1.", {std::string(error.what())}), Error);
    }
    if (InProjector) Work.ProjectorFinished(Current);
}

void isvrVitreaThreadRenderer::Loop::end(const std::string& text) {
    report(text, Error);
    throw ThreadEnds{};
}

bool isvrVitreaThreadRenderer::Loop::initialise() {
    TargetSize = {static_cast<long>(Configuration.Calibration.ImageWidth),
                  static_cast<long>(Configuration.Calibration.ImageHeight)};
    if (TargetSize.cx <= 0 || TargetSize.cy <= 0) {
        report("Bad size of target image(s).", Error);
        return false;
    }
    Target = EImageData::New(TargetSize, EImageMemory::MayFree);
    if (!Target) {
        report("Out of memory.", Error);
        return false;
    }
    return true;
}

void isvrVitreaThreadRenderer::Loop::workOnProjectors() {
    std::size_t projector = 0;
    while (Work.NextProjector(projector)) {
        Current = projector;
        InProjector = true;
        Work.ProjectorStarted(Current);
        if (prepare()) {
            renderFrames();
            closeStream();
        }
        InProjector = false;
        Work.ProjectorFinished(Current);
        if (StopEvent.IsSet()) end("Aborted.");
    }
}

// ---------------------------------------------------------------- preparing a projector

bool isvrVitreaThreadRenderer::Loop::prepare() {
    if (Handle) Handle->Close();
    Handle.reset();
    const EImageOutputStream* stream = Work.GetStream();
    if (!stream) end("INTERNAL ERROR (#21-54:isvrVitreaThreadRenderer)");
    if (Current >= LVitrea::ProjectorCount)
        end("INTERNAL ERROR (#21-55:isvrVitreaThreadRenderer): Projector not defined.");
    report("Initializing.", Information);
    const CRect& window = Configuration.Metrics.PixelWindows[Current];
    SourceSize = {window.Width(), window.Height()};
    if (SourceSize.cx <= 0 || SourceSize.cy <= 0) {
        report("Bad calibration points.", Error);
        return false;
    }
    Handle = std::make_unique<EImageOutputHandle>(*stream);
    if (!Handle->Open(Configuration.OutputFiles.GetOutputName(Current), TargetSize, Setup.get(),
                      Work.GetRate(), Work.GetRateStep())) {
        report(qvrFormat("Failed to open stream: %s.", Handle->GetLastError().Describe().c_str()), Error);
        Handle.reset();
        return false;
    }
    report(qvrFormatMessage("Output stream \"%1\" is open.", {Handle->GetFileName()}), Information);
    report("Starting to compute transformation.", Information);
    Projection.SetFilter(Configuration.Filter);
    Projection.SetFilterLevel(Configuration.FilterLevel);
    if (!Projection.Prepare(Configuration.Calibration.Projectors[Current], SourceSize)) {
        report("Failed to compute calibration - bad border points.", Error);
        return false;
    }
    if (!buildTable()) return false;
    // Outside the map the picture stays empty for every frame.
    Target->Fill(0x00000000);
    return true;
}

bool isvrVitreaThreadRenderer::Loop::buildTable() {
    switch (Table.Build(Projection, TargetSize, &StopEvent)) {
    case LQuickTable::BuildDone:
        report("Transformation computed successfully.", Information);
        return true;
    case LQuickTable::BuildEmpty:
        report("Transformation computed successfully - but entire stream will be empty !", Warning);
        return true;
    case LQuickTable::BuildOutOfMemory:
        report("Compution transformation failed: Out of memory.", Error);
        return false;
    case LQuickTable::BuildStopped:
        break;
    }
    end("Aborted.");
}

void isvrVitreaThreadRenderer::Loop::closeStream() {
    report("Closing output stream.", Information);
    if (!Handle->Close())
        report(qvrFormatMessage("Failed to close stream successfully: %1 - stream might be incomplete.",
                                {Handle->GetLastError().Describe()}),
               Error);
    Handle.reset();
    Source.reset();
}

// ---------------------------------------------------------------- the frames

void isvrVitreaThreadRenderer::Loop::renderFrames() {
    const std::uint32_t count = Work.GetFramesPerProjector();
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t frame = Work.GetFirst() + i * Work.GetStep();
        Source.reset();
        if (StopEvent.Lock(StopTestMs)) end("Aborted.");
        // A projector whose map is empty writes its empty picture without asking for one.
        bool success = true;
        if (!Table.IsEmpty()) {
            success = loadFrame(frame);
            if (success) transform(frame);
        }
        // A failed frame is skipped, or, with replacing, written as the last picture again.
        bool saved = true;
        if (success || Work.GetReplaceBadFrames()) {
            saved = saveFrame(frame);
            success = success && saved;
        }
        Work.FrameDone(Current, frame, success);
        if (!success && Work.GetStopOnError()) end("Aborting because of an error.");
        if (!saved) {
            report("Problems saving this projector - continuing with next one.", Error);
            return;
        }
    }
}

bool isvrVitreaThreadRenderer::Loop::loadFrame(std::uint32_t frame) {
    report(frameText("Loading frame %1!ld!.", frame), Information);
    std::string status;
    bool fatal = false;
    std::vector<std::string> warnings;
    Source = Work.GetSaver().RenderSaverImage(static_cast<long>(frame), Current, &StopEvent, status, fatal,
                                              &warnings);
    if (!Source) {
        report(qvrFormatMessage("Failed to render frame %1!ld!: %2.", {static_cast<long>(frame), status}),
               Error);
        if (fatal) throw ThreadEnds{};
        return false;
    }
    for (const std::string& warning : warnings)
        report(qvrFormat("Frame %ld: %s.", static_cast<long>(frame), warning.c_str()), Warning);
    return true;
}

void isvrVitreaThreadRenderer::Loop::transform(std::uint32_t frame) {
    if (!Source || Source->GetSize() != SourceSize || !Target || Table.IsEmpty())
        end("*** INTERNAL ERROR (isvrVitreaThreadRenderer::renderImage) ***");
    report(frameText("Transforming frame %1!ld!.", frame), Information);
    if (!Table.Resample(*Source, *Target, &StopEvent)) end("Aborted.");
}

bool isvrVitreaThreadRenderer::Loop::saveFrame(std::uint32_t frame) {
    report(frameText("Saving frame %1!ld!.", frame), Information);
    if (!Handle || !Target) end("*** INTERNAL ERROR (isvrVitreaThreadRenderer::saveImage) ***");
    EImageOutputError error;
    if (Handle->Write(*Target, static_cast<long>(frame), &error)) return true;
    Work.SaveFailed();
    report(qvrFormatMessage("Failed to save frame %1!ld! to \"%2\": %3.",
                            {static_cast<long>(frame), Handle->GetFileName(), error.Describe()}),
           Error);
    return false;
}

// ---------------------------------------------------------------- the thread object

isvrVitreaThreadRenderer::isvrVitreaThreadRenderer(std::shared_ptr<isvrVitreaWorkData> work, unsigned index,
                                                   std::shared_ptr<const EImageOutputSetup> setup)
    : iSaverThread(work, index, qvrCEvent::ResetMode::Manual, "isvrVitreaThreadRenderer") {
    setBody([work, setup = std::move(setup)](Control& control) { Loop(*work, control, setup).Run(); });
}
