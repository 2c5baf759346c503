#include "foundation/qvrSplitWork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace {

// The ranges a split ran and the threads that ran them.
struct SplitRecord {
    std::mutex Lock;
    std::vector<std::pair<long, long>> Ranges;
    std::set<std::thread::id> Threads;

    void Run(long count, long minimum) {
        qvrSplitInTwo(count, minimum, [this](long first, long last) {
            std::lock_guard guard(Lock);
            Ranges.emplace_back(first, last);
            Threads.insert(std::this_thread::get_id());
        });
    }
};

} // namespace

TEST(qvrSplitWork, LargeWorkRunsInTwoHalvesOnTwoThreadsWhileACoreIsSpare) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "one core";
    SplitRecord split;
    split.Run(1001, 100);
    std::sort(split.Ranges.begin(), split.Ranges.end());
    EXPECT_EQ(split.Ranges, (std::vector<std::pair<long, long>>{{0, 500}, {500, 1001}}));
    EXPECT_EQ(split.Threads.size(), 2u);

    SplitRecord small;
    small.Run(99, 100);
    EXPECT_EQ(small.Ranges, (std::vector<std::pair<long, long>>{{0, 99}}));
}

TEST(qvrSplitWork, BusyThreadsOnEveryCoreLeaveNothingToSplitOnAndGiveTheirCoresBack) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "one core";
    {
        std::vector<std::unique_ptr<qvrBusyCore>> busy;
        for (unsigned core = 0; core < std::thread::hardware_concurrency(); ++core)
            busy.push_back(std::make_unique<qvrBusyCore>());
        SplitRecord split;
        split.Run(1000, 100);
        EXPECT_EQ(split.Ranges, (std::vector<std::pair<long, long>>{{0, 1000}}));
        EXPECT_EQ(split.Threads, std::set<std::thread::id>{std::this_thread::get_id()});
    }
    // The cores are back, and so are those that the splits took.
    for (int run = 0; run < 3; ++run) {
        SplitRecord split;
        split.Run(1000, 100);
        EXPECT_EQ(split.Ranges.size(), 2u) << run;
    }
}

TEST(qvrSplitWork, ARunGivenOneCoreDoesNotSplitAndOneGivenTwoSplitsBesideItsThread) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "one core";
    {
        const qvrCoreLimit oneCore(1);
        const qvrBusyCore renderThread;
        SplitRecord split;
        split.Run(1000, 100);
        EXPECT_EQ(split.Ranges.size(), 1u);
    }
    {
        const qvrCoreLimit twoCores(2);
        const qvrBusyCore renderThread;
        SplitRecord split;
        split.Run(1000, 100);
        EXPECT_EQ(split.Ranges.size(), 2u);
    }
    // Limits below one core count as one, and every limit gives its cores back.
    { const qvrCoreLimit none(0); }
    SplitRecord split;
    split.Run(1000, 100);
    EXPECT_EQ(split.Ranges.size(), 2u);
}
