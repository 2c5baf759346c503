#include "foundation/qvrCWorkerThread.h"

#include "TraceCapture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// A worker that records what ran. DoWork waits on `release` when told to
// ignore stops; the events are shared, so the work can outlive the object.
class RecordingWorker : public qvrCWorkerThread {
public:
    ~RecordingWorker() override { Destroy(2000); }

    bool OnInitThread() override { return AllowStart; }
    void OnThreadDestroyed() override { ++Destroyed; }
    bool InitThreadData() override {
        errno = 0;
        Nice = getpriority(PRIO_PROCESS, gettid());
        return InitResult;
    }
    void DoWork() override {
        SawStopAtStart = IsStopping();
        auto release = Release;
        auto worked = Worked;
        worked->Set();
        if (IgnoreStop) release->Lock();
    }
    void ExitThreadData() override { ++Exits; }

    bool AllowStart = true;
    bool InitResult = true;
    bool IgnoreStop = false;
    std::atomic<int> Nice{0};
    std::atomic<bool> SawStopAtStart{false};
    std::atomic<int> Exits{0};
    int Destroyed = 0;
    std::shared_ptr<qvrCEvent> Worked = std::make_shared<qvrCEvent>();
    std::shared_ptr<qvrCEvent> Release = std::make_shared<qvrCEvent>();
};

using State = qvrCWorkerThread::ThreadState;

} // namespace

TEST(WorkerThread, InitWaitsForTheHandshakeAndStartRunsTheWork) {
    RecordingWorker worker;
    ASSERT_TRUE(worker.Init());
    EXPECT_EQ(worker.GetState(), State::WaitingForStart);
    EXPECT_TRUE(worker.IsAlive());
    EXPECT_FALSE(worker.Worked->IsSet());
    worker.Start();
    ASSERT_TRUE(worker.Worked->Lock());
    EXPECT_TRUE(worker.Kill(100, false));
    EXPECT_FALSE(worker.IsAlive());
    EXPECT_EQ(worker.GetState(), State::Idle);
    EXPECT_FALSE(worker.SawStopAtStart);
    EXPECT_EQ(worker.Exits, 1);
}

TEST(WorkerThread, ThreadStoppedBeforeItsStartStillEntersTheWork) {
    RecordingWorker worker;
    ASSERT_TRUE(worker.Init());
    worker.Stop();
    EXPECT_TRUE(worker.IsStopping());
    EXPECT_TRUE(worker.Kill(100, false));
    EXPECT_TRUE(worker.Worked->IsSet());
    EXPECT_TRUE(worker.SawStopAtStart);
}

TEST(WorkerThread, FailedStartsEndCleanlyWithoutWork) {
    RecordingWorker refused;
    refused.AllowStart = false;
    EXPECT_FALSE(refused.Init());
    EXPECT_FALSE(refused.IsAlive());

    RecordingWorker failing;
    failing.InitResult = false;
    EXPECT_FALSE(failing.Init());
    EXPECT_FALSE(failing.GetInitOk());
    EXPECT_FALSE(failing.IsAlive());
    EXPECT_EQ(failing.GetState(), State::Ended);
    EXPECT_EQ(failing.Exits, 1);
    EXPECT_FALSE(failing.Worked->IsSet());
}

TEST(WorkerThread, AccessCounterIsRaisedForTheThreadsWholeLife) {
    qvrCAccessCounter counter;
    RecordingWorker worker;
    ASSERT_TRUE(worker.Init(&counter));
    EXPECT_EQ(counter.GetCounter(), 1);
    EXPECT_FALSE(counter.Alloc(0));
    EXPECT_TRUE(worker.Kill(100, false));
    EXPECT_EQ(counter.GetCounter(), 0);
}

TEST(WorkerThread, ExclusivelyHeldCounterRefusesTheStart) {
    TraceCapture trace;
    qvrCAccessCounter counter;
    ASSERT_TRUE(counter.Alloc());
    RecordingWorker worker;
    EXPECT_FALSE(worker.Init(&counter));
    EXPECT_TRUE(trace.Contains(
        "*** ERROR[qvrCWorkerThread::InitInstance()]: Failed to raise thread access counter !\n"));
    EXPECT_EQ(counter.GetCounter(), -1);
}

TEST(WorkerThread, InitIsRefusedUntilTheThreadIsDestroyed) {
    RecordingWorker worker;
    ASSERT_TRUE(worker.Init());
    EXPECT_FALSE(worker.Init());
    worker.Destroy(100);
    EXPECT_EQ(worker.Destroyed, 1);
    EXPECT_EQ(worker.Exits, 2) << "Destroy cleans up again after a live thread";
    EXPECT_EQ(worker.GetState(), State::Idle);
    EXPECT_TRUE(worker.Init());
}

TEST(WorkerThread, BelowNormalPriorityIsOneMoreNiceLevel) {
    errno = 0;
    const int ownNice = getpriority(PRIO_PROCESS, gettid());
    ASSERT_EQ(errno, 0);
    RecordingWorker worker;
    worker.Priority = qvrCWorkerThread::PriorityBelowNormal;
    worker.StackSize = 256 * 1024;
    ASSERT_TRUE(worker.Init());
    EXPECT_EQ(worker.Nice, std::min(ownNice + 1, 19));
}

TEST(WorkerThread, ThreadIgnoringStopsIsGivenUpAfterTenRounds) {
    TraceCapture trace;
    RecordingWorker worker;
    worker.IgnoreStop = true;
    auto worked = worker.Worked;
    auto release = worker.Release;
    ASSERT_TRUE(worker.Init());
    worker.Start();
    ASSERT_TRUE(worked->Lock());

    EXPECT_FALSE(worker.Kill(0, false));
    EXPECT_TRUE(worker.IsAlive());
    EXPECT_TRUE(trace.Get().empty());

    EXPECT_FALSE(worker.Kill(0, true));
    EXPECT_FALSE(worker.IsAlive());
    EXPECT_EQ(worker.GetState(), State::Idle);
    EXPECT_TRUE(trace.Contains(
        "*** WARNING[qvrCWorkerThread::Kill()]: Thread did not savely return past 100 ms and 10 retries.\n"));
    release->Set();
}
