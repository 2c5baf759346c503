#include "OutputProbes.h"

#include "output/isvrSaver.h"
#include "output/isvrSaverWorkData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <thread>

namespace {

// Collects what the threads post; tests wait here for the end of a run.
class RecordingWindow : public isvrSaverRunWindow {
public:
    void PostMessage(Message message) override {
        std::lock_guard lock(Guard);
        Messages.push_back(message);
        Changed.notify_all();
    }
    void Report(unsigned, const std::string& text, int level) override {
        std::lock_guard lock(Guard);
        Lines.push_back(std::to_string(level) + " " + text);
    }
    // Waits for the finished message; the limit only keeps a broken run from hanging the tests.
    bool WaitForFinish() {
        std::unique_lock lock(Guard);
        return Changed.wait_for(lock, std::chrono::seconds(60),
                                [this] { return count(MessageFinished) > 0; });
    }
    int Count(Message message) {
        std::lock_guard lock(Guard);
        return count(message);
    }
    bool HasLine(const std::string& line) {
        std::lock_guard lock(Guard);
        return std::find(Lines.begin(), Lines.end(), line) != Lines.end();
    }
    long CountLines(const std::string& line) {
        std::lock_guard lock(Guard);
        return std::count(Lines.begin(), Lines.end(), line);
    }

private:
    int count(Message message) const {
        return static_cast<int>(std::count(Messages.begin(), Messages.end(), message));
    }

    std::mutex Guard;
    std::condition_variable Changed;
    std::vector<Message> Messages;
    std::vector<std::string> Lines;
};

struct Counts {
    std::uint32_t Total = 0, Done = 0, Failed = 0, Remaining = 0;
};

std::atomic<std::time_t> fakeNow{1000};
std::time_t fakeClock() {
    return fakeNow.load();
}

class SaverRun : public ::testing::Test {
protected:
    SaverRun() {
        MemoryStream::TheSequence().Reset();
        MemoryStream::TheMovie().Reset();
        source.Size = {16, 12};
        saver.SetSize({16, 12});
        saver.SetFileName("frames.mem");
        saver.SetStream(&MemoryStream::TheSequence());
        saver.LinkParent(&source);
    }
    ~SaverRun() override {
        source.Gate.Set();
        work->Kill(5);
    }

    bool start(std::uint32_t threads, std::uint32_t first, std::uint32_t last, std::uint32_t step = 1,
               bool stopOnError = false, bool replace = false) {
        return work->Start(threads, first, last, step, 25, 1, stopOnError, replace, error);
    }
    // Runs to the end and collects the threads.
    void finish() {
        ASSERT_TRUE(window->WaitForFinish());
        EXPECT_TRUE(work->Stop());
    }
    Counts counts() {
        Counts c;
        work->GetCounts(c.Total, c.Done, c.Failed, c.Remaining);
        return c;
    }
    std::set<long> written() { return MemoryStream::TheSequence().GetFramesWritten(); }
    std::uint32_t writtenColour(long frame) {
        for (const auto& [index, colour] : MemoryStream::TheSequence().GetWrites())
            if (index == frame) return colour;
        return 0xDEADBEEF;
    }

    FrameSource source{"Source"};
    isvrSaver saver{"Saver"};
    std::shared_ptr<RecordingWindow> window = std::make_shared<RecordingWindow>();
    std::shared_ptr<isvrSaverWorkData> work = isvrSaverWorkData::Create(saver, window);
    std::string error;
};

} // namespace

TEST_F(SaverRun, FramesFollowTheStepAndEachIsWrittenOnce) {
    ASSERT_TRUE(start(2, 0, 10, 3)) << error;
    EXPECT_EQ(work->GetThreadCount(), 2u);
    finish();
    EXPECT_EQ(written(), (std::set<long>{0, 3, 6, 9}));
    EXPECT_EQ(MemoryStream::TheSequence().GetWrites().size(), 4u);
    EXPECT_EQ(writtenColour(6), FrameSource::ColourOf(6));
    const Counts c = counts();
    EXPECT_EQ(c.Total, 4u);
    EXPECT_EQ(c.Done, 4u);
    EXPECT_EQ(c.Remaining, 0u);
    EXPECT_EQ(window->Count(isvrSaverRunWindow::MessageStarted), 1);
    EXPECT_EQ(window->Count(isvrSaverRunWindow::MessageFinished), 1);
    EXPECT_EQ(window->Count(isvrSaverRunWindow::MessageProgress), 1);
    EXPECT_TRUE(window->HasLine("0 Rendering frame 9."));
    EXPECT_TRUE(window->HasLine("0 Saving frame 9."));
    EXPECT_EQ(MemoryStream::TheSequence().GetOpens(), 1);
}

TEST_F(SaverRun, SpareThreadsFindNoFrameAndTheRunEndsNormally) {
    ASSERT_TRUE(start(4, 5, 6)) << error;
    EXPECT_EQ(work->GetThreadCount(), 4u);
    finish();
    EXPECT_EQ(written(), (std::set<long>{5, 6}));
    EXPECT_EQ(counts().Done, 2u);
    EXPECT_EQ(window->Count(isvrSaverRunWindow::MessageFinished), 1);
    EXPECT_EQ(work->GetThreadCount(), 0u);
}

TEST_F(SaverRun, AMovieGetsOneThreadAndItsFramesInOrder) {
    saver.SetStream(&MemoryStream::TheMovie());
    ASSERT_TRUE(start(4, 0, 20)) << error;
    EXPECT_EQ(work->GetThreadCount(), 1u);
    finish();
    const auto writes = MemoryStream::TheMovie().GetWrites();
    ASSERT_EQ(writes.size(), 21u);
    for (size_t i = 0; i < writes.size(); ++i)
        EXPECT_EQ(writes[i].first, static_cast<long>(i));
    EXPECT_EQ(MemoryStream::TheMovie().GetOpens(), 1);
}

// One thread over frames 0 to 5, so that the frames after a stop stay unrendered.
TEST_F(SaverRun, BadFramesAreStoppedOnSkippedOrReplacedAsTheRunSays) {
    struct PolicyCase {
        const char* Name;
        std::set<long> Failing;
        long Code;
        bool StopOnError;
        bool Replace;
        std::set<long> Written;
        std::uint32_t Done, Failed, Remaining;
        const char* Line;
    };
    const PolicyCase cases[] = {
        {"stop",
         {2},
         render_failed,
         true,
         false,
         {0, 1},
         2,
         1,
         3,
         "2 Failed to render frame 2: Probe failure."},
        {"skip",
         {2, 4},
         render_failed,
         false,
         false,
         {0, 1, 3, 5},
         4,
         2,
         0,
         "2 Failed to render frame 4: Probe failure - skipping frame"},
        {"replace",
         {0, 2},
         render_failed,
         false,
         true,
         {0, 1, 2, 3, 4, 5},
         6,
         0,
         0,
         "2 Failed to render frame 2: Probe failure - using previous frame"},
        {"negative code",
         {2},
         render_out_of_memory,
         false,
         true,
         {0, 1},
         2,
         1,
         3,
         "2 Failed to render frame 2: Probe failure."},
    };
    for (const PolicyCase& policy : cases) {
        SCOPED_TRACE(policy.Name);
        MemoryStream::TheSequence().Reset();
        source.FailingFrames = policy.Failing;
        source.FailCode = policy.Code;
        window = std::make_shared<RecordingWindow>();
        work = isvrSaverWorkData::Create(saver, window);
        ASSERT_TRUE(start(1, 0, 5, 1, policy.StopOnError, policy.Replace)) << error;
        finish();
        EXPECT_EQ(written(), policy.Written);
        const Counts c = counts();
        EXPECT_EQ(c.Done, policy.Done);
        EXPECT_EQ(c.Failed, policy.Failed);
        EXPECT_EQ(c.Remaining, policy.Remaining);
        EXPECT_TRUE(window->HasLine(policy.Line));
    }
}

TEST_F(SaverRun, AReplacedFirstFrameIsBlankAndLaterOnesRepeatTheFrameBefore) {
    source.FailingFrames = {0, 2};
    ASSERT_TRUE(start(1, 0, 3, 1, false, true)) << error;
    finish();
    EXPECT_EQ(writtenColour(0), 0u);
    EXPECT_EQ(writtenColour(2), FrameSource::ColourOf(1));
}

TEST_F(SaverRun, ASaveFailureWithErrorsIgnoredStillCountsAsDone) {
    MemoryStream::TheSequence().FailWriteOf(3);
    ASSERT_TRUE(start(2, 0, 5)) << error;
    finish();
    EXPECT_EQ(written(), (std::set<long>{0, 1, 2, 4, 5}));
    EXPECT_EQ(counts().Done, 6u);
    EXPECT_EQ(counts().Failed, 0u);
    EXPECT_EQ(work->GetSaveFailures(), 1u) << "the failed save is counted apart";
    EXPECT_TRUE(window->HasLine("2 Failed to save frame 3 to \"frames.mem\": disk full: No space left on device."));
}

TEST_F(SaverRun, ASaveFailureStopsTheThreadWhenErrorsStop) {
    MemoryStream::TheSequence().FailWriteOf(1);
    ASSERT_TRUE(start(1, 0, 5, 1, true)) << error;
    finish();
    EXPECT_EQ(written(), (std::set<long>{0}));
    EXPECT_EQ(counts().Failed, 1u);
}

TEST_F(SaverRun, NotesOfTheRenderBecomeWarnings) {
    source.Note = "late footage";
    ASSERT_TRUE(start(1, 7, 7)) << error;
    finish();
    EXPECT_TRUE(window->HasLine("1 Frame 7: late footage !"));
}

TEST_F(SaverRun, UnusableSettingsDoNotStart) {
    EXPECT_FALSE(start(1, 5, 4));
    EXPECT_EQ(error, "Invalid setup");
    EXPECT_FALSE(start(1, 0, 4, 0));
    EXPECT_FALSE(work->Start(1, 0, 4, 1, 0, 1, false, false, error));
    saver.SetFileName("");
    EXPECT_FALSE(start(1, 0, 4));
    EXPECT_EQ(error, "Invalid setup");
    saver.SetStream(nullptr);
    EXPECT_FALSE(start(1, 0, 4));
    EXPECT_EQ(error, "No output stream.");
    EXPECT_EQ(work->GetThreadCount(), 0u);
}

TEST_F(SaverRun, ASecondStartWaitsUntilTheThreadsAreGone) {
    source.Gate.Reset();
    ASSERT_TRUE(start(1, 0, 3)) << error;
    EXPECT_FALSE(start(1, 0, 3));
    EXPECT_EQ(error, "Invalid setup");
    source.Gate.Set();
    finish();
    MemoryStream::TheSequence().Reset();
    EXPECT_TRUE(start(1, 0, 3)) << error;
}

TEST_F(SaverRun, AnOutputThatWontOpenStopsTheRunOrTheThread) {
    MemoryStream::TheSequence().FailOpens();
    EXPECT_FALSE(start(2, 0, 3));
    EXPECT_EQ(error, "Failed to initialize and start threads: frames.mem: Permission denied");
    EXPECT_EQ(work->GetThreadCount(), 0u);

    saver.SetStream(&MemoryStream::TheMovie());
    MemoryStream::TheMovie().FailOpens();
    ASSERT_TRUE(start(2, 0, 3)) << error;
    finish();
    EXPECT_TRUE(window->HasLine("2 Failed to open stream: frames.mem: Permission denied."));
    EXPECT_EQ(counts().Remaining, 4u);
}

TEST_F(SaverRun, AStopEndsEveryThreadAfterItsFrame) {
    source.Gate.Reset();
    ASSERT_TRUE(start(2, 0, 100)) << error;
    while (source.RendersStarted < 2)
        std::this_thread::yield();
    EXPECT_FALSE(work->Stop());
    source.Gate.Set();
    ASSERT_TRUE(window->WaitForFinish());
    EXPECT_TRUE(work->Stop());
    EXPECT_EQ(window->CountLines("2 Aborted."), 2);
    const Counts c = counts();
    EXPECT_EQ(c.Failed, 2u);
    EXPECT_EQ(c.Done, 0u);
    EXPECT_TRUE(written().empty());
}

TEST_F(SaverRun, KillGivesUpAThreadThatDoesNotStop) {
    source.Gate.Reset();
    ASSERT_TRUE(start(1, 0, 3)) << error;
    while (source.RendersStarted < 1)
        std::this_thread::yield();
    work->Kill(0);
    EXPECT_EQ(work->GetThreadCount(), 0u);
    std::time_t start = 0;
    long elapsed = 0, remaining = 0, total = 0;
    EXPECT_EQ(work->GetTimes(start, elapsed, remaining, total), isvrSaverWorkData::TimesFinished);
    // The thread that was given up ends by itself once its render returns.
    source.Gate.Set();
    while (work.use_count() > 1)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(window->HasLine("2 Aborted."));
}

TEST_F(SaverRun, TimesEstimateTheRestFromTheFramesSoFar) {
    work->Now = &fakeClock;
    std::time_t started = 0;
    long elapsed = 0, remaining = 0, total = 0;
    EXPECT_EQ(work->GetTimes(started, elapsed, remaining, total), isvrSaverWorkData::TimesNotStarted);
    fakeNow = 1000;
    source.Gate.Reset();
    ASSERT_TRUE(start(1, 0, 5)) << error;
    EXPECT_EQ(work->GetTimes(started, elapsed, remaining, total), isvrSaverWorkData::TimesRunning);
    EXPECT_EQ(started, 1000);
    EXPECT_EQ(remaining, 0);
    // Two frames in 9 seconds leave four frames of 4.5 seconds each.
    work->FrameDone(0, 100, true);
    work->FrameDone(0, 101, false);
    fakeNow = 1009;
    EXPECT_EQ(work->GetTimes(started, elapsed, remaining, total), isvrSaverWorkData::TimesRunning);
    EXPECT_EQ(elapsed, 9);
    EXPECT_EQ(remaining, 18);
    EXPECT_EQ(total, 27);
    EXPECT_FALSE(work->Stop());
    source.Gate.Set();
    ASSERT_TRUE(window->WaitForFinish());
    fakeNow = 2000;
    EXPECT_EQ(work->GetTimes(started, elapsed, remaining, total), isvrSaverWorkData::TimesFinished);
    EXPECT_EQ(elapsed, 9);
}
