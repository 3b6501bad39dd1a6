#!/usr/bin/env bash
# Runs the given program on a scratch copy of the example product:
# interactively on a terminal, unattended otherwise. With no web server on
# the host, everything it installs stays inside the scratch copy.
set -euo pipefail
program="$(realpath "$1")"
root="$(cd "$(dirname "$0")/.." && pwd)"
scratch="$root/scratch/demo"
rm -rf "$scratch"
mkdir -p "$scratch"
cp -a "$root/examples/." "$scratch/"
rm -rf "$scratch/tests" "$scratch/checks"  # the example's own tests and checks are not part of the product
cp "$program" "$scratch/install"
cd "$scratch"
echo "Running the example product in $scratch"
if [ -t 0 ] && [ -t 1 ]; then
  exec ./install
else
  exec ./install -automate
fi
