#include "foundation/qvrSplitWork.h"

#include <algorithm>
#include <atomic>

namespace {

long machineCores() {
    return static_cast<long>(std::thread::hardware_concurrency());
}

// Cores that neither a busy render thread, a core limit nor the second half of
// a split keeps; below 0 while more are kept than there are cores.
std::atomic<long>& spareCores() {
    static std::atomic<long> cores{machineCores()};
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

void qvrSpareCores::GiveBack(long count) {
    spareCores() += count;
}

void qvrSpareCores::Take(long count) {
    spareCores() -= count;
}

qvrCoreLimit::qvrCoreLimit(long cores) : withheld(std::max(machineCores() - std::max(cores, 1L), 0L)) {
    qvrSpareCores::Take(withheld);
}
