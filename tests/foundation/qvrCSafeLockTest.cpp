#include "foundation/qvrCSafeLock.h"

#include "LockProbe.h"

#include <gtest/gtest.h>

#include <thread>

TEST(SafeLock, AbortedLockTellsSoAndTimeOutDoesNot) {
    qvrCCriticalSection section;
    qvrCEvent abort;
    ASSERT_TRUE(section.Lock());
    std::thread([&] {
        qvrCSafeLock lock(&section, &abort);
        EXPECT_FALSE(lock.Lock(10));
        EXPECT_FALSE(lock.WasAborted());
        abort.Set();
        EXPECT_FALSE(lock.Lock());
        EXPECT_TRUE(lock.WasAborted());
        EXPECT_FALSE(lock.IsLocked());
    }).join();
    section.Unlock();
}

TEST(SafeLock, RepeatedLockCountsAndForceReleasesAtOnce) {
    qvrCCriticalSection section;
    qvrCSafeLock lock(&section);
    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    lock.Unlock();
    EXPECT_FALSE(FreeForOtherThreads(section));
    lock.Unlock();
    EXPECT_TRUE(FreeForOtherThreads(section));

    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    lock.Unlock(true);
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_TRUE(FreeForOtherThreads(section));

    {
        qvrCSafeLock scoped(&section);
        ASSERT_TRUE(scoped.Lock());
        ASSERT_TRUE(scoped.Lock());
    }
    EXPECT_TRUE(FreeForOtherThreads(section)) << "the destructor gives the lock back";
}

TEST(SafeLock, ThreadBlockedOnALockEndsWhenAborted) {
    qvrCCriticalSection section;
    qvrCEvent abort;
    ASSERT_TRUE(section.Lock());
    bool locked = true;
    bool aborted = false;
    std::thread waiter([&] {
        qvrCSafeLock lock(&section, &abort);
        locked = lock.Lock();
        aborted = lock.WasAborted();
    });
    abort.Set();
    waiter.join();
    section.Unlock();
    EXPECT_FALSE(locked);
    EXPECT_TRUE(aborted);
}
