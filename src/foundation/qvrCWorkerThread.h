#pragma once
// A worker thread with a defined start handshake and a stop that cannot hang.
// Init starts the thread and returns once its InitThreadData has run; the
// thread then waits until Start lets it into DoWork, or until it is stopped.
// The thread raises an optional access counter for its whole life; the
// counter must stay alive until Kill or Destroy has returned.
//
// Threads: Init, Start, Kill, Destroy and IsAlive belong to the owner's
// thread; Stop, IsStopping and GetState may be used from any thread. The
// overrides run in the worker thread, OnInitThread and OnThreadDestroyed in
// the owner's.
//
// A thread cannot be ended by force. One that does not return in time from
// Kill or Destroy is detached and runs on unseen; from then on the thread
// itself touches only its shared control block, never this object or the
// access counter. The override it is stuck in must keep every datum it still
// uses by shared ownership (copy the shared pointers into locals before it
// starts waiting), because the object may be destroyed under it.
//
// The destructor destroys the thread, but by then the overrides of a derived
// class are gone: a derived class calls Destroy in its own destructor.

#include "foundation/qvrCAccessCounter.h"
#include "foundation/qvrCSyncObjects.h"

#include <atomic>
#include <memory>
#include <pthread.h>

class qvrCWorkerThread {
public:
    enum class ThreadState : int {
        Idle = 0,         // no thread
        Initializing = 1, // InitThreadData running
        WaitingForStart = 2,
        Working = 3, // DoWork running
        CleaningUp = 4,
        Ended = 5
    };
    // Priorities relative to the owner's; each step down is one more nice level.
    static constexpr int PriorityNormal = 0;
    static constexpr int PriorityBelowNormal = -1;

    qvrCWorkerThread() = default;
    virtual ~qvrCWorkerThread();
    qvrCWorkerThread(const qvrCWorkerThread&) = delete;
    qvrCWorkerThread& operator=(const qvrCWorkerThread&) = delete;

    // Runs in the caller's thread before the thread is made; false refuses the start.
    virtual bool OnInitThread() { return true; }
    // Runs in the caller's thread once the thread has been destroyed.
    virtual void OnThreadDestroyed() {}
    // The first thing the new thread does; false ends it.
    virtual bool InitThreadData() { return true; }
    // The work. A thread stopped before its start still comes here, so it tests
    // IsStopping() first, and again as often as it can.
    virtual void DoWork() = 0;
    // The last thing the thread does. Destroy calls it again from the owner's
    // thread when it had to stop a live thread, so it must be safe to run twice.
    virtual void ExitThreadData() {}

    // Starts the thread and waits for its handshake; true when InitThreadData
    // succeeded and the thread waits for Start. `accessCounter` may be 0.
    bool Init(qvrCAccessCounter* accessCounter = nullptr);
    // Lets a thread that waits for its start into DoWork.
    void Start();
    // Asks the thread to end.
    void Stop();
    // Stops the thread in up to 10 rounds of `waitMs` (at least 100 ms) each.
    // With `hard`, a thread still running after that is detached. True when the
    // thread has ended.
    bool Kill(unsigned long waitMs, bool hard);
    // Kills a live thread with `waitMs`, then lets the object be started again.
    void Destroy(unsigned long waitMs);

    bool IsAlive() const;
    // Waits up to `waitMs` for the thread to have left its last step; true when it has.
    bool WaitForThreadEnd(unsigned long waitMs) { return waitForEnd(waitMs); }
    bool IsStopping() const { return StopEvent.IsSet(); }
    ThreadState GetState() const { return State; }
    bool GetInitOk() const { return InitOk; }

    // Set before Init. 0 takes the platform's stack size.
    unsigned StackSize = 0;
    int Priority = PriorityNormal;

private:
    struct Control;
    struct Launch;

    static void* threadMain(void* launch);
    void run(Control& control);
    // False when the thread was given up during DoWork.
    bool waitAndWork(Control& control);
    void waitForWork();
    bool createThread();
    bool waitForStarted();
    bool waitForEnd(unsigned long waitMs);
    bool waitForEndInRounds(unsigned long waitMs, int rounds);
    bool terminate();
    void joinThread();

    qvrCEvent StartedEvent;
    qvrCAccessCounter* AccessCounter = nullptr;
    qvrCEvent StopEvent;
    qvrCEvent WorkEvent;
    std::atomic<ThreadState> State{ThreadState::Idle};
    std::atomic<bool> InitOk{false};

    // The thread and the block it shares with it; no thread when ThreadControl is empty.
    pthread_t Thread{};
    std::shared_ptr<Control> ThreadControl;
};
