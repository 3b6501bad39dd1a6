#!/usr/bin/env bash
# Builds the sanitizer build (AddressSanitizer + UndefinedBehaviorSanitizer,
# leak detection on, halting on the first error) and runs every unit and
# end-to-end test through ctest; then builds the fuzz targets (clang) and
# replays each over its seed corpus for a fixed number of inputs. Warnings
# are errors in both builds, and every test tool is required.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DINSTALL_SANITIZE=ON -DINSTALL_WERROR=ON \
  -DINSTALL_REQUIRE_TEST_TOOLS=ON -DINSTALL_BENCHMARKS=ON >/dev/null
cmake --build build-asan -j"$(nproc)"
export ASAN_OPTIONS=detect_leaks=1:halt_on_error=1:abort_on_error=1:strict_string_checks=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
ctest --test-dir build-asan --output-on-failure -j"$(nproc)"
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DINSTALL_FUZZ=ON \
  -DINSTALL_WERROR=ON >/dev/null
cmake --build build-fuzz -j"$(nproc)"
ctest --test-dir build-fuzz --output-on-failure -j"$(nproc)"
