#include "foundation/qvrCAccessCounter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

template <typename Body> bool onOtherThread(Body body) {
    bool result = false;
    std::thread([&] { result = body(); }).join();
    return result;
}

} // namespace

TEST(AccessCounter, SharedHoldersCountUpAndLoweringStopsAtZero) {
    qvrCAccessCounter counter;
    EXPECT_TRUE(counter.IsSet());
    ASSERT_TRUE(counter.Raise());
    ASSERT_TRUE(counter.Raise());
    EXPECT_EQ(counter.GetCounter(), 2);
    EXPECT_FALSE(counter.IsSet());
    EXPECT_TRUE(counter.Lower());
    EXPECT_FALSE(counter.IsSet());
    EXPECT_TRUE(counter.Lower());
    EXPECT_TRUE(counter.IsSet());
    EXPECT_TRUE(counter.Lower());
    EXPECT_EQ(counter.GetCounter(), 0);
}

TEST(AccessCounter, RaiseFailsWhileExclusivelyOwnedEvenOnTheOwnersThread) {
    qvrCAccessCounter counter;
    ASSERT_TRUE(counter.Alloc());
    EXPECT_FALSE(counter.Raise());
    EXPECT_FALSE(counter.Lower());
    EXPECT_FALSE(onOtherThread([&] { return counter.Raise(); }));
    EXPECT_EQ(counter.GetCounter(), -1);
}

TEST(AccessCounter, ExclusiveAccessNestsAndForceEndsAllNesting) {
    qvrCAccessCounter counter;
    ASSERT_TRUE(counter.Alloc());
    ASSERT_TRUE(counter.Alloc());
    ASSERT_TRUE(counter.Alloc());
    EXPECT_EQ(counter.GetCounter(), -3);
    EXPECT_TRUE(counter.Release());
    EXPECT_EQ(counter.GetCounter(), -2);
    EXPECT_TRUE(counter.Release(true));
    EXPECT_EQ(counter.GetCounter(), 0);
    EXPECT_FALSE(counter.Release());
    EXPECT_TRUE(counter.Raise());
}

TEST(AccessCounter, OnlyTheOwnerAllocsAgainOrReleases) {
    qvrCAccessCounter counter;
    ASSERT_TRUE(counter.Alloc());
    EXPECT_FALSE(onOtherThread([&] { return counter.Alloc(); }));
    EXPECT_FALSE(onOtherThread([&] { return counter.Release(true); }));
    EXPECT_EQ(counter.GetCounter(), -1);
    EXPECT_TRUE(counter.Release());
    EXPECT_TRUE(onOtherThread([&] { return counter.Alloc() && counter.Release(); }));
}

TEST(AccessCounter, AllocWithSharedHoldersTimesOutOrIsAborted) {
    qvrCAccessCounter counter;
    qvrCEvent abort;
    ASSERT_TRUE(counter.Raise());
    bool aborted = true;
    EXPECT_FALSE(counter.Alloc(10, &abort, &aborted));
    EXPECT_FALSE(aborted);
    abort.Set();
    EXPECT_FALSE(counter.Alloc(qvrInfinite, &abort, &aborted));
    EXPECT_TRUE(aborted);
    EXPECT_EQ(counter.GetCounter(), 1);
}

TEST(AccessCounter, AllocWaitsUntilTheLastHolderLowers) {
    qvrCAccessCounter counter;
    ASSERT_TRUE(counter.Raise());
    ASSERT_TRUE(counter.Raise());
    std::atomic<bool> owned{false};
    std::thread writer([&] {
        owned = counter.Alloc();
        if (owned) counter.Release();
    });
    EXPECT_TRUE(counter.Lower());
    EXPECT_TRUE(counter.Lower());
    writer.join();
    EXPECT_TRUE(owned);
    EXPECT_EQ(counter.GetCounter(), 0);
}

TEST(AccessCounter, ReadersAndAWriterNeverHoldTogether) {
    qvrCAccessCounter counter;
    std::atomic<int> readersInside{0};
    std::atomic<bool> writerInside{false};
    std::atomic<int> overlaps{0};
    std::vector<std::thread> threads;
    for (int reader = 0; reader < 3; ++reader) {
        threads.emplace_back([&] {
            for (int i = 0; i < 300; ++i) {
                if (!counter.Raise()) continue;
                ++readersInside;
                if (writerInside) ++overlaps;
                --readersInside;
                counter.Lower();
            }
        });
    }
    threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) {
            if (!counter.Alloc(50)) continue;
            writerInside = true;
            if (readersInside > 0) ++overlaps;
            writerInside = false;
            counter.Release();
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(counter.GetCounter(), 0);
}
