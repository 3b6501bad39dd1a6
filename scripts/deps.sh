#!/usr/bin/env bash
# Installs what building and testing need and the machine lacks (Debian 12):
# the compilers and CMake, the test tools (GoogleTest, Google Benchmark, bats,
# groff for the manual page, python3 and clang-format for the source checks,
# clang's libFuzzer), and what the tests run.
set -euo pipefail
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v g++ >/dev/null || need+=(g++)
command -v make >/dev/null || need+=(make)
command -v bats >/dev/null || need+=(bats)
command -v groff >/dev/null || need+=(groff-base)
command -v python3 >/dev/null || need+=(python3)
command -v clang-format >/dev/null || need+=(clang-format)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
[ -f /usr/include/gmock/gmock.h ] || need+=(libgmock-dev)
[ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
command -v clang++ >/dev/null || need+=(clang)
ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1 ||
  need+=(libclang-rt-dev)
# The tests run the program in private mount namespaces (unshare, mount) and
# as other accounts (setpriv): www-data, nobody and nogroup come from
# base-passwd.
command -v unshare >/dev/null && command -v setpriv >/dev/null || need+=(util-linux)
command -v mount >/dev/null || need+=(mount)
getent passwd www-data >/dev/null && getent passwd nobody >/dev/null &&
  getent group nogroup >/dev/null || need+=(base-passwd)
[ -x /usr/bin/time ] || need+=(time)
if [ ${#need[@]} -gt 0 ]; then
  echo "Installing: ${need[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq "${need[@]}"
fi
