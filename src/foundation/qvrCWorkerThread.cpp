#include "foundation/qvrCWorkerThread.h"

#include "foundation/qvrCSafeLock.h"
#include "foundation/qvrTrace.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <mutex>
#include <sys/resource.h>
#include <unistd.h>

// What the owner and the thread share. It outlives both: the thread holds it
// to its last instruction, so an owner that gave the thread up may go away.
struct qvrCWorkerThread::Control {
    std::mutex Guard;
    std::condition_variable Changed;
    bool InOverride = false; // the thread runs code of a derived class
    bool Abandoned = false;  // the owner gave the thread up and may be gone
    bool Ended = false;

    void EnterOverride() {
        std::lock_guard lock(Guard);
        InOverride = true;
        Changed.notify_all();
    }
    // False when the owner gave the thread up meanwhile.
    bool LeaveOverride() {
        std::lock_guard lock(Guard);
        InOverride = false;
        return !Abandoned;
    }
    void MarkEnded() {
        std::lock_guard lock(Guard);
        Ended = true;
        Changed.notify_all();
    }
    bool HasEnded() {
        std::lock_guard lock(Guard);
        return Ended;
    }
    bool WaitForEnd(unsigned long waitMs) {
        std::unique_lock lock(Guard);
        return Changed.wait_for(lock, std::chrono::milliseconds(waitMs), [this] { return Ended; });
    }
    // The thread's own code always runs on into an override or to its end;
    // only inside an override can it be given up. True when it was.
    bool Abandon() {
        std::unique_lock lock(Guard);
        Changed.wait(lock, [this] { return InOverride || Ended; });
        Abandoned = !Ended;
        return Abandoned;
    }
};

// Handed to the new thread, which deletes it.
struct qvrCWorkerThread::Launch {
    qvrCWorkerThread* Worker;
    std::shared_ptr<Control> Shared;
    int Priority;
};

namespace {

constexpr int killRounds = 10;
constexpr unsigned long minKillWaitMs = 100;
constexpr unsigned long startRoundMs = 4000;
constexpr int startRounds = 10;
constexpr int endRoundsAfterFailedStart = 11;

// Each step of priority below normal is one nice level more for this thread.
// A change the system refuses leaves the thread as it is.
void applyPriority(int priority) {
    if (priority == qvrCWorkerThread::PriorityNormal) return;
    const pid_t thread = gettid();
    errno = 0;
    const int nice = getpriority(PRIO_PROCESS, thread);
    if (errno != 0) return;
    setpriority(PRIO_PROCESS, thread, nice - priority);
}

// Runs an override of a derived class; false when the thread was given up
// while it ran, and must not touch its owner any more.
template <typename ControlBlock, typename Call> bool runOverride(ControlBlock& control, Call call) {
    control.EnterOverride();
    call();
    return control.LeaveOverride();
}

} // namespace

qvrCWorkerThread::~qvrCWorkerThread() {
    Destroy(2000);
}

void* qvrCWorkerThread::threadMain(void* launchData) {
    std::unique_ptr<Launch> launch(static_cast<Launch*>(launchData));
    applyPriority(launch->Priority);
    launch->Worker->run(*launch->Shared);
    launch->Shared->MarkEnded();
    return nullptr;
}

void qvrCWorkerThread::run(Control& control) {
    State = ThreadState::Initializing;
    bool initOk = false;
    if (!runOverride(control, [&] { initOk = InitThreadData(); })) return;
    InitOk = initOk;
    if (InitOk && AccessCounter && !AccessCounter->Raise(qvrInfinite, &StopEvent)) {
        AccessCounter = nullptr;
        InitOk = false;
        qvrTrace("*** ERROR[qvrCWorkerThread::InitInstance()]: Failed to raise thread access counter !\n");
    }
    if (InitOk && !waitAndWork(control)) return;
    if (AccessCounter) AccessCounter->Lower();
    // A starter that still waits is released.
    StartedEvent.Set();
    if (!runOverride(control, [this] { ExitThreadData(); })) return;
    State = ThreadState::Ended;
}

bool qvrCWorkerThread::waitAndWork(Control& control) {
    State = ThreadState::WaitingForStart;
    StartedEvent.Set();
    waitForWork();
    State = ThreadState::Working;
    if (!runOverride(control, [this] { DoWork(); })) return false;
    State = ThreadState::CleaningUp;
    return true;
}

// Stop signals the work right after the stop, so a wait that sees the stop
// first only has to wait for the work to follow: a stopped thread always
// enters DoWork and finds IsStopping() true there. The wait holds nothing once
// it is over, so that a thread given up in DoWork has nothing to give back.
void qvrCWorkerThread::waitForWork() {
    qvrCSafeLock work(&WorkEvent, &StopEvent);
    if (!work.Lock()) WorkEvent.Lock();
}

bool qvrCWorkerThread::Init(qvrCAccessCounter* accessCounter) {
    if (State != ThreadState::Idle) return false;
    InitOk = false;
    AccessCounter = accessCounter;
    if (!OnInitThread()) return false;
    StartedEvent.Reset();
    StopEvent.Reset();
    WorkEvent.Reset();
    if (!createThread()) {
        qvrTrace("*** ERROR[qvrCWorkerThread::Init()]: Failed to create thread.\n");
        return false;
    }
    if (!waitForStarted()) {
        terminate();
        InitOk = false;
    }
    if (!InitOk && ThreadControl) {
        StopEvent.Set();
        if (!waitForEndInRounds(startRoundMs, endRoundsAfterFailedStart)) terminate();
    }
    return InitOk;
}

bool qvrCWorkerThread::createThread() {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    if (StackSize > 0) {
        pthread_attr_setstacksize(&attributes, std::max<size_t>(StackSize, PTHREAD_STACK_MIN));
    }
    auto control = std::make_shared<Control>();
    auto launch = std::make_unique<Launch>(Launch{this, control, Priority});
    const int result = pthread_create(&Thread, &attributes, &threadMain, launch.get());
    pthread_attr_destroy(&attributes);
    if (result != 0) return false;
    launch.release(); // the thread owns it now
    ThreadControl = std::move(control);
    return true;
}

bool qvrCWorkerThread::waitForStarted() {
    for (int round = 1; !StartedEvent.Lock(startRoundMs); ++round) {
        if (round > startRounds) return false;
    }
    return true;
}

void qvrCWorkerThread::Start() {
    if (InitOk && State == ThreadState::WaitingForStart) WorkEvent.Set();
}

void qvrCWorkerThread::Stop() {
    StopEvent.Set();
    WorkEvent.Set();
}

bool qvrCWorkerThread::Kill(unsigned long waitMs, bool hard) {
    waitMs = std::max(waitMs, minKillWaitMs);
    bool ended = !ThreadControl;
    for (int round = 0; round < killRounds && !ended; ++round) {
        Stop();
        ended = waitForEnd(waitMs);
    }
    if (!ended && hard) {
        ended = !terminate();
        qvrTrace("*** WARNING[qvrCWorkerThread::Kill()]: Thread did not savely return past %ld ms and 10 "
                 "retries.\n",
                 static_cast<long>(waitMs));
    }
    if (ended) State = ThreadState::Idle;
    return ended;
}

void qvrCWorkerThread::Destroy(unsigned long waitMs) {
    if (IsAlive()) {
        Kill(waitMs, true);
        ExitThreadData();
    }
    if (ThreadControl) joinThread();
    OnThreadDestroyed();
    State = ThreadState::Idle;
}

bool qvrCWorkerThread::IsAlive() const {
    return ThreadControl && !ThreadControl->HasEnded();
}

bool qvrCWorkerThread::waitForEnd(unsigned long waitMs) {
    if (!ThreadControl) return true;
    if (!ThreadControl->WaitForEnd(waitMs)) return false;
    joinThread();
    return true;
}

bool qvrCWorkerThread::waitForEndInRounds(unsigned long waitMs, int rounds) {
    for (int round = 0; round < rounds; ++round) {
        if (waitForEnd(waitMs)) return true;
    }
    return false;
}

// Stands in for forced termination: a thread stuck in an override is detached
// and left to itself. True when it was; false when it ended after all.
bool qvrCWorkerThread::terminate() {
    const bool abandoned = ThreadControl->Abandon();
    if (abandoned) {
        pthread_detach(Thread);
        ThreadControl.reset();
    } else {
        joinThread();
    }
    State = ThreadState::Idle;
    return abandoned;
}

void qvrCWorkerThread::joinThread() {
    pthread_join(Thread, nullptr);
    ThreadControl.reset();
}
