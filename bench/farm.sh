#!/usr/bin/env bash
# The cost of a farm run against a local render of the showcase's 50 frames to
# its BMP sequence, on a private Slurm cluster on this machine
# (tools/slurm_local.sh): the local `qvr render`, the same render as one farm
# chunk on the same threads (the farm's own overhead: submission, scheduling,
# start-up of the task, status), and the run split into chunks on clusters of
# 1, 2 and 4 declared nodes. Every figure is the best of RUNS runs, submission
# to the end of `qvr farm wait`. All nodes share this machine's cores, so the
# node counts show the scheduling, not more cores; the last line projects the
# run on separate machines from a chunk's local render time.
#
#   bench/farm.sh [QVR_PROGRAM] [WORK_DIRECTORY]   (RUNS=3, THREADS=2, CHUNK=13)
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
qvr="$(realpath "${1:-build/cli/qvr}")"
work="$(realpath -m "${2:-build/farm-bench}")"
runs="${RUNS:-3}"
threads="${THREADS:-2}"
chunk="${CHUNK:-13}"
frames=50

QVR_RENDER_OPTIONS="--first 0 --last 0" bash "$here/../examples/showcase/render.sh" "$qvr" "$work" >/dev/null 2>&1
export QVR_HOME="$work/home"
cluster="$work/cluster"

best_seconds() {
  local best=""
  for ((run = 0; run < runs; ++run)); do
    rm -rf "$work/output/frames"
    mkdir -p "$work/output/frames"
    local start end
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1
    end=$(date +%s.%N)
    best=$(echo "$start $end ${best:-1e9}" | awk '{ s = $2 - $1; print (s < $3 ? s : $3) }')
  done
  echo "$best"
}

farm() {
  local run
  run=$("$qvr" farm submit "$work/showcase.tsp" --saver Frames --threads "$threads" "$@")
  "$qvr" farm wait "$run"
}

with_cluster() {
  bash "$here/../tools/slurm_local.sh" start "$cluster" "$1" >/dev/null
  export SLURM_CONF="$cluster/slurm.conf"
  "${@:2}"
  bash "$here/../tools/slurm_local.sh" stop "$cluster"
  rm -rf "$cluster"
}

local_seconds=$(best_seconds "$qvr" render "$work/showcase.tsp" --saver Frames --threads "$threads")
printf 'local qvr render, %d threads          %7.2f s\n' "$threads" "$local_seconds"

one_chunk() {
  local seconds
  seconds=$(best_seconds farm --chunk $frames)
  printf 'farm, one chunk of %d frames          %7.2f s  overhead %.2f s (%.1f %% of the local run)\n' \
    $frames "$seconds" "$(echo "$seconds $local_seconds" | awk '{ print $1 - $2 }')" \
    "$(echo "$seconds $local_seconds" | awk '{ print 100 * ($1 - $2) / $2 }')"
}
with_cluster 1 one_chunk

for nodes in 1 2 4; do
  chunked() {
    printf 'farm, chunks of %d frames, %d node(s)  %7.2f s\n' "$chunk" "$nodes" "$(best_seconds farm --chunk "$chunk")"
  }
  with_cluster "$nodes" chunked
done

chunk_seconds=$(best_seconds "$qvr" render "$work/showcase.tsp" --saver Frames --threads "$threads" --last $((chunk - 1)))
chunks=$(((frames + chunk - 1) / chunk))
for nodes in 1 2 4; do
  printf 'projected on %d machine(s): %d chunk(s) of %.2f s each in turn  %7.2f s\n' "$nodes" \
    $(((chunks + nodes - 1) / nodes)) "$chunk_seconds" \
    "$(echo "$chunk_seconds" | awk -v n=$(((chunks + nodes - 1) / nodes)) '{ print n * $1 }')"
done
