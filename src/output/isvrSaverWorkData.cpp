#include "output/isvrSaverWorkData.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "output/EImageOutputHandle.h"
#include "output/isvrSaver.h"
#include "output/isvrSaverThreadRenderer.h"

#include <chrono>
#include <exception>
#include <thread>

namespace {

constexpr const char* TextInvalidSetup = "Invalid setup";
constexpr unsigned long KillRoundMs = 1000;

std::time_t wallClock() {
    return std::time(nullptr);
}

} // namespace

std::shared_ptr<isvrSaverWorkData> isvrSaverWorkData::Create(isvrSaver& saver,
                                                             std::shared_ptr<isvrSaverRunWindow> window) {
    return std::shared_ptr<isvrSaverWorkData>(new isvrSaverWorkData(saver, std::move(window)));
}

isvrSaverWorkData::isvrSaverWorkData(isvrSaver& saver, std::shared_ptr<isvrSaverRunWindow> window)
    : Now(&wallClock), Saver(saver), Window(std::move(window)) {}

isvrSaverWorkData::~isvrSaverWorkData() {
    Kill(5);
}

// ---------------------------------------------------------------- starting

bool isvrSaverWorkData::Start(const iSaverSetup& setup, std::string& errorText) {
    return Start(setup.MiscThreadCnt, setup.VideoStart, setup.VideoEnd, setup.VideoSteps, setup.VideoFPS,
                 setup.VideoRes, !setup.ErrorsIgnore, setup.ErrorsReplaceBadFrames, errorText);
}

bool isvrSaverWorkData::Start(std::uint32_t threadCount, std::uint32_t first, std::uint32_t last,
                              std::uint32_t step, std::uint32_t rate, std::uint32_t rateStep,
                              bool stopOnError, bool replaceBadFrames, std::string& errorText) {
    if (!Threads.empty() || last < first || step == 0 || rate == 0 || rateStep == 0) {
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
        prepareRun(threadCount, first, last, step);
        if (!launchThreads(threadCount)) {
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
    {
        qvrCSingleLock state(StateLock);
        state.Lock();
        Started = false;
        Finished = false;
        Running = 0;
    }
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        Last = last;
        Step = step;
        Total = (last - first + step) / step;
        Done = 0;
        Failed = 0;
        Remaining = Total;
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
        throw qvrCException(handle->GetLastError().Text);
    SharedHandle = std::move(handle);
}

// Every thread is launched and waits before the first is let in, so that all
// have counted themselves as running before any can end the run.
bool isvrSaverWorkData::launchThreads(std::uint32_t threadCount) {
    Threads.resize(threadCount);
    bool any = false;
    for (std::uint32_t index = 0; index < threadCount; ++index) {
        auto thread =
            std::make_unique<isvrSaverThreadRenderer>(shared_from_this(), index, Setup, SharedHandle);
        thread->Priority = qvrCWorkerThread::PriorityBelowNormal;
        if (!thread->Init()) continue;
        Threads[index] = std::move(thread);
        any = true;
    }
    if (!any) {
        Threads.clear();
        return false;
    }
    for (const auto& thread : Threads)
        if (thread) thread->Start();
    return true;
}

// ---------------------------------------------------------------- stopping

bool isvrSaverWorkData::Stop() {
    if (Threads.empty()) return true;
    bool alive = false;
    for (auto& thread : Threads) {
        if (!thread) continue;
        thread->SignalStop();
        if (thread->WaitForEnd(10))
            thread.reset();
        else
            alive = true;
    }
    if (alive) return false;
    Threads.clear();
    releaseOutput();
    return true;
}

void isvrSaverWorkData::Kill(long seconds) {
    for (long attempt = 0; attempt <= seconds; ++attempt) {
        if (Stop()) return;
        qvrTrace("*** NOTE[isvrSaverWorkData::Kill()]: Not all threads are dead, waiting another 1 of %ld "
                 "seconds ...\n",
                 seconds);
        std::this_thread::sleep_for(std::chrono::milliseconds(KillRoundMs));
    }
    Threads.clear();
    markForcedEnd();
}

void isvrSaverWorkData::markForcedEnd() {
    {
        qvrCSingleLock state(StateLock);
        state.Lock();
        Finished = true;
        EndTime = Now();
    }
    releaseOutput();
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
    bool post = false;
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        if (success)
            ++Done;
        else
            ++Failed;
        --Remaining;
        post = Remaining % 4 == 0;
    }
    if (post) Window->PostMessage(isvrSaverRunWindow::MessageProgress);
}

void isvrSaverWorkData::ThreadStarted(unsigned) {
    bool first = false;
    {
        qvrCSingleLock state(StateLock);
        state.Lock();
        ++Running;
        if (!Started) {
            StartTime = Now();
            Started = true;
            first = true;
        }
    }
    if (first) Window->PostMessage(isvrSaverRunWindow::MessageStarted);
}

void isvrSaverWorkData::ThreadEnded(unsigned) {
    bool last = false;
    {
        qvrCSingleLock state(StateLock);
        state.Lock();
        if (Running != 0) --Running;
        if (Running == 0) {
            EndTime = Now();
            Finished = true;
            last = true;
        }
    }
    if (last) Window->PostMessage(isvrSaverRunWindow::MessageFinished);
}

void isvrSaverWorkData::GetCounts(std::uint32_t& total, std::uint32_t& done, std::uint32_t& failed,
                                  std::uint32_t& remaining) {
    qvrCSingleLock progress(ProgressLock);
    progress.Lock();
    total = Total;
    done = Done;
    failed = Failed;
    remaining = Remaining;
}

isvrSaverWorkData::TimesState isvrSaverWorkData::GetTimes(std::time_t& start, long& elapsed, long& remaining,
                                                          long& total) {
    qvrCSingleLock state(StateLock);
    state.Lock();
    if (!Started) return TimesNotStarted;
    const std::time_t end = Finished ? EndTime : Now();
    start = StartTime;
    elapsed = static_cast<long>(end - StartTime);
    std::uint32_t frameCount = 0;
    std::uint32_t done = 0;
    std::uint32_t failed = 0;
    std::uint32_t framesLeft = 0;
    GetCounts(frameCount, done, failed, framesLeft);
    const std::uint32_t finished = done + failed;
    remaining = finished == 0
                    ? 0
                    : static_cast<long>(static_cast<double>(framesLeft) *
                                        (static_cast<double>(elapsed) / static_cast<double>(finished)));
    total = elapsed + remaining;
    return Finished ? TimesFinished : TimesRunning;
}

void isvrSaverWorkData::Report(unsigned index, const std::string& text, int level) {
    Window->Report(index, text, level);
}
