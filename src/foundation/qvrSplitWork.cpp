#include "foundation/qvrSplitWork.h"

#include <atomic>

namespace {

// Cores that neither a busy render thread nor the second half of a split
// keeps; below 0 while more busy threads run than there are cores.
std::atomic<long>& spareCores() {
    static std::atomic<long> cores{static_cast<long>(std::thread::hardware_concurrency())};
    return cores;
}

} // namespace

bool qvrSpareCores::TryTake() {
    std::atomic<long>& cores = spareCores();
    long spare = cores.load();
    while (spare > 0) {
        if (cores.compare_exchange_weak(spare, spare - 1)) return true;
    }
    return false;
}

void qvrSpareCores::GiveBack() {
    ++spareCores();
}

void qvrSpareCores::Take() {
    --spareCores();
}
