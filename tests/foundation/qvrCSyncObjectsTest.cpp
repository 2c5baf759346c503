#include "foundation/qvrCSyncObjects.h"

#include "LockProbe.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(CriticalSection, OwnerEntersAgainAndMustLeaveAsOften) {
    qvrCCriticalSection section;
    ASSERT_TRUE(section.Lock());
    ASSERT_TRUE(section.Lock(0));
    EXPECT_FALSE(FreeForOtherThreads(section));
    EXPECT_TRUE(section.Unlock());
    EXPECT_FALSE(FreeForOtherThreads(section));
    EXPECT_TRUE(section.Unlock());
    EXPECT_TRUE(FreeForOtherThreads(section));
    EXPECT_FALSE(section.Unlock());

    ASSERT_TRUE(section.Lock());
    std::thread([&] {
        EXPECT_FALSE(section.Lock(20)) << "the time-out is honoured";
        EXPECT_FALSE(section.Unlock()) << "only the owner leaves";
    }).join();
    EXPECT_TRUE(section.Unlock());
}

TEST(CriticalSection, WaitingThreadEntersOnceTheOwnerLeaves) {
    qvrCCriticalSection section;
    qvrCEvent waiting;
    ASSERT_TRUE(section.Lock());
    std::atomic<bool> entered{false};
    std::thread waiter([&] {
        waiting.Set();
        entered = section.Lock();
        section.Unlock();
    });
    waiting.Lock();
    section.Unlock();
    waiter.join();
    EXPECT_TRUE(entered);
}

TEST(Event, ManualResetStaysSignalledAndAutoResetLetsOneThrough) {
    qvrCEvent manual;
    EXPECT_FALSE(manual.Lock(0));
    manual.Set();
    EXPECT_TRUE(manual.Lock(0));
    EXPECT_TRUE(manual.Lock(0));
    manual.Reset();
    EXPECT_FALSE(manual.IsSet());

    qvrCEvent autoReset(qvrCEvent::ResetMode::Auto, qvrCEvent::InitialState::Signalled);
    EXPECT_TRUE(autoReset.Lock(0));
    EXPECT_FALSE(autoReset.Lock(0));
}

TEST(Event, SettingWakesEveryWaiterOfAManualEvent) {
    qvrCEvent go;
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.emplace_back([&] {
            if (go.Lock()) ++woken;
        });
    }
    go.Set();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(woken, 3);
}

TEST(MultiLock, LowestFreeIndexWinsAndNothingFreeTimesOut) {
    qvrCCriticalSection section;
    qvrCEvent abort;
    {
        qvrCMultiLock both(&section, &abort);
        EXPECT_EQ(both.Lock(0), 0);
    }
    ASSERT_TRUE(section.Lock());
    std::thread([&] {
        qvrCMultiLock both(&section, &abort);
        EXPECT_EQ(both.Lock(10), -1);
        abort.Set();
        EXPECT_EQ(both.Lock(0), 1);
    }).join();
    section.Unlock();
}
