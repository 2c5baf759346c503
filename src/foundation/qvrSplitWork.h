#pragma once
// Splits a large piece of picture work, such as the rows of one picture, in
// two halves that run at once: the second on a thread of its own, the first
// on the caller's. A movie is rendered by one thread only, and this lets its
// heaviest steps use a second core. The halves must not share anything that
// they write.

#include <system_error>
#include <thread>

// Runs work(first, last) over [0, count): in two halves at once when the count
// reaches `minimum` and the machine has more than one core, in one go
// otherwise (also when no thread can be started).
template <class Work> void qvrSplitInTwo(long count, long minimum, Work&& work) {
    if (count < minimum || std::thread::hardware_concurrency() < 2) {
        work(0L, count);
        return;
    }
    const long half = count / 2;
    std::thread second;
    try {
        second = std::thread([&work, half, count] { work(half, count); });
    } catch (const std::system_error&) {
        work(0L, count);
        return;
    }
    work(0L, half);
    second.join();
}
