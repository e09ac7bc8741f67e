#!/bin/sh
# Builds the fuzz targets with clang into build-fuzz/ (or the folder given).
#   fuzz/build.sh [BUILD_DIR]
# Then, for instance, ten minutes of loading documents from the seed corpus:
#   fuzz/run.sh 600
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build-fuzz}
CC=clang CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "${JOBS:-2}"
echo "built $build/fuzz_load, fuzz_timewarrior, fuzz_ical and fuzz_csv"
