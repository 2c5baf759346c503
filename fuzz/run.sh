#!/usr/bin/env bash
# Runs the fuzz targets of a build made with -DQVR_BUILD_FUZZ=ON, each for the
# given seconds, two at a time, at the lowest priority. Each target grows its
# own corpus in BUILD/fuzz/work/<target>, starting from the seeds. Prints per
# target the executions and the coverage reached; exits 1 when any target
# found a fault (its reproducer is left in BUILD/fuzz/findings).
#   fuzz/run.sh BUILD SECONDS [TARGET...]      targets without "fuzz_", all by default
set -uo pipefail
if [ $# -lt 2 ]; then
  echo "usage: fuzz/run.sh BUILD SECONDS [TARGET...]" >&2
  exit 2
fi
build=$(cd "$1" && pwd)
seconds=$2
shift 2
fuzz="$build/fuzz"
if [ $# -gt 0 ]; then
  targets=("$@")
else
  targets=()
  for program in "$fuzz"/fuzz_*; do targets+=("$(basename "$program" | sed 's/^fuzz_//')"); done
fi
mkdir -p "$fuzz/work" "$fuzz/findings" "$fuzz/logs"

run_target() {
  local target=$1
  local work="$fuzz/work/$target"
  mkdir -p "$work"
  cp -n "$fuzz/corpus/$target"/* "$work"/ 2>/dev/null
  nice -n 19 "$fuzz/fuzz_$target" "$work" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=3072 \
    -print_final_stats=1 -artifact_prefix="$fuzz/findings/$target-" >"$fuzz/logs/$target.log" 2>&1
}

pids=()
names=()
for target in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge 2 ]; do sleep 1; done
  run_target "$target" &
  pids+=($!)
  names+=("$target")
done
failed=0
for i in "${!pids[@]}"; do
  target=${names[$i]}
  log="$fuzz/logs/$target.log"
  if ! wait "${pids[$i]}"; then
    failed=1
    echo "fuzz_$target: FOUND A FAULT (see $log and $fuzz/findings)"
    grep -m1 -E "ERROR: |runtime error:" "$log"
    continue
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  coverage=$(grep -E '^#[0-9]+' "$log" | tail -1 | sed -n 's/.*cov: \([0-9]*\) ft: \([0-9]*\).*/cov \1 ft \2/p')
  echo "fuzz_$target: ${runs:-?} executions in ${seconds} s, $coverage, corpus $(ls "$fuzz/work/$target" | wc -l) files"
done
exit $failed
