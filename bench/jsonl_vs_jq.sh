#!/usr/bin/env bash
# JSON Lines beside jq: validate and compact one generated stream with
# vxjson on 1, 2 and all cores and with jq, and print MB/s.
#   bash bench/jsonl_vs_jq.sh [BUILD_DIR [MB]]
# The stream (MB megabytes, 200 by default) is generated once into
# BUILD_DIR/bench-jsonl/ and kept there for later runs; it is never part of
# the repository.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
mb=${2:-200}
tool=$build/tools/vxjson
[ -x "$tool" ] || { echo "no $tool: build the tool first" >&2; exit 2; }
command -v jq > /dev/null || { echo "jq is missing: bash scripts/deps.sh" >&2; exit 2; }
dir=$build/bench-jsonl
data=$dir/events-${mb}mb.jsonl
mkdir -p "$dir"
if [ ! -s "$data" ]; then
  echo "generating $data ..." >&2
  # Event records of the kind services log: nested objects, arrays, strings
  # with escapes and non-ASCII text, integers and reals.
  awk -v bytes=$((mb * 1024 * 1024)) 'BEGIN {
    srand(7); n = 0; total = 0
    while (total < bytes) {
      n++
      line = sprintf("{\"id\":%d,\"kind\":\"%s\",\"user\":{\"name\":\"user %d\",\"followers\":%d,\"verified\":%s},\"text\":\"caf\303\251 \\\"%d\\\" \\u00e9\\n line %d\",\"tags\":[\"t%d\",\"t%d\",\"t%d\"],\"score\":%.4f,\"geo\":[%.6f,%.6f],\"ok\":%s,\"parent\":null}",
        n, (n % 3 ? "post" : "reply"), n % 9973, int(rand() * 100000), (n % 5 ? "false" : "true"),
        n, n, n % 17, n % 31, n % 7, rand() * 100, rand() * 180 - 90, rand() * 360 - 180, (n % 2 ? "true" : "false"))
      print line
      total += length(line) + 1
    }
  }' > "$data"
fi
size=$(stat -c %s "$data")
cores=$(nproc)

# Seconds that a command takes, best of two runs.
seconds() {
  local best=""
  for _ in 1 2; do
    local t0 t1
    t0=$(date +%s.%N)
    "$@" > /dev/null 2>&1 || true
    t1=$(date +%s.%N)
    best=$(echo "$t0 $t1 $best" | awk '{ d = $2 - $1; if ($3 == "" || d < $3) print d; else print $3 }')
  done
  echo "$best"
}
rate() { awk -v b="$size" -v s="$1" 'BEGIN { printf "%.0f", b / 1048576 / s }'; }

printf '%s: %d MB, %d lines, %d cores\n\n' "$data" $((size / 1048576)) "$(wc -l < "$data")" "$cores"
printf '| program | validate MB/s | compact MB/s |\n|---|---|---|\n'
for jobs in 1 2 "$cores"; do
  v=$(seconds "$tool" check --lines -q --jobs "$jobs" "$data")
  c=$(seconds "$tool" format --lines -q --jobs "$jobs" "$data")
  printf '| vxjson --jobs %s | %s | %s |\n' "$jobs" "$(rate "$v")" "$(rate "$c")"
done
v=$(seconds jq empty "$data")
c=$(seconds jq -c . "$data")
printf '| jq | %s | %s |\n' "$(rate "$v")" "$(rate "$c")"
