#!/usr/bin/env bash
# Builds the program at build/install and runs it on a scratch copy of the
# example product (see run_example.sh).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" --target installer -j"$(nproc)"
exec "$root/scripts/run_example.sh" "$root/build/install"
