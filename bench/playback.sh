#!/usr/bin/env bash
# Plays the showcase project in the desktop program's time control, offscreen,
# in a composer view of 720x405 at 25 frames per second: first with the proxy
# directory emptied (the footage's proxies are made during the play), then
# again with the proxies made. Each play prints the memory it used and the
# rate it reached; the last line is "N.N frames/s shown, M dropped" of the
# play with proxies.
#
#   bench/playback.sh [BUILD_DIRECTORY] [SECONDS] [ELEMENT]     (build, 10, Composer)
#
# The build needs -DQVR_BUILD_GUI=ON -DQVR_BUILD_BENCH=ON (targets qvr and qvrplaybench).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="$(realpath "${1:-build}")"
seconds="${2:-10}"
element="${3:-Composer}"
work="$build/playback-bench"

bash "$here/../examples/showcase/render.sh" "$build/cli/qvr" "$work" --prepare-only
export QVR_HOME="$work/home" QT_QPA_PLATFORM=offscreen
"$build/cli/qvr" proxies empty >/dev/null
play() {
  "$build/bench/gui/qvrplaybench" "$work/showcase.tsp" "$seconds" "$element" 720,405 2>/dev/null | tail -2
}
echo "without proxies (made while playing):"
play
echo "with proxies:"
play
