#!/usr/bin/env bash
# Runs the thread and render tests under the thread sanitizer: the locks,
# events and worker threads of the foundation, the savers' render threads and
# the projector array's threads, and the whole qvr render runs.
#   tools/tsan.sh [BUILD]      BUILD defaults to build-tsan
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-tsan}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVR_BUILD_TESTS=ON -DQVR_ENABLE_SANITIZER=thread
cmake --build "$build" --target test_foundation test_output test_projector test_runs
export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 ${TSAN_OPTIONS:-}"
ctest --test-dir "$build" --output-on-failure -j2 \
  -R '^(CriticalSection|Event|MultiLock|SafeLock|AccessCounter|WorkerThread|qvrSplitWork|SaverExecution|SaverRun|VitreaRun|isvrVitrea|QvrRenderRun|QvrVitreaRenderRun)\.'
