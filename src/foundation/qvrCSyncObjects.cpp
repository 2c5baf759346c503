#include "foundation/qvrCSyncObjects.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <optional>

// One waiting thread. An object that changes state marks it woken, so that a
// change between the waiter's last try and its sleep is never missed.
struct qvrCSyncWaiter {
    std::mutex Guard;
    std::condition_variable Wake;
    bool Woken = false;
};

namespace {

using Clock = std::chrono::steady_clock;

std::optional<Clock::time_point> deadlineAfter(unsigned long timeoutMs) {
    if (timeoutMs == qvrInfinite) return std::nullopt;
    return Clock::now() + std::chrono::milliseconds(timeoutMs);
}

// Sleeps until an object wakes the waiter; false once the deadline has passed.
bool sleepUntilWoken(qvrCSyncWaiter& waiter, const std::optional<Clock::time_point>& deadline) {
    std::unique_lock lock(waiter.Guard);
    auto woken = [&waiter] { return waiter.Woken; };
    if (deadline) {
        if (!waiter.Wake.wait_until(lock, *deadline, woken)) return false;
    } else {
        waiter.Wake.wait(lock, woken);
    }
    waiter.Woken = false;
    return true;
}

} // namespace

int qvrWaitForFirst(qvrCSyncObject* const* objects, int count, unsigned long timeoutMs) {
    auto acquireFirstFree = [objects, count] {
        for (int i = 0; i < count; ++i) {
            if (objects[i]->tryAcquire()) return i;
        }
        return -1;
    };
    // A free object is taken without registering as a waiter.
    const int free = acquireFirstFree();
    if (free >= 0 || timeoutMs == 0) return free;
    const auto deadline = deadlineAfter(timeoutMs);
    qvrCSyncWaiter waiter;
    // The objects know the waiter for exactly the length of this wait.
    struct Registration {
        qvrCSyncObject* const* Objects;
        int Count;
        qvrCSyncWaiter* Waiter;
        ~Registration() {
            for (int i = 0; i < Count; ++i)
                Objects[i]->removeWaiter(Waiter);
        }
    } registration{objects, 0, &waiter};
    for (; registration.Count < count; ++registration.Count)
        objects[registration.Count]->addWaiter(&waiter);
    for (;;) {
        const int acquired = acquireFirstFree();
        if (acquired >= 0) return acquired;
        if (!sleepUntilWoken(waiter, deadline)) return -1;
    }
}

// ---------------------------------------------------------------------------

bool qvrCSyncObject::Lock(unsigned long timeoutMs) {
    qvrCSyncObject* self = this;
    return qvrWaitForFirst(&self, 1, timeoutMs) == 0;
}

bool qvrCSyncObject::tryAcquire() {
    std::lock_guard lock(StateGuard);
    return tryAcquireLocked();
}

void qvrCSyncObject::addWaiter(qvrCSyncWaiter* waiter) {
    std::lock_guard lock(StateGuard);
    Waiters.push_back(waiter);
}

void qvrCSyncObject::removeWaiter(qvrCSyncWaiter* waiter) {
    std::lock_guard lock(StateGuard);
    Waiters.erase(std::remove(Waiters.begin(), Waiters.end(), waiter), Waiters.end());
}

void qvrCSyncObject::wakeWaitersLocked() {
    for (qvrCSyncWaiter* waiter : Waiters) {
        std::lock_guard lock(waiter->Guard);
        waiter->Woken = true;
        waiter->Wake.notify_one();
    }
}

// ---------------------------------------------------------------------------

bool qvrCCriticalSection::tryAcquireLocked() {
    const std::thread::id caller = std::this_thread::get_id();
    if (Recursion > 0 && Owner != caller) return false;
    Owner = caller;
    ++Recursion;
    return true;
}

bool qvrCCriticalSection::Unlock() {
    std::lock_guard lock(StateGuard);
    if (Recursion == 0 || Owner != std::this_thread::get_id()) return false;
    if (--Recursion == 0) {
        Owner = std::thread::id();
        wakeWaitersLocked();
    }
    return true;
}

// ---------------------------------------------------------------------------

qvrCEvent::qvrCEvent(ResetMode mode, InitialState initial)
    : Mode(mode), Signalled(initial == InitialState::Signalled) {}

void qvrCEvent::Set() {
    std::lock_guard lock(StateGuard);
    Signalled = true;
    wakeWaitersLocked();
}

void qvrCEvent::Reset() {
    std::lock_guard lock(StateGuard);
    Signalled = false;
}

bool qvrCEvent::IsSet() const {
    std::lock_guard lock(StateGuard);
    return Signalled;
}

bool qvrCEvent::tryAcquireLocked() {
    if (!Signalled) return false;
    if (Mode == ResetMode::Auto) Signalled = false;
    return true;
}

// ---------------------------------------------------------------------------

bool qvrCSingleLock::Lock(unsigned long timeoutMs) {
    if (!Locked) Locked = Object.Lock(timeoutMs);
    return Locked;
}

void qvrCSingleLock::Unlock() {
    if (Locked) Object.Unlock();
    Locked = false;
}

// ---------------------------------------------------------------------------

qvrCMultiLock::qvrCMultiLock(qvrCSyncObject* first, qvrCSyncObject* second)
    : Objects{first, second}, Count(second ? 2 : 1) {}

int qvrCMultiLock::Lock(unsigned long timeoutMs) {
    if (Acquired < 0) Acquired = qvrWaitForFirst(Objects, Count, timeoutMs);
    return Acquired;
}

void qvrCMultiLock::Unlock() {
    if (Acquired >= 0) Objects[Acquired]->Unlock();
    Acquired = -1;
}
