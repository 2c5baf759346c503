#pragma once
// A lock that can be called off: it waits for its object and for an optional
// abort event at once, so that a thread told to end never hangs on a lock.
// Repeated locking only counts. One safe lock belongs to one thread; the
// objects it waits on may be shared by any number of threads.

#include "foundation/qvrCSyncObjects.h"

#include <optional>

class qvrCSafeLock {
public:
    explicit qvrCSafeLock(qvrCSyncObject* lock = nullptr, qvrCEvent* abort = nullptr);
    ~qvrCSafeLock() { Unlock(true); }
    qvrCSafeLock(const qvrCSafeLock&) = delete;
    qvrCSafeLock& operator=(const qvrCSafeLock&) = delete;

    // Both refuse (false) while the lock is held.
    bool Set(qvrCSyncObject* lock, qvrCEvent* abort);
    bool SetAbort(qvrCEvent* abort);

    // True once the object is held; a second call while held only counts.
    bool Lock(unsigned long timeoutMs = qvrInfinite);
    // Counts down; with `force`, or when the count reaches 0, the object is given back.
    void Unlock(bool force = false);
    // After a failed Lock: true when the abort event was the reason, false for a time-out.
    bool WasAborted() const { return Aborted; }
    bool IsLocked() const { return MultiLock.has_value(); }

private:
    qvrCSyncObject* LockObject;
    qvrCEvent* Abort;
    unsigned Count;
    int LockCount = 0;
    std::optional<qvrCMultiLock> MultiLock;
    bool Aborted = false;
};
