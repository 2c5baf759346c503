#include "foundation/qvrCSafeLock.h"

qvrCSafeLock::qvrCSafeLock(qvrCSyncObject* lock, qvrCEvent* abort)
    : LockObject(lock), Abort(abort), Count(abort ? 2 : 1) {}

bool qvrCSafeLock::Set(qvrCSyncObject* lock, qvrCEvent* abort) {
    if (IsLocked()) return false;
    LockObject = lock;
    return SetAbort(abort);
}

bool qvrCSafeLock::SetAbort(qvrCEvent* abort) {
    if (IsLocked()) return false;
    Abort = abort;
    Count = abort ? 2 : 1;
    return true;
}

bool qvrCSafeLock::Lock(unsigned long timeoutMs) {
    if (IsLocked()) {
        ++LockCount;
        return true;
    }
    Aborted = false;
    if (!LockObject) return false;
    MultiLock.emplace(LockObject, Count == 2 ? Abort : nullptr);
    switch (MultiLock->Lock(timeoutMs)) {
    case 0:
        LockCount = 1;
        return true;
    case 1:
        Aborted = true;
        break;
    default:
        break;
    }
    MultiLock.reset();
    return false;
}

void qvrCSafeLock::Unlock(bool force) {
    if (!IsLocked()) return;
    if (force || --LockCount <= 0) {
        MultiLock.reset();
        LockCount = 0;
    }
}
