#include "projector/isvrVitreaWorkData.h"

#include "foundation/qvrString.h"
#include "output/EImageOutputStream.h"
#include "projector/isvrVitrea.h"
#include "projector/isvrVitreaThreadRenderer.h"

#include <algorithm>
#include <exception>

std::shared_ptr<isvrVitreaWorkData> isvrVitreaWorkData::Create(isvrVitrea& saver,
                                                               std::shared_ptr<isvrSaverRunWindow> window) {
    return std::shared_ptr<isvrVitreaWorkData>(new isvrVitreaWorkData(saver, std::move(window)));
}

isvrVitreaWorkData::isvrVitreaWorkData(isvrVitrea& saver, std::shared_ptr<isvrSaverRunWindow> window)
    : iSaverWorkData(std::move(window)), Saver(saver) {
    States.fill(StateOff);
}

isvrVitreaWorkData::~isvrVitreaWorkData() {
    Kill(5);
}

const LConfiguration& isvrVitreaWorkData::GetConfiguration() const {
    return Saver.GetConfiguration();
}

// ---------------------------------------------------------------- starting

bool isvrVitreaWorkData::Start(std::uint32_t threadCount, std::uint32_t first, std::uint32_t last,
                               std::uint32_t step, std::uint32_t rate, std::uint32_t rateStep,
                               bool stopOnError, bool replaceBadFrames, std::string& errorText) {
    if (HasThreads() || last < first || step == 0 || rate == 0 || rateStep == 0) {
        errorText = "Invalid setup";
        return false;
    }
    const LOutputFiles& outputs = GetConfiguration().OutputFiles;
    Stream = outputs.GetStream();
    if (!Stream) {
        errorText = qvrFormat("An output stream \"%s\" is not known", outputs.StreamType.c_str());
        return false;
    }
    Setup.reset();
    if (Stream->UsesSetup()) {
        Setup = Stream->CreateSetup();
        if (Setup) Setup->SetSetupString(outputs.StreamSetup);
    }
    First = first;
    Last = last;
    Step = step;
    Rate = rate;
    RateStep = rateStep;
    StopOnError = stopOnError;
    ReplaceBadFrames = replaceBadFrames;
    const std::uint32_t active = resetProjectors();
    if (active == 0) {
        errorText = "No projector is been enabled";
        return false;
    }
    try {
        resetRun(GetFramesPerProjector() * active);
        if (!launchThreads(std::clamp(threadCount, 1u, active), threadCount)) {
            errorText = "Failed to launch at least one thread (system error)";
            return false;
        }
    } catch (const std::exception& error) {
        errorText = qvrFormat("Failed to initialize and start threads: %s", error.what());
        return false;
    }
    return true;
}

std::uint32_t isvrVitreaWorkData::resetProjectors() {
    const auto& active = GetConfiguration().OutputFiles.ProjectorActive;
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        FramesDone.fill(0);
        for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector)
            States[projector] = active[projector] ? StateWaiting : StateOff;
        ActiveProjectors = static_cast<std::uint32_t>(std::count(active.begin(), active.end(), true));
    }
    qvrCSingleLock next(NextProjectorLock);
    next.Lock();
    Next = static_cast<std::size_t>(std::find(active.begin(), active.end(), true) - active.begin());
    return ActiveProjectors;
}

bool isvrVitreaWorkData::launchThreads(std::uint32_t threadCount, std::uint32_t cores) {
    std::vector<std::unique_ptr<iSaverThread>> threads;
    const auto self = std::static_pointer_cast<isvrVitreaWorkData>(shared_from_this());
    for (std::uint32_t index = 0; index < threadCount; ++index)
        threads.push_back(std::make_unique<isvrVitreaThreadRenderer>(self, index, Setup));
    return iSaverWorkData::launchThreads(std::move(threads), cores);
}

// ---------------------------------------------------------------- the threads' side

bool isvrVitreaWorkData::NextProjector(std::size_t& projector) {
    const auto& active = GetConfiguration().OutputFiles.ProjectorActive;
    qvrCSingleLock lock(NextProjectorLock);
    lock.Lock();
    while (Next < LVitrea::ProjectorCount && !active[Next])
        ++Next;
    if (Next >= LVitrea::ProjectorCount) return false;
    projector = Next++;
    return true;
}

void isvrVitreaWorkData::ProjectorStarted(std::size_t projector) {
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        States[projector] = StateWorking;
        FramesDone[projector] = 0;
    }
    Report(static_cast<unsigned>(projector), "<Starting>", isvrSaverRunWindow::LevelInformation);
    post(isvrSaverRunWindow::MessageProjector);
}

void isvrVitreaWorkData::ProjectorFinished(std::size_t projector) {
    std::uint32_t done = 0;
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        States[projector] = StateFinished;
        done = FramesDone[projector];
    }
    Report(static_cast<unsigned>(projector),
           qvrFormat("<Done %ld/%ld frames>", static_cast<long>(done),
                     static_cast<long>(GetFramesPerProjector())),
           isvrSaverRunWindow::LevelInformation);
    post(isvrSaverRunWindow::MessageProjector);
}

void isvrVitreaWorkData::FrameDone(std::size_t projector, std::uint32_t, bool success) {
    countFrame(success);
    if (!success) return;
    bool fourMore = false;
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        fourMore = ++FramesDone[projector] % 4 == 0;
    }
    if (fourMore) post(isvrSaverRunWindow::MessageProjector);
}

isvrVitreaWorkData::ProjectorState isvrVitreaWorkData::GetProjectorState(std::size_t projector,
                                                                         std::uint32_t& framesDone) {
    qvrCSingleLock progress(ProgressLock);
    progress.Lock();
    framesDone = FramesDone[projector];
    return States[projector];
}
