#!/usr/bin/env bash
# replay.sh TARGET NAME RUNS: runs a fuzz target over its seeds (fuzz/seeds.sh
# NAME) and then on mutated inputs from a fixed seed until RUNS inputs in
# all. New inputs go to a scratch directory, never into the seeds; a crashing
# input is kept beside the target as crash-<target>-* and the run fails.
set -euo pipefail
target=$1 name=$2 runs=$3
work=$(mktemp -d /tmp/install-fuzz-replay.XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir "$work/new"
corpus=$work/seeds
"$(dirname "$0")/seeds.sh" "$name" "$corpus"
[ -n "$(ls "$corpus")" ] || { echo "no seeds for $name"; exit 1; }
binary=$(basename "$target")
exec_status=0
"$target" -seed=1 -runs="$runs" -max_len=2048 -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix="$(dirname "$target")/crash-$binary-" -print_final_stats=1 \
  "$work/new" "$corpus" > "$work/output" 2>&1 || exec_status=$?
grep -E '^(INFO: seed corpus|stat::number_of_executed_units|stat::peak_rss_mb|Done)' \
  "$work/output" || true
if [ "$exec_status" -ne 0 ]; then
  tail -n 60 "$work/output"
  exit "$exec_status"
fi
