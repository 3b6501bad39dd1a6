#!/usr/bin/env bash
# scripts/mutants.sh [--list] [COUNT]
# Measures what the tests catch: samples COUNT faults (default 40) from the
# program's sources, spread evenly over the seven subsystem folders and four
# kinds (a flipped comparison, an off-by-one, a dropped call, a changed return
# value), puts each in turn into a scratch copy of the tree, builds it
# incrementally and runs the unit and end-to-end tests (not the fuzz replays).
# A mutant is caught when a test fails; it is unbuildable when the mutated
# code does not compile (left out of the total). Prints one line per mutant and
# the total. With --list it prints the sample and stops.
#
# The sample depends only on the sources and the seed, so a run before and a
# run after a change to the tests face the same mutants. Knobs:
#   MUTANT_SEED=1        the seed of the sample
#   MUTANT_DIR=path      the scratch directory (default: a new one under /tmp)
#   MUTANT_KEEP=1        keep the scratch directory (its build, the logs)
#
# Left out of the sample, as the tests deliberately do not pin them: debug
# log lines, and the one-line null guards at the top of functions.
set -euo pipefail
cd "$(dirname "$0")/.."
list_only=
if [ "${1:-}" = --list ]; then list_only=1; shift; fi
count=${1:-40}
seed=${MUTANT_SEED:-1}
folders=(foundation fileops settings environment questions copyscript driver)

work=${MUTANT_DIR:-$(mktemp -d /tmp/install-mutants.XXXXXX)}
# The end-to-end tests run the program as other accounts, which read the
# example product and test data from the source copy.
chmod 755 "$work"
[ -n "${MUTANT_KEEP:-}" ] || trap 'rm -rf "$work"' EXIT
src=$work/src build=$work/build
rm -rf "$src"
mkdir -p "$src"
# The tree as it stands, committed or not, without build output.
git ls-files -z --cached --others --exclude-standard |
  tar -cf - --null -T - --ignore-failed-read 2>/dev/null | tar -xf - -C "$src"

# ---- the sample ----------------------------------------------------------------

# Prints one mutant a line: file, line, column, kind, text before, text after.
sample_mutants() {
  (cd "$src" && perl - "$seed" "$count" "${folders[@]}" <<'PERL'
use strict;
use warnings;

my ($seed, $count, @folders) = @ARGV;

# xorshift32: the same sequence wherever it runs.
my $state = ($seed * 2654435761 + 1) & 0xffffffff;
$state ||= 1;
sub next_random {
  $state ^= ($state << 13) & 0xffffffff;
  $state ^= $state >> 17;
  $state ^= ($state << 5) & 0xffffffff;
  return $state;
}
sub shuffle {
  my @items = @_;
  for (my $i = $#items; $i > 0; $i--) {
    my $j = next_random() % ($i + 1);
    @items[$i, $j] = @items[$j, $i];
  }
  return @items;
}

my %flip = ('==' => '!=', '!=' => '==', '<' => '>=', '>' => '<=', '<=' => '>', '>=' => '<');
my %shift = ('<' => '<=', '<=' => '<', '>' => '>=', '>=' => '>');
my %returns = ('0' => '1', '1' => '0', '-1' => '0', 'true' => 'false', 'false' => 'true',
               'k_ok' => 'k_fail', 'k_fail' => 'k_ok', 'k_skipped' => 'k_fail');

# Candidates of one line: [column, kind, before, after].
sub candidates {
  my ($line) = @_;
  return () if $line =~ m{^\s*(//|\*|/\*|#)} || $line =~ /\b(static_assert|template|operator)\b/;
  # Literal texts blanked out, same length, so columns stay true.
  (my $code = $line) =~ s/"(?:[^"\\]|\\.)*"|'(?:[^'\\]|\\.)*'/' ' x length($&)/ge;
  $code =~ s{//.*}{' ' x length($&)}e;
  my $guard = $code =~ /^\s*if \(.*nullptr.*\) return\b/;
  my @found;
  while ($code =~ / (==|!=|<=|>=|<|>) /g) {
    my ($op, $col) = ($1, $-[1]);
    push @found, [$col, 'comparison', $op, $flip{$op}];
    push @found, [$col, 'off-by-one', $op, $shift{$op}] if $shift{$op};
  }
  while ($code =~ /([-+]) (\d+)\b/g) {
    push @found, [$-[2], 'off-by-one', $2, $2 + 1];
  }
  if ($code =~ /^(\s*)((?:[A-Za-z_]\w*(?:::|\.|->))*[A-Za-z_]\w*\(.*\);)\s*$/
      && $2 !~ /^(return|log_debug|va_end)\b/) {
    push @found, [length($1), 'dropped call', substr($line, length($1), length($2)), ';'];
  }
  if (!$guard && $code =~ /\breturn (-?\w+);/ && exists $returns{$1}) {
    push @found, [$-[1], 'return value', $1, $returns{$1}];
  }
  return @found;
}

# Each folder's candidates, shuffled, then dealt out kind by kind, each folder
# starting from the next kind, so that a small sample has every kind too.
my %queue;
for my $index (0 .. $#folders) {
  my $folder = $folders[$index];
  my %by_kind;
  for my $file (sort glob("$folder/*.cpp")) {
    next if $file =~ /_(test|bench)\.cpp$/;
    open(my $in, '<', $file) or die "$file: $!";
    while (my $line = <$in>) {
      chomp $line;
      for my $c (candidates($line)) {
        push @{$by_kind{$c->[1]}}, join("\t", $file, $., $c->[0], @$c[1 .. 3]);
      }
    }
    close $in;
  }
  my @kinds = map { [shuffle(@{$by_kind{$_}})] } sort keys %by_kind;
  push @kinds, shift @kinds for 1 .. $index % @kinds;
  my @dealt;
  while (grep { @$_ } @kinds) {
    for my $kind (@kinds) { push @dealt, shift @$kind if @$kind; }
  }
  $queue{$folder} = \@dealt;
}
# Folders take turns, so every one gets its share.
my @sample;
while (@sample < $count && grep { @{$queue{$_}} } @folders) {
  for my $folder (@folders) {
    push @sample, shift @{$queue{$folder}} if @{$queue{$folder}} && @sample < $count;
  }
}
print "$_\n" for @sample;
PERL
  )
}

# apply FILE LINE COLUMN BEFORE AFTER: writes the mutant into the source copy.
apply_mutant() {
  perl -i -pe '
    BEGIN { ($line, $col, $before, $after) = splice(@ARGV, 1, 4); }
    if ($. == $line) {
      substr($_, $col, length $before) eq $before or die "no \"$before\" at $line:$col\n";
      substr($_, $col, length $before) = $after;
    }' "$src/$1" "$2" "$3" "$4" "$5"
}

# ---- the runs ------------------------------------------------------------------

export ASAN_OPTIONS=detect_leaks=1:halt_on_error=1:abort_on_error=1:strict_string_checks=1:hard_rss_limit_mb=3000
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

build() { cmake --build "$build" -j2 > "$work/build.log" 2>&1; }

# run_suite: 0 when every unit and end-to-end test passes; stops at the first
# failure.
run_suite() {
  ctest --test-dir "$build" -j2 --timeout 300 --stop-on-failure -E '^(docs|fuzz)\.' \
    > "$work/ctest.log" 2>&1
}

first_failure() {
  grep -E 'Test +#[0-9]+: ' "$work/ctest.log" | grep -v ' Passed ' | head -n 1 |
    sed -E 's/.*Test +#[0-9]+: ([^ ]+).*/\1/'
}

mapfile -t mutants < <(sample_mutants)
if [ -n "$list_only" ]; then printf '%s\n' "${mutants[@]}"; exit 0; fi
scripts/deps.sh
echo "mutants.sh: ${#mutants[@]} mutants, seed $seed, scratch copy in $work"

cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DINSTALL_SANITIZE=ON \
  -DINSTALL_REQUIRE_TEST_TOOLS=ON > "$work/configure.log" 2>&1
build || { cat "$work/build.log"; echo "mutants.sh: the unmutated tree does not build" >&2; exit 1; }
run_suite || { cat "$work/ctest.log"; echo "mutants.sh: the unmutated tree fails its tests" >&2; exit 1; }

caught=0 survived=0 unbuildable=0 i=0
for mutant in "${mutants[@]}"; do
  IFS=$'\t' read -r file line col kind before after <<< "$mutant"
  i=$((i + 1))
  cp "$src/$file" "$work/original"
  apply_mutant "$file" "$line" "$col" "$before" "$after"
  if ! build; then
    verdict=unbuildable
    unbuildable=$((unbuildable + 1))
  elif run_suite; then
    verdict=survived
    survived=$((survived + 1))
  else
    verdict="caught by $(first_failure)"
    caught=$((caught + 1))
  fi
  cp "$work/original" "$src/$file"
  printf '%3d  %-12s %s:%s  %.50s -> %s  %s\n' "$i" "$kind" "$file" "$line" "$before" "$after" \
    "$verdict"
done
echo "mutants.sh: caught $caught of $((caught + survived)) ($survived survived, $unbuildable unbuildable left out), seed $seed"
