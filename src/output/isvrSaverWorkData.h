#pragma once
// One render run of a standard saver: a fixed pool of render threads pulls
// frame numbers from one locked counter, renders each frame through the saver
// and writes it to the output. A movie gets exactly one thread, so its frames
// arrive in order; sequence frames finish in any order, each into a file of
// its own, all threads writing through one shared handle.
//
// The run talks to its window (the execution dialog's logic) only through
// isvrSaverRunWindow: posted messages and report lines, from any thread.
//
// Threads: Start, Stop and Kill belong to the owner's thread; NextFrame,
// FrameDone, ThreadStarted, ThreadEnded, GetCounts, GetTimes and Report are
// safe from any thread. The work data is made by Create and held by shared
// pointer, so that a render thread that has to be given up keeps what it uses;
// the owner calls Kill before it lets its reference go. The saver must
// outlive the run.

#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrGeometry.h"
#include "output/iSaverSetup.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

class EImageOutputHandle;
class EImageOutputSetup;
class EImageOutputStream;
class isvrSaver;
class isvrSaverThreadRenderer;

// The window of a run, as the render threads see it. Every call may come from
// any thread and must return at once.
class isvrSaverRunWindow {
public:
    enum Message : unsigned {
        MessageStarted = 0x401,  // the first thread has started
        MessageFinished = 0x402, // the last thread has ended
        MessageProgress = 0x403  // the counters changed
    };
    enum Level : int { LevelInformation = 0, LevelWarning = 1, LevelError = 2 };

    virtual ~isvrSaverRunWindow() = default;
    virtual void PostMessage(Message message) = 0;
    // A line of thread `index` (from 0).
    virtual void Report(unsigned index, const std::string& text, int level) = 0;
};

class isvrSaverWorkData : public std::enable_shared_from_this<isvrSaverWorkData> {
public:
    // Seconds of the wall clock; a test may put its own clock in place.
    using Clock = std::time_t (*)();

    static std::shared_ptr<isvrSaverWorkData> Create(isvrSaver& saver,
                                                     std::shared_ptr<isvrSaverRunWindow> window);
    // Ends a run that is still going (Kill(5)).
    ~isvrSaverWorkData();
    isvrSaverWorkData(const isvrSaverWorkData&) = delete;
    isvrSaverWorkData& operator=(const isvrSaverWorkData&) = delete;

    // Starts the threads for the frames first to last (inclusive) at the step.
    // False, with the reason in `errorText`, when the run could not start.
    bool Start(std::uint32_t threadCount, std::uint32_t first, std::uint32_t last, std::uint32_t step,
               std::uint32_t rate, std::uint32_t rateStep, bool stopOnError, bool replaceBadFrames,
               std::string& errorText);
    // The same with a saver's settings.
    bool Start(const iSaverSetup& setup, std::string& errorText);
    // Tells every thread to stop and collects those that have ended; true when none is left.
    bool Stop();
    // Stops the threads, trying for `seconds` + 1 seconds, then gives up those left.
    void Kill(long seconds);

    // The next frame to render; false when the range is used up.
    bool NextFrame(std::uint32_t& frame);
    void FrameDone(unsigned index, std::uint32_t frame, bool success);
    void ThreadStarted(unsigned index);
    void ThreadEnded(unsigned index);
    void GetCounts(std::uint32_t& total, std::uint32_t& done, std::uint32_t& failed,
                   std::uint32_t& remaining);
    enum TimesState : int { TimesNotStarted = 0, TimesRunning = 1, TimesFinished = 2 };
    // Start time, and elapsed, remaining and total seconds of the run.
    TimesState GetTimes(std::time_t& start, long& elapsed, long& remaining, long& total);
    void Report(unsigned index, const std::string& text, int level);

    // What the threads share, fixed by Start.
    CSize GetFrameSize() const { return FrameSize; }
    const std::string& GetFileName() const { return FileName; }
    const EImageOutputStream* GetStream() const { return Stream; }
    std::uint32_t GetRate() const { return Rate; }
    std::uint32_t GetRateStep() const { return RateStep; }
    bool GetStopOnError() const { return StopOnError; }
    bool GetReplaceBadFrames() const { return ReplaceBadFrames; }
    isvrSaver& GetSaver() const { return Saver; }
    // Threads in the pool; 0 when no run is going on.
    size_t GetThreadCount() const { return Threads.size(); }

    Clock Now;

private:
    isvrSaverWorkData(isvrSaver& saver, std::shared_ptr<isvrSaverRunWindow> window);

    // Steps of Start that may throw.
    void prepareRun(std::uint32_t& threadCount, std::uint32_t first, std::uint32_t last, std::uint32_t step);
    void openSharedHandle();
    bool launchThreads(std::uint32_t threadCount);
    // Ends a run whose threads were given up.
    void markForcedEnd();
    void releaseOutput();

    CSize FrameSize;
    std::string FileName;
    const EImageOutputStream* Stream = nullptr;
    // Shared with the threads, which keep them while they run.
    std::shared_ptr<EImageOutputSetup> Setup;
    std::shared_ptr<EImageOutputHandle> SharedHandle;
    std::uint32_t Last = 0;
    std::uint32_t Step = 1;
    std::uint32_t Rate = 25;
    std::uint32_t RateStep = 1;
    bool StopOnError = false;
    bool ReplaceBadFrames = false;
    isvrSaver& Saver;
    std::shared_ptr<isvrSaverRunWindow> Window;
    std::vector<std::unique_ptr<isvrSaverThreadRenderer>> Threads;

    qvrCCriticalSection StateLock; // the running count, the times and the two flags
    long Running = 0;
    std::time_t StartTime = 0;
    std::time_t EndTime = 0;
    bool Started = false;
    bool Finished = false;

    qvrCCriticalSection ProgressLock; // the counters and the next frame
    std::uint32_t Total = 0;
    std::uint32_t Done = 0;
    std::uint32_t Failed = 0;
    std::uint32_t Remaining = 0;
    std::uint32_t Next = 0;
};
