#!/usr/bin/env bash
# seeds.sh TARGET OUTDIR: puts the seed inputs of one fuzz target into OUTDIR:
# its own inputs from fuzz/corpus/TARGET (the cases only a fuzzer needs) and
# the real files the tests and the example product already hold, read from
# where they live, so no copy of them is kept here.
set -euo pipefail
cd "$(dirname "$0")/.."
target=$1 out=$2
mkdir -p "$out"
[ -d "fuzz/corpus/$target" ] && cp fuzz/corpus/"$target"/* "$out"/

# A section-file input: the section's name on the first line, then the file.
with_sections() {
  local file=$1 section
  for section in install upgrade remove backup; do
    grep -qix "\[$section\]" "$file" || continue
    { echo "$section"; cat "$file"; } > "$out/example-$section"
  done
}

case $target in
  copy_script) with_sections examples/install.cpy ;;
  question_file) with_sections examples/install.q ;;
  init_file) cp examples/install.int "$out/example.int" ;;
  runtime_settings | answers) cp examples/install.dat "$out/example.dat" ;;
  httpd_conf)
    find tests/data -name '*.conf' -type f | while read -r conf; do
      cp "$conf" "$out/$(echo "${conf#tests/data/}" | tr / _)"
    done ;;
esac
