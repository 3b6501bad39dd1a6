#!/usr/bin/env bash
# replay.sh TARGET CORPUS RUNS: runs a fuzz target over its seed corpus and
# then on mutated inputs from a fixed seed until RUNS inputs in all. New
# inputs go to a scratch directory, never into the corpus; a crashing input
# is kept beside the target as crash-<name>-* and the run fails.
set -euo pipefail
target=$1 corpus=$2 runs=$3
[ -d "$corpus" ] || { echo "no corpus at $corpus"; exit 1; }
work=$(mktemp -d /tmp/install-fuzz-replay.XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir "$work/new"
name=$(basename "$target")
exec_status=0
"$target" -seed=1 -runs="$runs" -max_len=2048 -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix="$(dirname "$target")/crash-$name-" -print_final_stats=1 \
  "$work/new" "$corpus" > "$work/output" 2>&1 || exec_status=$?
grep -E '^(INFO: seed corpus|stat::number_of_executed_units|stat::peak_rss_mb|Done)' \
  "$work/output" || true
if [ "$exec_status" -ne 0 ]; then
  tail -n 60 "$work/output"
  exit "$exec_status"
fi
