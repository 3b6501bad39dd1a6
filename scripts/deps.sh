#!/usr/bin/env bash
# Installs what building and testing need and the machine lacks (Debian 12).
set -euo pipefail
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v g++ >/dev/null || need+=(g++)
command -v make >/dev/null || need+=(make)
command -v bats >/dev/null || need+=(bats)
command -v unshare >/dev/null || need+=(util-linux)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
[ -f /usr/include/gmock/gmock.h ] || need+=(libgmock-dev)
[ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
command -v clang++ >/dev/null || need+=(clang)
ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1 ||
  need+=(libclang-rt-dev)
getent passwd www-data >/dev/null || need+=(passwd)
[ -x /usr/bin/time ] || need+=(time)
if [ ${#need[@]} -gt 0 ]; then
  echo "Installing: ${need[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq "${need[@]}"
fi
