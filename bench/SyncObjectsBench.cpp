// The cost of the locks that render code takes for every element it renders:
// an uncontended critical section, the same through a safe lock with a stop
// event, and the shared access of the access counter.

#include "foundation/qvrCAccessCounter.h"
#include "foundation/qvrCSafeLock.h"
#include "foundation/qvrCSyncObjects.h"

#include <benchmark/benchmark.h>

namespace {

void CriticalSectionLockUnlock(benchmark::State& state) {
    qvrCCriticalSection section;
    for (auto _ : state) {
        section.Lock(2000);
        section.Unlock();
    }
}
BENCHMARK(CriticalSectionLockUnlock);

void SafeLockWithStopEvent(benchmark::State& state) {
    qvrCCriticalSection section;
    qvrCEvent stop;
    for (auto _ : state) {
        qvrCSafeLock lock(&section, &stop);
        benchmark::DoNotOptimize(lock.Lock());
    }
}
BENCHMARK(SafeLockWithStopEvent);

void AccessCounterRaiseLower(benchmark::State& state) {
    static qvrCAccessCounter counter;
    for (auto _ : state) {
        counter.Raise();
        counter.Lower();
    }
}
BENCHMARK(AccessCounterRaiseLower)->Threads(1)->Threads(2);

} // namespace
