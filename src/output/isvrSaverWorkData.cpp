#include "output/isvrSaverWorkData.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "output/EImageOutputHandle.h"
#include "output/isvrSaver.h"
#include "output/isvrSaverThreadRenderer.h"

#include <exception>

namespace {

constexpr const char* TextInvalidSetup = "Invalid setup";

} // namespace

std::shared_ptr<isvrSaverWorkData> isvrSaverWorkData::Create(isvrSaver& saver,
                                                             std::shared_ptr<isvrSaverRunWindow> window) {
    return std::shared_ptr<isvrSaverWorkData>(new isvrSaverWorkData(saver, std::move(window)));
}

isvrSaverWorkData::isvrSaverWorkData(isvrSaver& saver, std::shared_ptr<isvrSaverRunWindow> window)
    : iSaverWorkData(std::move(window)), Saver(saver) {}

isvrSaverWorkData::~isvrSaverWorkData() {
    Kill(5);
}

// ---------------------------------------------------------------- starting

bool isvrSaverWorkData::Start(std::uint32_t threadCount, std::uint32_t first, std::uint32_t last,
                              std::uint32_t step, std::uint32_t rate, std::uint32_t rateStep,
                              bool stopOnError, bool replaceBadFrames, std::string& errorText) {
    if (HasThreads() || last < first || step == 0 || rate == 0 || rateStep == 0) {
        errorText = TextInvalidSetup;
        return false;
    }
    Stream = Saver.GetStream();
    if (!Stream) {
        errorText = "No output stream.";
        return false;
    }
    Setup.reset();
    if (Stream->UsesSetup()) {
        Setup = Stream->CreateSetup();
        if (Setup) Setup->SetSetupString(Saver.GetStreamSetup());
    }
    FileName = Saver.GetFileName();
    FrameSize = Saver.GetSize().ToSize();
    if (FrameSize.cx <= 0 || FrameSize.cy <= 0 || FileName.empty()) {
        errorText = TextInvalidSetup;
        return false;
    }
    Rate = rate;
    RateStep = rateStep;
    StopOnError = stopOnError;
    ReplaceBadFrames = replaceBadFrames;
    try {
        // A movie's one thread may split its pictures into the cores the run was given.
        const std::uint32_t cores = threadCount;
        prepareRun(threadCount, first, last, step);
        if (!launchThreads(threadCount, cores)) {
            errorText = "Failed to launch at least one thread (system error)";
            return false;
        }
    } catch (const std::exception& error) {
        errorText = qvrFormat("Failed to initialize and start threads: %s", error.what());
        return false;
    }
    return true;
}

void isvrSaverWorkData::prepareRun(std::uint32_t& threadCount, std::uint32_t first, std::uint32_t last,
                                   std::uint32_t step) {
    resetRun((last - first + step) / step);
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        Last = last;
        Step = step;
        Next = first;
    }
    SharedHandle.reset();
    if (!Stream->IsSequence()) {
        threadCount = 1;
        return;
    }
    if (threadCount == 0) threadCount = 1;
    openSharedHandle();
}

void isvrSaverWorkData::openSharedHandle() {
    auto handle = std::make_shared<EImageOutputHandle>(*Stream);
    if (!handle->Open(FileName, FrameSize, Setup.get(), Rate, RateStep))
        throw qvrCException(handle->GetLastError().Describe());
    SharedHandle = std::move(handle);
}

bool isvrSaverWorkData::launchThreads(std::uint32_t threadCount, std::uint32_t cores) {
    std::vector<std::unique_ptr<iSaverThread>> threads;
    const auto self = std::static_pointer_cast<isvrSaverWorkData>(shared_from_this());
    for (std::uint32_t index = 0; index < threadCount; ++index)
        threads.push_back(std::make_unique<isvrSaverThreadRenderer>(self, index, Setup, SharedHandle));
    return iSaverWorkData::launchThreads(std::move(threads), cores);
}

// The shared handle goes first: its writer may refer to the setup.
void isvrSaverWorkData::releaseOutput() {
    SharedHandle.reset();
    Setup.reset();
}

// ---------------------------------------------------------------- the threads' side

bool isvrSaverWorkData::NextFrame(std::uint32_t& frame) {
    qvrCSingleLock progress(ProgressLock);
    progress.Lock();
    frame = Next;
    if (frame > Last) return false;
    Next += Step;
    return true;
}

void isvrSaverWorkData::FrameDone(unsigned, std::uint32_t, bool success) {
    countFrame(success);
}
