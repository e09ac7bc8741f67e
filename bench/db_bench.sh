#!/usr/bin/env bash
# Speed and size of `qvx db sync` into SQLite and into PostgreSQL:
#
#   bench/db_bench.sh [BUILD_DIR] [RUNS]      (default build, 3)
#
# Two documents from the generator: the demo's ten years (`qvx demo X --years 10`) and one of
# a million time entries (256 years at about fifteen entries a working day). Each is synced
# into an empty database (added), again unchanged, and again from another path (replaced
# whole). Times are the best of RUNS wall-clock runs of the whole command (reading the
# document included); the machine is shared, so the best run is the one that says what the
# work costs. PostgreSQL runs on a throwaway server of scripts/with-postgres, on this machine.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$root/build}" && pwd)
runs=${2:-3}
qvx="$build/src/cli/qvx"
[ -x "$qvx" ] || { echo "db_bench: no qvx in $build (build it first)" >&2; exit 1; }

if [ -z "${QV_PG_CONNINFO:-}${QV_PG_UNAVAILABLE:-}" ]; then
  exec "$root/scripts/with-postgres" "$0" "$build" "$runs"
fi

# Targets for a document of a million time entries on the two-core reference machine.
sqlite_target=5
postgres_target=10

work=$(mktemp -d "${TMPDIR:-/tmp}/qvdbbench-XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
export QVX_NOW="2024-06-11 12:00"

echo "generating the documents..." >&2
"$qvx" demo ten.qvx --years 10 --seed 7 >/dev/null
"$qvx" demo million.qvx --years 256 --seed 7 >/dev/null

# "WALL (CPU)": the best wall-clock seconds of `runs` runs of a command, and the CPU seconds
# (user and system) of qvx in that run; `prepare` runs untimed before each. qvx's CPU time is
# the whole work for SQLite; for PostgreSQL the server's share is not in it.
best() {
  local prepare=$1
  shift
  local result="999999 0"
  for _ in $(seq "$runs"); do
    eval "$prepare"
    local t
    t=$( { TIMEFORMAT='%R %U %S'; time "$@" >/dev/null 2>&1; } 2>&1 )
    result=$(echo "$t $result" | awk '{ if ($1 < $4) print $1, $2 + $3; else print $4, $5 }')
  done
  echo "$result" | awk '{ printf "%.2f (%.2f)", $1, $2 }'
}

pgsql() { psql -X -q -At "$QV_PG_CONNINFO dbname=$1" -c "SET client_min_messages = warning" -c "$2"; }

megabytes() { awk -v b="$1" 'BEGIN { printf "%.1f", b / 1048576 }'; }

echo "seconds: best wall clock of $runs runs (CPU of qvx in it)"
printf "%-12s %-10s %9s %13s %13s %13s %8s  %s\n" document database entries added unchanged replaced "size MB" target
for doc in ten million; do
  entries=$("$qvx" check $doc.qvx | sed -n 's/.* \([0-9]*\) time entries.*/\1/p')
  cp $doc.qvx moved-$doc.qvx

  # SQLite: a new file each time it is added.
  added=$(best "rm -f $doc.db" "$qvx" db sync $doc.db $doc.qvx)
  size=$(megabytes "$(stat -c %s $doc.db)")
  unchanged=$(best "" "$qvx" db sync $doc.db $doc.qvx)
  replaced=$(best "$qvx db sync $doc.db $doc.qvx >/dev/null" "$qvx" db sync $doc.db moved-$doc.qvx --as "Synthetic User")
  target=""
  [ $doc = million ] && target="add <= $sqlite_target s: $(awk -v t="${added%% *}" -v g=$sqlite_target 'BEGIN { print (t <= g ? "met" : "missed") }')"
  printf "%-12s %-10s %9s %13s %13s %13s %8s  %s\n" $doc.qvx SQLite "$entries" "$added" "$unchanged" "$replaced" "$size" "$target"

  if [ -n "${QV_PG_UNAVAILABLE:-}" ]; then
    echo "PostgreSQL skipped: $QV_PG_UNAVAILABLE" >&2
    continue
  fi
  pg="$QV_PG_CONNINFO dbname=bench_$doc"
  reset="pgsql postgres 'DROP DATABASE IF EXISTS bench_$doc' && pgsql postgres 'CREATE DATABASE bench_$doc'"
  added=$(best "$reset" "$qvx" db sync "$pg" $doc.qvx)
  # What the document takes: the database less an empty one with the schema.
  pgsql postgres "DROP DATABASE IF EXISTS bench_empty" && pgsql postgres "CREATE DATABASE bench_empty"
  "$qvx" db schema "$QV_PG_CONNINFO dbname=bench_empty" >/dev/null
  bytes=$(( $(pgsql bench_$doc "SELECT pg_database_size(current_database())") -
            $(pgsql bench_empty "SELECT pg_database_size(current_database())") ))
  size=$(megabytes $bytes)
  unchanged=$(best "" "$qvx" db sync "$pg" $doc.qvx)
  replaced=$(best "$qvx db sync '$pg' $doc.qvx >/dev/null" "$qvx" db sync "$pg" moved-$doc.qvx --as "Synthetic User")
  target=""
  [ $doc = million ] && target="add <= $postgres_target s: $(awk -v t="${added%% *}" -v g=$postgres_target 'BEGIN { print (t <= g ? "met" : "missed") }')"
  printf "%-12s %-10s %9s %13s %13s %13s %8s  %s\n" $doc.qvx PostgreSQL "$entries" "$added" "$unchanged" "$replaced" "$size" "$target"
done
