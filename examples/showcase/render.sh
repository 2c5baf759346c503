#!/usr/bin/env bash
# Renders the showcase project: makes its footage (a numbered PNG sequence and
# a still TGA, drawn by FFmpeg's test sources), fills the project's footage and
# output folders in, and runs both of its savers through `qvr render`, one to a
# BMP sequence and one to an uncompressed AVI movie.
#
#   examples/showcase/render.sh [QVR_PROGRAM] [WORK_DIRECTORY] [--prepare-only]
#
# With --prepare-only the footage and the filled-in project are made, and nothing is rendered.
# Defaults: build/cli/qvr and build/showcase. Extra options for both renders
# (--threads, --first, --last, ...) go in QVR_RENDER_OPTIONS.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
qvr="$(realpath "${1:-build/cli/qvr}")"
work="$(realpath -m "${2:-build/showcase}")"
footage="$work/footage"
output="$work/output"

mkdir -p "$footage" "$output/frames" "$work/home"
if [ ! -f "$footage/clip_0050.png" ]; then
  ffmpeg -v error -y -f lavfi -i testsrc2=size=1920x1080:rate=25 -frames:v 50 "$footage/clip_%04d.png"
fi
if [ ! -f "$footage/badge.tga" ]; then
  ffmpeg -v error -y -f lavfi -i mandelbrot=size=640x360 -frames:v 1 "$footage/badge.tga"
fi
# The matrix effect lives in the program's preferences, the rest in the project.
cp "$here/Preferences.tsp" "$work/home/Preferences.tsp"
sed -e "s|@FOOTAGE@|$footage|g" -e "s|@OUTPUT@|$output|g" "$here/showcase.tsp" > "$work/showcase.tsp"
[ "${3:-}" = "--prepare-only" ] && exit 0

for saver in Frames Movie; do
  QVR_HOME="$work/home" "$qvr" render "$work/showcase.tsp" --saver "$saver" ${QVR_RENDER_OPTIONS:-}
done
echo "Rendered $(ls "$output/frames" | wc -l) frames to $output/frames and the movie $output/showcase.avi"
