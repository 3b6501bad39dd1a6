#!/usr/bin/env bash
# Benchmark: installing large trees with `install -automate` against the
# operator's alternative, `cp -r` then `chown -R` then `chmod -R`.
#
#   bench/run.sh
#
# Builds the program in build-bench/ (RelWithDebInfo), writes product trees
# in a scratch directory under /tmp (removed at the end), runs the program and
# the baseline alternately on each tree, warm cache for both, and writes
# bench/results.md. Run as root (the owner change needs it). Knobs:
#   BENCH_RUNS=5          timed runs of each side per tree (after one warm-up)
#   BENCH_TREES="..."     a subset of: small1k small10k small100k large
#   BENCH_PROFILE=0       skip the strace/perf summary of the 10,000-file tree
#   BENCH_RESULTS=path    where to write the results (default bench/results.md)
#   BENCH_FS=disk         work on /tmp's own file system instead of a tmpfs
#
# By default the scratch directory is a tmpfs mounted in a private mount
# namespace: on a disk file system the kernel's inode allocation, and what
# other processes on the machine delete at the same time, swamp the
# difference between the two sides (see bench/README.md).
set -euo pipefail
cd "$(dirname "$0")/.."
repo=$PWD

runs=${BENCH_RUNS:-5}
trees=${BENCH_TREES:-small1k small10k small100k large}
profile=${BENCH_PROFILE:-1}
results=${BENCH_RESULTS:-$repo/bench/results.md}
owner=www-data:www-data
mode=755

build=$repo/build-bench
fs=${BENCH_FS:-tmpfs}

# The outer run builds, makes the scratch directory and removes it at the
# end; the inner run (in its own mount namespace for a tmpfs) measures.
if [ "${1:-}" != --inside ]; then
  [ "$(id -u)" -eq 0 ] || { echo "bench/run.sh: run as root (chown needs it)" >&2; exit 1; }
  scripts/deps.sh
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  cmake --build "$build" -j2 --target installer >/dev/null
  g++ -std=c++20 -O2 -Wall -Wextra -Werror -o "$build/copy_chunks" bench/copy_chunks.cpp
  scratch=$(mktemp -d /tmp/install-bench.XXXXXX)
  trap 'cd /; rm -rf "$scratch"' EXIT
  inner=("$0" --inside "$scratch")
  [ "$fs" != tmpfs ] || inner=(unshare -m --propagation private "${inner[@]}")
  "${inner[@]}" || { echo "bench/run.sh: the measurement stopped" >&2; exit 1; }
  exit 0
fi
scratch=$2
if [ "$fs" = tmpfs ]; then mount -t tmpfs -o size=8g,mode=0700 install-bench "$scratch"; fi
scratch_fs=$(findmnt -n -o FSTYPE --target "$scratch")

# ---- trees and the product -------------------------------------------------

# tree_spec NAME: "kind count" for make_tree.pl, and the target ratio.
tree_kind() { case $1 in large) echo large ;; *) echo small ;; esac; }
tree_count() {
  case $1 in small1k) echo 1000 ;; small10k) echo 10000 ;; small100k) echo 100000 ;; large) echo 100 ;; esac
}
tree_target() { case $1 in large) echo 1.10 ;; *) echo 1.25 ;; esac; }
tree_label() {
  case $1 in
    small1k) echo "1,000 files of 1-16 KiB" ;;
    small10k) echo "10,000 files of 1-16 KiB" ;;
    small100k) echo "100,000 files of 1-16 KiB" ;;
    large) echo "100 files of 8 MiB" ;;
  esac
}

# make_product DIR SOURCE_ROOT DEST_ROOT: the five data files and the program.
make_product() {
  local dir=$1 source_root=$2 dest_root=$3
  mkdir -p "$dir"
  cp "$build/install" "$dir/install"
  cat > "$dir/install.dat" <<EOF
product     Bench tree
source_root $source_root
dest_root   $dest_root
owner       $owner
tree_mode   $mode
EOF
  printf '# Nothing to learn about the host.\n' > "$dir/install.int"
  printf '[install]\n' > "$dir/install.q"
  cat > "$dir/install.cpy" <<'EOF'
[install]
MkDir    $(dest_root)
CopyDir  $(source_root)/tree  -  $(dest_root)
Chown    $(dest_root)/tree    -  $(owner)
Chmod    $(dest_root)/tree    -  $(tree_mode)
EOF
  printf 'Installed in $(dest_root)\n' > "$dir/blurb.txt"
}

# ---- timing ------------------------------------------------------------------

now_us() { local t=$EPOCHREALTIME; echo "${t/./}"; }

median() { sort -n | awk '{ v[NR] = $1 } END { if (NR % 2) print v[(NR + 1) / 2]; else print int((v[NR / 2] + v[NR / 2 + 1]) / 2) }'; }

# On a disk, start every run with nothing left to write back.
settle() { if [ "$fs" != tmpfs ]; then sync; fi; }

# run_program PRODUCT TIMES_FILE RSS_FILE: one timed install; a failure ends
# the benchmark.
run_program() {
  local product=$1 times=$2 rss=$3
  rm -rf "$product/dest" "$product"/install.log*
  settle
  local start end
  start=$(now_us)
  (cd "$product" && /usr/bin/time -v -o "$product/time.txt" ./install -automate > "$product/stdout.txt" 2>&1)
  end=$(now_us)
  if ! grep -q '^Success ' "$product/stdout.txt"; then
    echo "bench/run.sh: the install failed:" >&2
    tail -5 "$product/stdout.txt" >&2
    exit 1
  fi
  echo $((end - start)) >> "$times"
  awk -F': ' '/Maximum resident set size/ { print $2 }' "$product/time.txt" >> "$rss"
  awk -F': ' '/User time/ { u = $2 } /System time/ { s = $2 } END { print u * 1e6, s * 1e6 }' \
    "$product/time.txt" >> "$times.cpu"
}

run_baseline() {
  local source=$1 dest=$2 times=$3
  rm -rf "$dest"
  mkdir -p "$dest"
  settle
  local start end
  start=$(now_us)
  /usr/bin/time -o "$scratch/baseline-time.txt" sh -c \
    'cp -r "$1" "$2/" && chown -R "$3" "$2/tree" && chmod -R "$4" "$2/tree"' \
    sh "$source/tree" "$dest" "$owner" "$mode"
  end=$(now_us)
  echo $((end - start)) >> "$times"
}

# The program's install must leave what the baseline leaves: same files,
# same bytes, same owners and modes.
check_same() {
  local a=$1 b=$2
  diff -r "$a" "$b" > /dev/null || { echo "bench/run.sh: installed trees differ" >&2; exit 1; }
  local sa sb
  sa=$(cd "$a" && find . -printf '%p %U:%G %m\n' | sort | md5sum)
  sb=$(cd "$b" && find . -printf '%p %U:%G %m\n' | sort | md5sum)
  [ "$sa" = "$sb" ] || { echo "bench/run.sh: owners or modes differ" >&2; exit 1; }
}

declare -A prog_median base_median peak_rss user_median sys_median

measure_tree() {
  local name=$1
  local source=$scratch/src-$name product=$scratch/product-$name base_dest=$scratch/base-$name
  echo "== $(tree_label "$name"): generating"
  mkdir -p "$source"
  perl bench/make_tree.pl "$(tree_kind "$name")" "$source/tree" "$(tree_count "$name")"
  make_product "$product" "$source" "$product/dest/site"
  local prog_times=$scratch/$name.prog base_times=$scratch/$name.base rss=$scratch/$name.rss
  : > "$prog_times"; : > "$prog_times.cpu"; : > "$base_times"; : > "$rss"
  # One warm-up of each side, checked and not counted.
  run_program "$product" "$scratch/warm-up" "$scratch/warm-up.rss"
  run_baseline "$source" "$base_dest" "$scratch/warm-up"
  check_same "$product/dest/site/tree" "$base_dest/tree"
  local i
  for ((i = 1; i <= runs; i++)); do
    run_program "$product" "$prog_times" "$rss"
    run_baseline "$source" "$base_dest" "$base_times"
    printf '   run %d: program %6.3f s, baseline %6.3f s\n' "$i" \
      "$(tail -1 "$prog_times" | awk '{ print $1 / 1e6 }')" \
      "$(tail -1 "$base_times" | awk '{ print $1 / 1e6 }')"
  done
  prog_median[$name]=$(median < "$prog_times")
  base_median[$name]=$(median < "$base_times")
  peak_rss[$name]=$(sort -n "$rss" | tail -1)
  user_median[$name]=$(awk '{ print $1 }' "$prog_times.cpu" | median)
  sys_median[$name]=$(awk '{ print $2 }' "$prog_times.cpu" | median)
  if [ "$name" = small10k ] && [ "$profile" = 1 ]; then profile_tree "$product" "$source" "$base_dest"; fi
  if [ "$name" != large ] && [ "$profile" = 1 ]; then count_instructions "$name" "$product"; fi
  if [ "$name" = large ]; then measure_chunks "$source/tree"; fi
  rm -rf "$source" "$product" "$base_dest"
}

# ---- the floor of 8,192-byte chunks ------------------------------------------

declare -A chunk_median

# The large tree copied by bench/copy_chunks.cpp four ways, alternating.
measure_chunks() {
  local source=$1 dest=$scratch/chunks way i
  for ((i = 0; i <= runs; i++)); do
    for way in read-write read-write-stream range-chunk range-whole; do
      rm -rf "$dest"; mkdir "$dest"
      # The first round warms up and is not counted.
      if [ "$i" -eq 0 ]; then
        "$build/copy_chunks" "$way" "$source" "$dest" > /dev/null
      else
        "$build/copy_chunks" "$way" "$source" "$dest" >> "$scratch/chunks-$way"
      fi
    done
  done
  rm -rf "$dest"
  for way in read-write read-write-stream range-chunk range-whole; do
    chunk_median[$way]=$(median < "$scratch/chunks-$way")
  done
}

# ---- instructions per file ---------------------------------------------------

declare -A instructions

# The program's own instructions (user space, callgrind) for one install:
# what it adds per file, free of the kernel and of the machine's load.
count_instructions() {
  local name=$1 product=$2
  command -v valgrind > /dev/null || return 0
  rm -rf "$product/dest" "$product"/install.log*
  (cd "$product" && valgrind --tool=callgrind --callgrind-out-file="$scratch/callgrind-$name.out" \
    ./install -automate > /dev/null 2> "$scratch/callgrind-$name.log")
  instructions[$name]=$(awk '/Collected :/ { print $NF }' "$scratch/callgrind-$name.log")
  if [ "$name" = small10k ] && command -v callgrind_annotate > /dev/null; then
    profile_text+=$'\n### The program\'s own instructions, 10,000-file tree (`callgrind_annotate`, top functions)\n\n```\n'
    profile_text+=$(callgrind_annotate "$scratch/callgrind-$name.out" 2> /dev/null |
      grep -E '^ *[0-9,]+ +\([ 0-9.]+%\) ' | sed 's/ \[.*\]$//' | head -12 || true)
    profile_text+=$'\n```\n'
  fi
}

# ---- profile of the 10,000-file tree ---------------------------------------

profile_text=""

profile_tree() {
  local product=$1 source=$2 base_dest=$3
  local out=$scratch/profile
  mkdir -p "$out"
  if command -v strace > /dev/null; then
    rm -rf "$product/dest" "$product"/install.log*
    (cd "$product" && strace -c -f -o "$out/strace-program.txt" ./install -automate > /dev/null)
    rm -rf "$base_dest"; mkdir -p "$base_dest"
    strace -c -f -o "$out/strace-baseline.txt" sh -c \
      'cp -r "$1" "$2/" && chown -R "$3" "$2/tree" && chmod -R "$4" "$2/tree"' \
      sh "$source/tree" "$base_dest" "$owner" "$mode"
    profile_text+=$'\n### System calls, 10,000-file tree (`strace -c -f`)\n\nProgram'
    if ! grep -q fchmodat2 "$out/strace-program.txt"; then
      profile_text+=$' (this strace leaves out the calls it does not know: the\nprogram\'s `fchmodat2`, one per entry of the `Chmod` line, is not counted)'
    fi
    profile_text+=$':\n\n```\n'
    profile_text+=$(head -22 "$out/strace-program.txt")
    profile_text+=$'\n```\n\nBaseline (`cp -r`, `chown -R`, `chmod -R`):\n\n```\n'
    profile_text+=$(head -22 "$out/strace-baseline.txt")
    profile_text+=$'\n```\n'
  fi
  if command -v perf > /dev/null; then
    rm -rf "$product/dest" "$product"/install.log*
    if (cd "$product" && perf record -q -e cpu-clock -F 4999 -g -o "$out/perf.data" \
          ./install -automate > /dev/null 2>&1); then
      # Time by object (kernel or program), self time by function, then time
      # by system call (children included).
      perf report -i "$out/perf.data" --no-children --sort dso --stdio -g none 2> /dev/null |
        grep -v -e '^#' -e '^$' | sed 's/ *- *- *$//' | head -4 > "$out/perf-dso.txt" || true
      perf report -i "$out/perf.data" --no-children --sort dso,symbol --stdio -g none \
        2> /dev/null | grep -v -e '^#' -e '^$' | sed 's/ *- *- *$//' | head -15 > "$out/perf.txt" || true
      perf report -i "$out/perf.data" --children --sort symbol --stdio -g none 2> /dev/null |
        grep -E '__x64_sys_|__do_sys_|ksys_' | sed 's/ *- *- *$//' | head -16 > "$out/perf-syscalls.txt" || true
      profile_text+=$'\n### Where the program spends its time, 10,000-file tree (`perf record -e cpu-clock -g`)\n\nBy object:\n\n```\n'
      profile_text+=$(cat "$out/perf-dso.txt")
      profile_text+=$'\n```\n\nSelf time by function:\n\n```\n'
      profile_text+=$(cat "$out/perf.txt")
      profile_text+=$'\n```\n\nBy system call (total, self):\n\n```\n'
      profile_text+=$(cat "$out/perf-syscalls.txt")
      profile_text+=$'\n```\n'
    fi
  fi
}

# ---- the run -------------------------------------------------------------------

load_before=$(uptime)
for name in $trees; do measure_tree "$name"; done
load_after=$(uptime)

fmt_s() { awk -v us="$1" 'BEGIN { printf "%.3f", us / 1e6 }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
verdict() { awk -v r="$1" -v t="$2" 'BEGIN { print (r <= t ? "met" : "missed") }'; }
per_file_count() { [ -n "$1" ] && awk -v c="$1" -v n="$2" 'BEGIN { printf "%.0f", c / n }' || echo "-"; }
per_file() { awk -v us="$1" -v n="$2" 'BEGIN { printf "%.1f", us / n }'; }

{
  echo "# Install benchmark: program against cp -r + chown -R + chmod -R"
  echo
  echo "Written by \`bench/run.sh\` on $(date -u '+%Y-%m-%d %H:%M UTC'); $runs timed runs of each"
  echo "side per tree, alternating (program, baseline, ...) after one warm-up of each,"
  echo "warm cache; medians of wall time. The program runs"
  echo "\`./install -automate\` (standard output to a file) on a product whose copy"
  echo "script is MkDir, CopyDir, Chown $owner, Chmod $mode (recursive)."
  echo
  echo "## Machine"
  echo
  echo "| | |"
  echo "|---|---|"
  echo "| CPUs (nproc) | $(nproc) |"
  echo "| CPU | $(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo) |"
  echo "| memory | $(awk '/^MemTotal/ { printf "%.1f GiB", $2 / 1048576 }' /proc/meminfo) |"
  echo "| kernel | $(uname -sr) |"
  echo "| /tmp | $(findmnt -n -o FSTYPE,OPTIONS --target /tmp | awk '{ print $1 " (" $2 ")" }') |"
  echo "| scratch directory (trees and destinations) | $scratch_fs under /tmp |"
  echo "| cp | $(cp --version | sed -n 1p) |"
  echo "| load before | ${load_before#*load average: } |"
  echo "| load after | ${load_after#*load average: } |"
  echo
  echo "## Wall time"
  echo
  echo "| tree | program (s) | baseline (s) | program/baseline | target | | program peak RSS |"
  echo "|---|---:|---:|---:|---:|---|---:|"
  for name in $trees; do
    r=$(ratio "${prog_median[$name]}" "${base_median[$name]}")
    echo "| $(tree_label "$name") | $(fmt_s "${prog_median[$name]}") | $(fmt_s "${base_median[$name]}") | $r | $(tree_target "$name") | $(verdict "$r" "$(tree_target "$name")") | $(awk -v k="${peak_rss[$name]}" 'BEGIN { printf "%.1f MiB", k / 1024 }') |"
  done
  scaling=""
  for name in small1k small10k small100k; do
    [ -n "${prog_median[$name]:-}" ] && scaling+=" $name"
  done
  if [ -n "$scaling" ]; then
    echo
    echo "## Time per file"
    echo
    echo "Wall time, and the program's own processor time split into user and"
    echo "system (medians of \`/usr/bin/time\`, 10 ms resolution), and the instructions"
    echo "the program itself executes (callgrind, one run; start-up included)."
    echo
    echo "| files | program (µs/file) | program user (µs/file) | program system (µs/file) | baseline (µs/file) | program instructions per file |"
    echo "|---:|---:|---:|---:|---:|---:|"
    for name in $scaling; do
      n=$(tree_count "$name")
      echo "| $n | $(per_file "${prog_median[$name]}" "$n") | $(per_file "${user_median[$name]}" "$n") | $(per_file "${sys_median[$name]}" "$n") | $(per_file "${base_median[$name]}" "$n") | $(per_file_count "${instructions[$name]:-}" "$n") |"
    done
  fi
  if [ -n "${chunk_median[read-write]:-}" ]; then
    echo
    echo "## The floor for 8 MiB files"
    echo
    echo "The program copies in 8,192-byte chunks (documented) moved through a"
    echo "128 KiB stream buffer, cp with one \`copy_file_range\` per file."
    echo "\`bench/copy_chunks.cpp\` copies the 8 MiB tree with nothing else around"
    echo "the copy loop (medians of $runs runs):"
    echo
    echo "| copy loop | time (s) | against whole-file copy_file_range |"
    echo "|---|---:|---:|"
    for way in read-write read-write-stream range-chunk range-whole; do
      case $way in
        read-write) label="read + write, one 8,192-byte chunk at a time" ;;
        read-write-stream) label="read + write, 128 KiB stream buffer of 8,192-byte chunks (the program's loop)" ;;
        range-chunk) label="copy_file_range, 8,192 bytes" ;;
        range-whole) label="copy_file_range, whole file (cp)" ;;
      esac
      echo "| $label | $(fmt_s "${chunk_median[$way]}") | $(ratio "${chunk_median[$way]}" "${chunk_median[range-whole]}") |"
    done
  fi
  if [ -n "$profile_text" ]; then
    echo
    echo "## Profile"
    echo "$profile_text"
  fi
} > "$results"
echo "Results written to ${results#"$repo"/}"
