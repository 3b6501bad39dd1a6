#!/usr/bin/env bash
# Builds a Debug build without sanitizers (build-memcheck) and runs the whole
# end-to-end suite (tests/*.bats, examples/tests/*.bats) with every run of the
# program under valgrind's memcheck: a memory error or a leak (definite,
# indirect or possible) fails the test of that run, and this command.
#
#   scripts/memcheck.sh              everything
#   scripts/memcheck.sh FILE.bats... only these files
#
# Each run's report goes to a log file of its own, never to the program's
# standard output or error; the logs of failing runs are printed at the end.
# The tests put "$INSTALL_RUNNER" before each run; here it is this script
# with --run, which runs valgrind and records a failing run.
set -euo pipefail

# ---- the wrapper: scripts/memcheck.sh --run PROGRAM ARGS... -------------------

run_under_valgrind() {
  local logs=${INSTALL_MEMCHECK_LOGS:?set by scripts/memcheck.sh}
  # A test that remounts the root read-only leaves /dev/shm writable; should
  # the log directory be out of reach all the same, the working directory
  # (the product's, which such tests keep writable) takes the log.
  [ -w "$logs" ] || logs=$PWD
  local log="$logs/run.$$.log"
  local status=0
  TMPDIR=$logs valgrind --tool=memcheck --leak-check=full \
    --show-leak-kinds=definite,indirect,possible \
    --errors-for-leak-kinds=definite,indirect,possible \
    --error-exitcode=99 --log-file="$log" "$@" || status=$?
  if ! grep -q 'ERROR SUMMARY: 0 errors' "$log"; then
    printf '%s\t%s\n' "$PWD" "$log" >> "$logs/errors" 2>/dev/null || true
    echo "memcheck: errors in the run of $* from $PWD (log $log)" >&2
    [ "$status" -ne 0 ] || status=99
  fi
  exit "$status"
}

if [ "${1:-}" = "--run" ]; then
  shift
  run_under_valgrind "$@"
fi

# ---- the command ----------------------------------------------------------------

cd "$(dirname "$0")/.."
root=$PWD
scripts/deps.sh
command -v valgrind >/dev/null || {
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq && apt-get install -y -qq valgrind
}
cmake -S . -B build-memcheck -DCMAKE_BUILD_TYPE=Debug -DINSTALL_SANITIZE=OFF >/dev/null
cmake --build build-memcheck -j2 --target installer

files=("$@")
[ ${#files[@]} -gt 0 ] || files=(tests/*.bats examples/tests/*.bats)

# The logs live where every test can write them: runs as nobody, and runs in
# a namespace whose root is read-only, still reach /dev/shm.
base=/dev/shm
[ -d "$base" ] && [ -w "$base" ] || base=/tmp
logs=$(mktemp -d "$base/install-memcheck.XXXXXX")
chmod 1777 "$logs"
: > "$logs/errors"
chmod 666 "$logs/errors"
trap 'rm -rf "$logs"' EXIT

start=$SECONDS
status=0
INSTALL_BIN="$root/build-memcheck/install" INSTALL_SOURCE_DIR="$root" \
  INSTALL_RUNNER="$root/scripts/memcheck.sh --run" INSTALL_MEMCHECK_LOGS="$logs" \
  bats "${files[@]}" || status=$?

runs=$(find "$logs" -name 'run.*.log' | wc -l)
failed=()
while IFS= read -r log; do
  grep -q 'ERROR SUMMARY: 0 errors' "$log" || failed+=("$log")
done < <(find "$logs" -name 'run.*.log')
for log in "${failed[@]}"; do
  echo "==== $log"
  cat "$log"
done
echo "memcheck: $runs runs under valgrind, ${#failed[@]} with errors, $((SECONDS - start)) s"
[ ${#failed[@]} -eq 0 ] || status=1
exit "$status"
