#!/usr/bin/env bash
# Frames per second of the showcase project at 1920x1080: to a BMP sequence on
# one and on two render threads, to an uncompressed AVI, and the same
# composition as an FFmpeg filtergraph (eq, convolution, crop, scale, rotate,
# overlay) writing the same two outputs. Each figure is the best of RUNS runs
# of the whole command, start-up included. The last line sets the start-up
# apart: a run of the first frame alone, and how much faster two render threads
# render the other frames than one does.
#
#   bench/showcase.sh [QVR_PROGRAM] [WORK_DIRECTORY]      (RUNS=3 by default)
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
qvr="$(realpath "${1:-build/cli/qvr}")"
work="$(realpath -m "${2:-build/showcase-bench}")"
runs="${RUNS:-3}"
frames=50

# Footage, project and program directory, made by one frame's render.
QVR_RENDER_OPTIONS="--first 0 --last 0" bash "$here/../examples/showcase/render.sh" "$qvr" "$work" >/dev/null 2>&1
footage="$work/footage"
output="$work/output"

best_seconds() {
  local best=""
  for ((run = 0; run < runs; ++run)); do
    rm -rf "$output/frames" "$output/showcase.avi" "$output/ffmpeg"
    mkdir -p "$output/frames" "$output/ffmpeg"
    local start end
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1
    end=$(date +%s.%N)
    best=$(echo "$start $end ${best:-1e9}" | awk '{ s = $2 - $1; print (s < $3 ? s : $3) }')
  done
  echo "$best"
}

report() {
  local seconds
  seconds=$(best_seconds "${@:2}")
  printf '%-34s %7.2f s  %6.1f frames/s\n' "$1" "$seconds" "$(echo "$seconds" | awk -v n=$frames '{ print n / $1 }')"
  last_seconds=$seconds
}

render() { QVR_HOME="$work/home" "$qvr" render "$work/showcase.tsp" "$@"; }

# The showcase's graph: graded, sharpened and cropped footage at (-120,-60) from
# the centre, the badge scaled to 480x270, turned from 0 to 30 degrees and moved
# from 500 to 700 right of the centre at 80 % opacity, on a solid backdrop.
graph="[0:v]eq=brightness=0.1:contrast=1.2:saturation=1.3,convolution=0 -1 0 -1 5 -1 0 -1 0:0 -1 0 -1 5 -1 0 -1 0:0 -1 0 -1 5 -1 0 -1 0:0 -1 0 -1 5 -1 0 -1 0,crop=1600:900[inset];
[1:v]scale=480:270,format=rgba,colorchannelmixer=aa=0.8,rotate=a=n*30/49*PI/180:ow=rotw(PI/6):oh=roth(PI/6):c=none[badge];
[2:v][inset]overlay=40:30[framed];
[framed][badge]overlay=x=main_w/2+500+200*n/49-overlay_w/2:y=main_h/2+300-overlay_h/2,format=bgr24"
ffmpeg_render() {
  ffmpeg -v error -y -framerate 25 -start_number 1 -i "$footage/clip_%04d.png" -loop 1 -i "$footage/badge.tga" \
    -f lavfi -i color=c=0x141E3C:s=1920x1080:r=25 -filter_complex "$graph" -frames:v $frames "$@"
}

echo "showcase, $frames frames of 1920x1080, best of $runs runs, $(nproc) cores"
report "qvr: BMP sequence, 1 thread" render --saver Frames --threads 1
one_thread=$last_seconds
report "qvr: BMP sequence, 2 threads" render --saver Frames --threads 2
two_threads=$last_seconds
report "qvr: uncompressed AVI" render --saver Movie
report "ffmpeg: BMP sequence" ffmpeg_render "$output/ffmpeg/frame%04d.bmp"
report "ffmpeg: uncompressed AVI, 32-bit" ffmpeg_render -c:v rawvideo -pix_fmt bgra "$output/ffmpeg/showcase.avi"
report "ffmpeg: BMP sequence, 1 thread" ffmpeg_render -threads 1 -filter_threads 1 -filter_complex_threads 1 "$output/ffmpeg/frame%04d.bmp"
first_frame=$(best_seconds render --saver Frames --threads 1 --first 0 --last 0)
echo "$first_frame $one_thread $two_threads" | awk -v n=$((frames - 1)) '{
  printf "qvr: start-up and first frame %.2f s; frames 1-%d on 2 render threads %.2fx as fast as on 1\n", $1, n, ($2 - $1) / ($3 - $1) }'
