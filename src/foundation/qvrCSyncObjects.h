#pragma once
// Waitable synchronisation objects: a re-entrant critical section whose
// time-outs are honoured, manual- and auto-reset events, and the single and
// multiple locks that wait on them. A multiple lock waits for the first of two
// objects, the way a thread waits for a lock and a stop request at once.
// Every object here is safe to use from any number of threads; a lock object
// (qvrCSingleLock, qvrCMultiLock) belongs to the thread that made it.

#include <mutex>
#include <thread>
#include <vector>

// A time-out in milliseconds that never runs out.
inline constexpr unsigned long qvrInfinite = 0xFFFFFFFFUL;

struct qvrCSyncWaiter;

// The root of the waitable objects. Acquiring means entering a critical
// section, or finding an event signalled (which resets an auto-reset event).
class qvrCSyncObject {
public:
    virtual ~qvrCSyncObject() = default;
    qvrCSyncObject(const qvrCSyncObject&) = delete;
    qvrCSyncObject& operator=(const qvrCSyncObject&) = delete;

    // Waits until the object is acquired or `timeoutMs` has passed; 0 only tries.
    bool Lock(unsigned long timeoutMs = qvrInfinite);
    // Gives back what Lock acquired; false when the caller held nothing to give back.
    virtual bool Unlock() = 0;

protected:
    qvrCSyncObject() = default;
    // Both run with StateGuard held.
    virtual bool tryAcquireLocked() = 0;
    void wakeWaitersLocked();

    mutable std::mutex StateGuard;

private:
    friend int qvrWaitForFirst(qvrCSyncObject* const* objects, int count, unsigned long timeoutMs);
    // Acquires the object if it is free at this moment.
    bool tryAcquire();
    // Waiters are told of every change that may let them acquire the object.
    void addWaiter(qvrCSyncWaiter* waiter);
    void removeWaiter(qvrCSyncWaiter* waiter);

    std::vector<qvrCSyncWaiter*> Waiters;
};

// Waits for the first of several objects; the lowest index wins when more than
// one is free. Returns the index of the object acquired, or -1 on time-out.
int qvrWaitForFirst(qvrCSyncObject* const* objects, int count, unsigned long timeoutMs);

// A re-entrant critical section: the owning thread may enter again and must
// leave as often as it entered.
class qvrCCriticalSection : public qvrCSyncObject {
public:
    qvrCCriticalSection() = default;
    bool Unlock() override;

protected:
    bool tryAcquireLocked() override;

private:
    std::thread::id Owner;
    long Recursion = 0;
};

// An event, manual-reset (stays signalled until reset) or auto-reset (one
// waiter takes the signal).
class qvrCEvent : public qvrCSyncObject {
public:
    enum class ResetMode { Manual, Auto };
    enum class InitialState { Reset, Signalled };

    explicit qvrCEvent(ResetMode mode = ResetMode::Manual, InitialState initial = InitialState::Reset);
    void Set();
    void Reset();
    bool IsSet() const;
    // Waiting on an event takes nothing that would have to be given back.
    bool Unlock() override { return true; }

protected:
    bool tryAcquireLocked() override;

private:
    const ResetMode Mode;
    bool Signalled;
};

// Holds one object for a scope; the destructor gives it back if it is held.
class qvrCSingleLock {
public:
    explicit qvrCSingleLock(qvrCSyncObject& object) : Object(object) {}
    ~qvrCSingleLock() { Unlock(); }
    qvrCSingleLock(const qvrCSingleLock&) = delete;
    qvrCSingleLock& operator=(const qvrCSingleLock&) = delete;

    bool Lock(unsigned long timeoutMs = qvrInfinite);
    void Unlock();
    bool IsLocked() const { return Locked; }

private:
    qvrCSyncObject& Object;
    bool Locked = false;
};

// Waits for the first of one or two objects and holds the one it acquired
// until Unlock or the end of its life.
class qvrCMultiLock {
public:
    explicit qvrCMultiLock(qvrCSyncObject* first, qvrCSyncObject* second = nullptr);
    ~qvrCMultiLock() { Unlock(); }
    qvrCMultiLock(const qvrCMultiLock&) = delete;
    qvrCMultiLock& operator=(const qvrCMultiLock&) = delete;

    // The index of the object acquired (0 or 1), or -1 on time-out.
    int Lock(unsigned long timeoutMs = qvrInfinite);
    void Unlock();

private:
    qvrCSyncObject* Objects[2];
    int Count;
    int Acquired = -1;
};
