#pragma once
// What every saver's render run shares, whatever it renders: the pool of
// render threads with their stop and forced end, the state of the run (the
// threads inside their run, start and end time), the frame counters, and the
// window that the threads post to. A saver's own run derives from it, starts
// the threads and says what they share besides.
//
// Threads: Start, Stop and Kill belong to the owner's thread; ThreadStarted,
// ThreadEnded, GetCounts, GetTimes and Report are safe from any thread. The
// run is held by shared pointer, so that a render thread that has to be given
// up keeps what it uses; the owner calls Kill before it lets its reference go.

#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrSplitWork.h"
#include "output/iSaverSetup.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class iSaverThread;

// The window of a run, as the render threads see it. Every call may come from
// any thread and must return at once.
class isvrSaverRunWindow {
public:
    enum Message : unsigned {
        MessageStarted = 0x401,  // the first thread has started
        MessageFinished = 0x402, // the last thread has ended
        MessageProgress = 0x403, // the counters changed
        MessageProjector = 0x404 // a projector of an array changed its state or progress
    };
    enum Level : int { LevelInformation = 0, LevelWarning = 1, LevelError = 2 };

    virtual ~isvrSaverRunWindow() = default;
    virtual void PostMessage(Message message) = 0;
    // A line about `index` (from 0): a thread, or the projector of an array.
    virtual void Report(unsigned index, const std::string& text, int level) = 0;
};

class iSaverWorkData : public std::enable_shared_from_this<iSaverWorkData> {
public:
    // Seconds of the wall clock; a test may put its own clock in place.
    using Clock = std::time_t (*)();
    enum TimesState : int { TimesNotStarted = 0, TimesRunning = 1, TimesFinished = 2 };

    virtual ~iSaverWorkData();
    iSaverWorkData(const iSaverWorkData&) = delete;
    iSaverWorkData& operator=(const iSaverWorkData&) = delete;

    // Starts the threads for the frames first to last (inclusive) at the step.
    // False, with the reason in `errorText`, when the run could not start.
    virtual bool Start(std::uint32_t threadCount, std::uint32_t first, std::uint32_t last, std::uint32_t step,
                       std::uint32_t rate, std::uint32_t rateStep, bool stopOnError, bool replaceBadFrames,
                       std::string& errorText) = 0;
    // The same with a saver's settings: its range, rate, policies and thread count.
    bool Start(const iSaverSetup& setup, std::string& errorText);
    // Tells every thread to stop and collects those that have ended; true when none is left.
    bool Stop();
    // Stops the threads, trying for `seconds` + 1 seconds, then gives up those left.
    void Kill(long seconds);

    void ThreadStarted(unsigned index);
    void ThreadEnded(unsigned index);
    void GetCounts(std::uint32_t& total, std::uint32_t& done, std::uint32_t& failed,
                   std::uint32_t& remaining);
    // Counts a frame whose picture could not be written. A bad-frame policy
    // may count the frame itself as done; this count stays apart from it.
    void SaveFailed();
    std::uint32_t GetSaveFailures();
    // Start time, and elapsed, remaining and total seconds of the run.
    TimesState GetTimes(std::time_t& start, long& elapsed, long& remaining, long& total);
    void Report(unsigned index, const std::string& text, int level);

    // Threads in the pool; 0 when no run is going on.
    size_t GetThreadCount() const { return Threads.size(); }

    Clock Now;

protected:
    explicit iSaverWorkData(std::shared_ptr<isvrSaverRunWindow> window);

    // Clears the state of the run and sets the counters for `total` frames.
    void resetRun(std::uint32_t total);
    // Counts a frame as done or failed, and posts the progress at every fourth.
    void countFrame(bool success);
    // Launches the threads, each waiting before the first is let in, so that
    // all have counted themselves as running before any can end the run.
    // Threads that won't launch are dropped; false when none launched. The
    // run keeps to the cores it was given until its threads are gone.
    bool launchThreads(std::vector<std::unique_ptr<iSaverThread>> threads, std::uint32_t cores);
    // Lets go of the output that the threads shared, once they are all gone.
    virtual void releaseOutput() {}

    void post(isvrSaverRunWindow::Message message) { Window->PostMessage(message); }
    bool HasThreads() const { return !Threads.empty(); }

    qvrCCriticalSection ProgressLock; // the counters, and what a run hands out under them

private:
    // Ends a run whose threads were given up.
    void markForcedEnd();

    std::shared_ptr<isvrSaverRunWindow> Window;
    std::vector<std::unique_ptr<iSaverThread>> Threads;
    std::optional<qvrCoreLimit> CoreLimit;

    qvrCCriticalSection StateLock; // the running count, the times and the two flags
    long Running = 0;
    std::time_t StartTime = 0;
    std::time_t EndTime = 0;
    bool Started = false;
    bool Finished = false;

    std::uint32_t Total = 0;
    std::uint32_t Done = 0;
    std::uint32_t Failed = 0;
    std::uint32_t Remaining = 0;
    std::uint32_t SaveFailures = 0;
};
