// Reading an animated value the way render code does: GetValue over a run of
// frames, for values of few and of many keys.

#include "model/iActiveValue.h"

#include <benchmark/benchmark.h>

namespace {

void ActiveValueGetValue(benchmark::State& state) {
    iActiveValue value("Opacity", 0.0, false);
    const long keyCount = state.range(0);
    for (long key = 1; key < keyCount; ++key)
        value.SetKey(key * 10, static_cast<double>(key % 7), true, false, false);
    const long lastFrame = keyCount * 10;
    long frame = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value.GetValue(frame));
        frame = frame == lastFrame ? 0 : frame + 1;
    }
}
BENCHMARK(ActiveValueGetValue)->Arg(2)->Arg(10)->Arg(100);

} // namespace
