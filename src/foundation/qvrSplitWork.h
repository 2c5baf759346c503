#pragma once
// Splits a large piece of picture work, such as the rows of one picture, in
// two halves that run at once: the second on a thread of its own, the first
// on the caller's. A movie is rendered by one thread only, and this lets its
// heaviest steps use a second core. The halves must not share anything that
// they write.
//
// A split needs a spare core. Render threads that keep a core busy for a
// whole run say so with a qvrBusyCore, so that a run with a thread for every
// core renders without splitting, and one with a single thread splits.

#include <system_error>
#include <thread>

namespace qvrSpareCores {
// Takes a spare core for a split; false when none is left.
bool TryTake();
// Gives a core back: after a split, or when a busy thread ends.
void GiveBack();
// Counts a core as taken, even when none was spare.
void Take();
} // namespace qvrSpareCores

// Holds a core for as long as it lives.
class qvrBusyCore {
public:
    qvrBusyCore() { qvrSpareCores::Take(); }
    ~qvrBusyCore() { qvrSpareCores::GiveBack(); }
    qvrBusyCore(const qvrBusyCore&) = delete;
    qvrBusyCore& operator=(const qvrBusyCore&) = delete;
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
