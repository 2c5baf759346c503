#include "foundation/qvrCAccessCounter.h"

#include "foundation/qvrTrace.h"

namespace {

constexpr int maxAllocRounds = 10;

// `round` 1 tells of the outer rounds (a user came in each time), 2 of the
// inner ones (the guard was busy each time).
void warnAllocGaveUp(int round) {
    qvrTrace("*** WARNING[qvrCAccessCounter::Alloc()]: Each time I was noted the AccessCounter became "
             "available, I even was not able to get a lock (%d) !\n",
             round);
}

} // namespace

qvrCAccessCounter::qvrCAccessCounter() : qvrCEvent(ResetMode::Manual, InitialState::Signalled) {}

bool qvrCAccessCounter::lockGuard(qvrCSafeLock& lock, unsigned long timeoutMs, bool* aborted) {
    const bool locked = lock.Lock(timeoutMs);
    if (aborted) *aborted = !locked && lock.WasAborted();
    return locked;
}

bool qvrCAccessCounter::Raise(unsigned long timeoutMs, qvrCEvent* abort, bool* aborted) {
    qvrCSafeLock lock(&Guard, abort);
    if (!lockGuard(lock, timeoutMs, aborted)) return false;
    if (Counter < 0) return false;
    ++Counter;
    Reset();
    return true;
}

bool qvrCAccessCounter::Lower(unsigned long timeoutMs, qvrCEvent* abort, bool* aborted) {
    qvrCSafeLock lock(&Guard, abort);
    if (!lockGuard(lock, timeoutMs, aborted)) return false;
    if (Counter < 0) return false;
    if (--Counter <= 0) {
        Counter = 0;
        Set();
    }
    return true;
}

bool qvrCAccessCounter::Alloc(unsigned long timeoutMs, qvrCEvent* abort, bool* aborted) {
    qvrCSafeLock freeForOwner(this, abort);
    qvrCSingleLock guard(Guard);
    if (aborted) *aborted = false;
    int innerRounds = 0;
    for (int outerRounds = 1;; ++outerRounds) {
        if (outerRounds > maxAllocRounds) {
            warnAllocGaveUp(1);
            return false;
        }
        if (!waitForGuard(freeForOwner, guard, timeoutMs, innerRounds, aborted)) return false;
        const AllocStep step = allocGuarded();
        if (step != AllocStep::Retry) return step == AllocStep::Owned;
        guard.Unlock();
    }
}

// Waits until no shared access is held, then for the guard. The guard is
// only ever held for a moment, but the last user signals the counter while it
// still holds it: trying the guard without waiting would make a woken Alloc
// give up. A guard not had within the time-out sends it back to the wait.
bool qvrCAccessCounter::waitForGuard(qvrCSafeLock& freeForOwner, qvrCSingleLock& guard,
                                     unsigned long timeoutMs, int& innerRounds, bool* aborted) {
    for (;;) {
        if (!freeForOwner.Lock(timeoutMs)) {
            if (aborted) *aborted = freeForOwner.WasAborted();
            return false;
        }
        freeForOwner.Unlock();
        if (guard.Lock(timeoutMs)) return true;
        if (++innerRounds > maxAllocRounds) {
            warnAllocGaveUp(2);
            return false;
        }
    }
}

qvrCAccessCounter::AllocStep qvrCAccessCounter::allocGuarded() {
    const std::thread::id caller = std::this_thread::get_id();
    if (Counter > 0) {
        // A user raised the counter between the wait and the guard.
        Reset();
        return AllocStep::Retry;
    }
    if (Counter < 0) {
        if (Owner != caller) return AllocStep::Refused;
        --Counter;
        return AllocStep::Owned;
    }
    Set();
    Counter = -1;
    Owner = caller;
    return AllocStep::Owned;
}

bool qvrCAccessCounter::Release(bool force, unsigned long timeoutMs, qvrCEvent* abort, bool* aborted) {
    const std::thread::id caller = std::this_thread::get_id();
    qvrCSafeLock lock(&Guard, abort);
    if (!lockGuard(lock, timeoutMs, aborted)) {
        if (Owner == caller) {
            qvrTrace(
                "*** ERROR[qvrCAccessCounter::Release()]: Ugly situation - it seems I'm the owner, but I "
                "cannot get access ?\n");
        }
        return false;
    }
    if (Counter >= 0 || Owner != caller) return false;
    if (force || ++Counter == 0) {
        Counter = 0;
        Owner = std::thread::id();
        Set();
    }
    return true;
}

std::int32_t qvrCAccessCounter::GetCounter() {
    qvrCSingleLock guard(Guard);
    guard.Lock();
    return Counter;
}
