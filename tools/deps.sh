#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running need,
# touching apt only when something is missing.
set -euo pipefail
packages=(g++ cmake ninja-build pkg-config libgtest-dev libgmock-dev libbenchmark-dev
          clang-14 libclang-rt-14-dev
          libjpeg62-turbo-dev libpng-dev libdeflate-dev libavformat-dev libavcodec-dev libavutil-dev libswscale-dev ffmpeg
          qt6-base-dev fonts-dejavu-core
          slurmctld slurmd slurm-client munge)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
