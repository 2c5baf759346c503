#include "output/iSaverWorkData.h"

#include "foundation/qvrTrace.h"
#include "output/iSaverThread.h"

#include <chrono>
#include <thread>

namespace {

constexpr unsigned long KillRoundMs = 1000;

std::time_t wallClock() {
    return std::time(nullptr);
}

} // namespace

iSaverWorkData::iSaverWorkData(std::shared_ptr<isvrSaverRunWindow> window)
    : Now(&wallClock), Window(std::move(window)) {}

iSaverWorkData::~iSaverWorkData() = default;

// ---------------------------------------------------------------- starting

void iSaverWorkData::resetRun(std::uint32_t total) {
    {
        qvrCSingleLock state(StateLock);
        state.Lock();
        Started = false;
        Finished = false;
        Running = 0;
    }
    qvrCSingleLock progress(ProgressLock);
    progress.Lock();
    Total = total;
    Done = 0;
    Failed = 0;
    SaveFailures = 0;
    Remaining = total;
}

bool iSaverWorkData::launchThreads(std::vector<std::unique_ptr<iSaverThread>> threads, std::uint32_t cores) {
    Threads = std::move(threads);
    CoreLimit.emplace(static_cast<long>(cores));
    bool any = false;
    for (auto& thread : Threads) {
        thread->Priority = qvrCWorkerThread::PriorityBelowNormal;
        if (thread->Init())
            any = true;
        else
            thread.reset();
    }
    if (!any) {
        Threads.clear();
        CoreLimit.reset();
        return false;
    }
    for (const auto& thread : Threads)
        if (thread) thread->Start();
    return true;
}

// ---------------------------------------------------------------- stopping

bool iSaverWorkData::Start(const iSaverSetup& setup, std::string& errorText) {
    return Start(setup.MiscThreadCnt, setup.VideoStart, setup.VideoEnd, setup.VideoSteps, setup.VideoFPS,
                 setup.VideoRes, !setup.ErrorsIgnore, setup.ErrorsReplaceBadFrames, errorText);
}

bool iSaverWorkData::Stop() {
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
    CoreLimit.reset();
    releaseOutput();
    return true;
}

void iSaverWorkData::Kill(long seconds) {
    for (long attempt = 0; attempt <= seconds; ++attempt) {
        if (Stop()) return;
        qvrTrace("*** NOTE[isvrSaverWorkData::Kill()]: Not all threads are dead, waiting another 1 of %ld "
                 "seconds ...\n",
                 seconds);
        std::this_thread::sleep_for(std::chrono::milliseconds(KillRoundMs));
    }
    Threads.clear();
    CoreLimit.reset();
    markForcedEnd();
}

void iSaverWorkData::markForcedEnd() {
    {
        qvrCSingleLock state(StateLock);
        state.Lock();
        Finished = true;
        EndTime = Now();
    }
    releaseOutput();
}

// ---------------------------------------------------------------- the threads' side

void iSaverWorkData::countFrame(bool success) {
    bool postProgress = false;
    {
        qvrCSingleLock progress(ProgressLock);
        progress.Lock();
        if (success)
            ++Done;
        else
            ++Failed;
        --Remaining;
        postProgress = Remaining % 4 == 0;
    }
    if (postProgress) post(isvrSaverRunWindow::MessageProgress);
}

void iSaverWorkData::ThreadStarted(unsigned) {
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
    if (first) post(isvrSaverRunWindow::MessageStarted);
}

void iSaverWorkData::ThreadEnded(unsigned) {
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
    if (last) post(isvrSaverRunWindow::MessageFinished);
}

void iSaverWorkData::GetCounts(std::uint32_t& total, std::uint32_t& done, std::uint32_t& failed,
                               std::uint32_t& remaining) {
    qvrCSingleLock progress(ProgressLock);
    progress.Lock();
    total = Total;
    done = Done;
    failed = Failed;
    remaining = Remaining;
}

void iSaverWorkData::SaveFailed() {
    qvrCSingleLock progress(ProgressLock);
    progress.Lock();
    ++SaveFailures;
}

std::uint32_t iSaverWorkData::GetSaveFailures() {
    qvrCSingleLock progress(ProgressLock);
    progress.Lock();
    return SaveFailures;
}

iSaverWorkData::TimesState iSaverWorkData::GetTimes(std::time_t& start, long& elapsed, long& remaining,
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

void iSaverWorkData::Report(unsigned index, const std::string& text, int level) {
    Window->Report(index, text, level);
}
