#!/usr/bin/env bash
# Fails, naming the lines, when a source file does not follow .clang-format;
# with --fix, formats them in place.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(find foundation fileops settings environment questions copyscript driver \
  fuzz bench \( -name '*.cpp' -o -name '*.h' \) | sort)
if [ "${1:-}" = --fix ]; then
  exec clang-format -i "${files[@]}"
fi
clang-format --dry-run -Werror "${files[@]}"
echo "${#files[@]} files follow .clang-format"
