#!/bin/sh
# Runs the document-loading fuzzer for SECONDS (default 600) from the committed seeds.
# New inputs it finds go to BUILD_DIR/corpus-run; a crash, hang or leak is written to
# BUILD_DIR/findings and stops the run.
#   fuzz/run.sh [SECONDS] [BUILD_DIR]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
seconds=${1:-600}
build=${2:-$here/../build-fuzz}
[ -x "$build/fuzz_load" ] || "$here/build.sh" "$build"
mkdir -p "$build/corpus-run" "$build/findings"
exec "$build/fuzz_load" -max_total_time="$seconds" -max_len=65536 -timeout=5 -rss_limit_mb=2048 \
    -dict="$here/load.dict" -artifact_prefix="$build/findings/" -print_final_stats=1 "$build/corpus-run" "$here/corpus"
