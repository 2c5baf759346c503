#pragma once
// Shared and exclusive access to one resource: many users raise the counter
// while they hold the resource, and one exclusive owner can take it once all
// of them have lowered it. The counter is itself a manual-reset event that is
// signalled while no shared access is held. Safe from any number of threads.
// Nesting: the access counter outside, element or data locks inside.

#include "foundation/qvrCSafeLock.h"
#include "foundation/qvrCSyncObjects.h"

#include <atomic>
#include <cstdint>
#include <thread>

class qvrCAccessCounter : public qvrCEvent {
public:
    qvrCAccessCounter();

    // Each operation waits up to `timeoutMs` for the counter's guard, or until
    // `abort` is signalled; `aborted`, when given, tells whether that was why it failed.

    // Takes shared access; fails at once while an exclusive owner holds the counter,
    // even on the owner's thread.
    bool Raise(unsigned long timeoutMs = qvrInfinite, qvrCEvent* abort = nullptr, bool* aborted = nullptr);
    // Gives shared access back.
    bool Lower(unsigned long timeoutMs = qvrInfinite, qvrCEvent* abort = nullptr, bool* aborted = nullptr);
    // Takes exclusive access once no shared access is held; the owner may nest it.
    bool Alloc(unsigned long timeoutMs = qvrInfinite, qvrCEvent* abort = nullptr, bool* aborted = nullptr);
    // Gives exclusive access back; `force` ends all nesting at once.
    bool Release(bool force = false, unsigned long timeoutMs = qvrInfinite, qvrCEvent* abort = nullptr,
                 bool* aborted = nullptr);

    // Above 0 the number of shared holders, 0 free, below 0 the exclusive owner's nesting.
    std::int32_t GetCounter();

private:
    // How the guarded part of Alloc ended.
    enum class AllocStep { Retry, Owned, Refused };

    bool lockGuard(qvrCSafeLock& lock, unsigned long timeoutMs, bool* aborted);
    bool waitForGuard(qvrCSafeLock& freeForOwner, qvrCSingleLock& guard, unsigned long timeoutMs,
                      int& innerRounds, bool* aborted);
    AllocStep allocGuarded();

    qvrCCriticalSection Guard;
    std::int32_t Counter = 0;
    std::atomic<std::thread::id> Owner;
};
