#include "foundation/qvrCSafeLock.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Runs `body` in a thread of its own while the critical section is held here.
template <typename Body> void whileHeldElsewhere(qvrCCriticalSection& section, Body body) {
    ASSERT_TRUE(section.Lock());
    std::thread(body).join();
    section.Unlock();
}

bool freeForOtherThreads(qvrCCriticalSection& section) {
    bool entered = false;
    std::thread([&] {
        entered = section.Lock(0);
        if (entered) section.Unlock();
    }).join();
    return entered;
}

} // namespace

TEST(SafeLock, AbortedLockTellsSoAndTimeOutDoesNot) {
    qvrCCriticalSection section;
    qvrCEvent abort;
    whileHeldElsewhere(section, [&] {
        qvrCSafeLock lock(&section, &abort);
        EXPECT_FALSE(lock.Lock(10));
        EXPECT_FALSE(lock.WasAborted());
        abort.Set();
        EXPECT_FALSE(lock.Lock());
        EXPECT_TRUE(lock.WasAborted());
        EXPECT_FALSE(lock.IsLocked());
    });
}

TEST(SafeLock, FreeLockWinsOverASignalledAbort) {
    qvrCCriticalSection section;
    qvrCEvent abort;
    abort.Set();
    qvrCSafeLock lock(&section, &abort);
    EXPECT_TRUE(lock.Lock(0));
    EXPECT_FALSE(lock.WasAborted());
}

TEST(SafeLock, RepeatedLockCountsAndForceReleasesAtOnce) {
    qvrCCriticalSection section;
    qvrCSafeLock lock(&section);
    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    lock.Unlock();
    EXPECT_FALSE(freeForOtherThreads(section));
    lock.Unlock();
    EXPECT_TRUE(freeForOtherThreads(section));

    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    lock.Unlock(true);
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_TRUE(freeForOtherThreads(section));
}

TEST(SafeLock, DestructorGivesTheLockBack) {
    qvrCCriticalSection section;
    {
        qvrCSafeLock lock(&section);
        ASSERT_TRUE(lock.Lock());
        ASSERT_TRUE(lock.Lock());
    }
    EXPECT_TRUE(freeForOtherThreads(section));
}

TEST(SafeLock, ObjectsCannotChangeWhileLocked) {
    qvrCCriticalSection first;
    qvrCCriticalSection second;
    qvrCEvent abort;
    qvrCSafeLock lock(&first);
    ASSERT_TRUE(lock.Lock());
    EXPECT_FALSE(lock.Set(&second, nullptr));
    EXPECT_FALSE(lock.SetAbort(&abort));
    lock.Unlock();
    EXPECT_TRUE(lock.Set(&second, &abort));
    ASSERT_TRUE(lock.Lock());
    EXPECT_TRUE(freeForOtherThreads(first));
    EXPECT_FALSE(freeForOtherThreads(second));
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
