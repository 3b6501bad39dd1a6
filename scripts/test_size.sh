#!/usr/bin/env bash
# scripts/test_size.sh
# Prints the size of the tests against the size of the code they test:
# non-blank lines that are not only a comment, of the unit tests, their support
# headers and the end-to-end tests, against the program's own sources in the
# seven subsystem folders.
set -euo pipefail
cd "$(dirname "$0")/.."
folders=(foundation fileops settings environment questions copyscript driver)

# Counts lines that hold code: blank lines and whole-line comments (//, /* */
# blocks, # in shell) are left out.
count_lines() {
  [ $# -gt 0 ] || { echo 0; return; }
  awk '
    FNR == 1 { block = 0; shell = FILENAME ~ /\.(bats|bash|sh)$/ }
    { line = $0; sub(/^[ \t]+/, "", line) }
    line == "" { next }
    shell && line ~ /^#/ { next }
    !shell && block { if (line ~ /\*\//) block = 0; next }
    !shell && line ~ /^\/\// { next }
    !shell && line ~ /^\/\*/ { if (line !~ /\*\//) block = 1; next }
    { n++ }
    END { print n + 0 }' "$@"
}

shopt -s nullglob
tests=() code=()
for folder in "${folders[@]}"; do
  for file in "$folder"/*.cpp "$folder"/*.h; do
    case $file in
      *_test.cpp | *test_support.h | */test_scratch.h) tests+=("$file") ;;
      *_bench.cpp) ;;
      *) code+=("$file") ;;
    esac
  done
done
tests+=(tests/*.bats tests/*.bash examples/tests/*)

test_lines=$(count_lines "${tests[@]}")
code_lines=$(count_lines "${code[@]}")
echo "tests: $test_lines lines in ${#tests[@]} files"
echo "code:  $code_lines lines in ${#code[@]} files"
awk -v t="$test_lines" -v c="$code_lines" 'BEGIN { printf "tests / code: %.1f%%\n", 100 * t / c }'
