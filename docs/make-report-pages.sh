#!/usr/bin/env bash
# Draws the report page images under docs/ with qvx: a time detail, a weekly time
# (daily) summary too wide for one page (its column pages) and an invoice, all from the demo
# document on a fixed date, through the same canvas that prints and previews.
# Usage: docs/make-report-pages.sh [BUILD_DIR]
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${1:-$here/../build}"
qvx="$build/src/cli/qvx"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" QVX_NOW="2026-11-25 09:00" LC_ALL=C.UTF-8
doc="$work/Demo.qvx"
"$qvx" demo "$doc" >/dev/null
"$qvx" report new "$doc" --kind time-summary --name "Daily Hours by Project" \
  --from 2026-10-28 --to 2026-11-24 --time-frame day --summarize 3 --rollup no --totals yes >/dev/null

page() { # REPORT OUTPUT-NAME PAGE...
  local report="$1" name="$2"
  shift 2
  "$qvx" report export "$doc" "$report" --format pdf --out "$work/$name.pdf" >/dev/null
  for p in "$@"; do
    pdftoppm -r 90 -png -f "$p" -l "$p" -singlefile "$work/$name.pdf" "$here/$name-$p"
    echo "wrote $here/$name-$p.png"
  done
}
page 1 report-time-detail 1
page 6 report-daily-summary 1 3
"$qvx" invoice "$doc" 5 --pdf "$work/report-invoice.pdf" --yes >/dev/null
pdftoppm -r 90 -png -singlefile "$work/report-invoice.pdf" "$here/report-invoice"
echo "wrote $here/report-invoice.png"
