#!/usr/bin/env bash
# Takes the screenshots of the desktop program under docs/: each scene is shown on a
# demo document under a virtual X display and photographed whole.
# Usage: docs/make-screenshots.sh [BUILD_DIR] [SCENE...]
# Scenes of the report dialogs: report-wizard-type, report-wizard-tasks,
# report-wizard-summarize, report-wizard-fields (the other wizard pages by their
# names: dates, invoice, print, name) and report-properties.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${1:-$here/../build}"
shift || true
scenes=("$@")
if [ ${#scenes[@]} -eq 0 ]; then
  scenes=(main)
fi
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
"$build/src/cli/qvx" demo "$work/Demo.qvx" >/dev/null
for scene in "${scenes[@]}"; do
  out="$here/$scene.png"
  [ "$scene" = main ] && out="$here/main-window.png"
  XDG_RUNTIME_DIR="$work" xvfb-run -a -s "-screen 0 1280x800x24" bash -c '
    "$1" --doc "$2" --scene "$3" > "$4/ready" &
    pid=$!
    for _ in $(seq 100); do grep -q ready "$4/ready" 2>/dev/null && break; sleep 0.1; done
    sleep 1.5
    import -window root "$5"
    kill $pid' _ "$build/tests/views/qv_screenshot" "$work/Demo.qvx" "$scene" "$work" "$out"
  echo "wrote $out"
done
