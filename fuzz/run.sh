#!/bin/sh
# Runs one fuzzer for SECONDS (default 600) from its committed seeds: load (documents,
# the default), timewarrior, ical or csv (imports). New inputs it finds go to
# BUILD_DIR/corpus-run[-TARGET]; a crash, hang or leak is written to BUILD_DIR/findings
# and stops the run.
#   fuzz/run.sh [SECONDS] [BUILD_DIR] [TARGET]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
seconds=${1:-600}
build=${2:-$here/../build-fuzz}
target=${3:-load}
case "$target" in
    load) seeds=$here/corpus dict=$here/load.dict run=$build/corpus-run ;;
    timewarrior|ical|csv) seeds=$here/corpus-$target dict=$here/$target.dict run=$build/corpus-run-$target ;;
    *) echo "run.sh: TARGET is load, timewarrior, ical or csv, not '$target'" >&2; exit 2 ;;
esac
[ -x "$build/fuzz_$target" ] || "$here/build.sh" "$build"
mkdir -p "$run" "$build/findings"
exec "$build/fuzz_$target" -max_total_time="$seconds" -max_len=65536 -timeout=5 -rss_limit_mb=2048 \
    -dict="$dict" -artifact_prefix="$build/findings/" -print_final_stats=1 "$run" "$seeds"
