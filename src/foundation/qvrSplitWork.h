#pragma once
// Splits a large piece of picture work, such as the rows of one picture, in
// two halves that run at once: the second on a thread of its own, the first
// on the caller's. A movie is rendered by one thread only, and this lets its
// heaviest steps use a second core. The halves must not share anything that
// they write.
//
// A split needs a spare core. Render threads that keep a core busy for a
// whole run say so with a qvrBusyCore, so that a run with a thread for every
// core renders without splitting. A run that was given fewer cores than the
// machine has keeps the rest out of reach with a qvrCoreLimit: a movie, which
// renders on one thread whatever it was given, splits into the second core it
// was given, and a run told to use one core uses one.

#include <system_error>
#include <thread>

namespace qvrSpareCores {
// Takes a spare core for a split; false when none is left.
bool TryTake();
// Gives cores back: after a split, when a busy thread ends, or what Take counted.
void GiveBack(long count = 1);
// Counts cores as taken, even when none were spare.
void Take(long count = 1);
} // namespace qvrSpareCores

// Holds a core for as long as it lives.
class qvrBusyCore {
public:
    qvrBusyCore() { qvrSpareCores::Take(); }
    ~qvrBusyCore() { qvrSpareCores::GiveBack(); }
    qvrBusyCore(const qvrBusyCore&) = delete;
    qvrBusyCore& operator=(const qvrBusyCore&) = delete;
};

// Takes the machine's cores beyond `cores` for as long as it lives.
class qvrCoreLimit {
public:
    explicit qvrCoreLimit(long cores);
    ~qvrCoreLimit() { qvrSpareCores::GiveBack(withheld); }
    qvrCoreLimit(const qvrCoreLimit&) = delete;
    qvrCoreLimit& operator=(const qvrCoreLimit&) = delete;

private:
    long withheld;
};

// Runs work(first, last) over [0, count): in two halves at once when the count
// reaches `minimum` and a core is spare, in one go otherwise (also when no
// thread can be started).
template <class Work> void qvrSplitInTwo(long count, long minimum, Work&& work) {
    if (count < minimum || !qvrSpareCores::TryTake()) {
        work(0L, count);
        return;
    }
    const long half = count / 2;
    std::thread second;
    try {
        second = std::thread([&work, half, count] { work(half, count); });
    } catch (const std::system_error&) {
        qvrSpareCores::GiveBack();
        work(0L, count);
        return;
    }
    work(0L, half);
    second.join();
    qvrSpareCores::GiveBack();
}
