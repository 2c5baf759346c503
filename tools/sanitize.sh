#!/usr/bin/env bash
# The whole suite again under the address and undefined-behaviour sanitizers,
# built with clang together with the fuzz targets, which then run SECONDS each
# (default 20): bash tools/sanitize.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-20}
bash tools/deps.sh
CC=clang-14 CXX=clang++-14 cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVR_BUILD_TESTS=ON \
    -DQVR_BUILD_FUZZ=ON -DQVR_ENABLE_SANITIZER=address,undefined
cmake --build build-sanitize
ctest --test-dir build-sanitize --output-on-failure -j2
fuzz/run.sh build-sanitize "$seconds"
