#!/bin/sh
# A qvx built without Qt refuses PDF with the reason and writes nothing.
# Usage: nopdf_test.sh QVX
set -u
qvx="$1"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config"
"$qvx" demo "$work/d.qvx" >/dev/null || { echo "demo failed"; exit 1; }
fail=0
for args in "report export $work/d.qvx 1 --format pdf --out $work/r.pdf" \
            "invoice $work/d.qvx 5 --pdf $work/i.pdf --yes"; do
  # shellcheck disable=SC2086
  if out="$("$qvx" $args 2>&1)"; then
    echo "accepted: qvx $args"; fail=1
  fi
  case "$out" in
    *"needs the build with Qt"*) ;;
    *) echo "no reason given for qvx $args: $out"; fail=1 ;;
  esac
done
[ -e "$work/r.pdf" ] || [ -e "$work/i.pdf" ] && { echo "a PDF was written"; fail=1; }
# The refused invoice was not numbered: the next one is still 1.
"$qvx" invoice "$work/d.qvx" 5 --format csv --out "$work/i.csv" --yes | grep -q "Invoice number 1 " ||
  { echo "the refused invoice used up a number"; fail=1; }
exit $fail
