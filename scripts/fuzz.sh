#!/usr/bin/env bash
# scripts/fuzz.sh [SECONDS] [TARGET...]
# Builds the fuzz targets (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each named target, or every one, for
# SECONDS (default 600), as many at a time as there are processors. Each
# target grows its own copy of its seeds (fuzz/seeds.sh) under
# scratch/fuzz/<target>/;
# crashes, hangs, leaks and sanitizer reports land in scratch/fuzz/findings/
# and make the command fail. A summary line per target says what ran.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-600}
shift || true
scripts/deps.sh
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DINSTALL_FUZZ=ON \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz -j"$(nproc)"

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for source in fuzz/*_fuzz.cpp; do
    name=$(basename "$source" .cpp)
    targets+=("${name%_fuzz}")
  done
fi
mkdir -p scratch/fuzz/findings

run_one() {
  local name=$1 seconds=$2 corpus=scratch/fuzz/$1
  fuzz/seeds.sh "$name" "$corpus"
  build-fuzz/"$name"_fuzz -max_total_time="$seconds" -max_len=4096 -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix=scratch/fuzz/findings/"$name"- "$corpus" \
    > scratch/fuzz/"$name".log 2>&1 || true
  local runs cov
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' scratch/fuzz/"$name".log)
  cov=$(grep -o 'cov: [0-9]*' scratch/fuzz/"$name".log | tail -n 1)
  printf '%-18s %ss  %s inputs  %s  corpus %s files\n' "$name" "$seconds" "${runs:-?}" \
    "${cov:-cov: ?}" "$(ls "$corpus" | wc -l)"
}
export -f run_one
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run_one "$@"' _ {} "$seconds"

if [ -n "$(ls scratch/fuzz/findings)" ]; then
  echo "Findings (see scratch/fuzz/<target>.log):"
  ls -l scratch/fuzz/findings
  exit 1
fi
echo "Nothing found."
