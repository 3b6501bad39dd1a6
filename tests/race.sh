#!/usr/bin/env bash
# Race test: while root runs CopyDir, Chown, Chmod, a backup CopyDir and
# RmDir over a tree of a few thousand files that the web server's account
# (www-data) owns, a process of that account swaps the tree's directories for
# links to a root-owned stand-in tree outside it, and back, in a tight loop.
# After every trial nothing outside the tree may have changed (owner, mode,
# contents, existence), and the backup may hold nothing read from outside.
#
#   tests/race.sh [TRIALS]        (as root; TRIALS defaults to 200)
#
# INSTALL_BIN names the program (default: build-bench/install when built,
# else build-asan/install). Everything happens on a tmpfs mounted in a
# private mount namespace, so the host is untouched. Takes a few minutes,
# so it is not part of scripts/test.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
trials=${1:-200}

if [ "${RACE_INSIDE:-}" != 1 ]; then
  [ "$(id -u)" -eq 0 ] || { echo "tests/race.sh: run as root" >&2; exit 1; }
  getent passwd www-data >/dev/null || { echo "tests/race.sh: no www-data account" >&2; exit 1; }
  bin=${INSTALL_BIN:-}
  if [ -z "$bin" ]; then
    bin=$PWD/build-asan/install
    [ -x build-bench/install ] && bin=$PWD/build-bench/install
  fi
  [ -x "$bin" ] || { echo "tests/race.sh: build the program first ($bin)" >&2; exit 1; }
  scratch=$(mktemp -d /tmp/install-race.XXXXXX)
  trap 'rm -rf "$scratch"' EXIT
  RACE_INSIDE=1 INSTALL_BIN=$bin unshare -m --propagation private "$0" "$trials" "$scratch"
  exit $?
fi
scratch=$2
mount -t tmpfs -o size=1g,mode=0755 install-race "$scratch"
cd "$scratch"

dirs=12
files=250  # per directory: 3,000 files in all

# ---- the stand-in outside, the tree's template, the product -----------------
mkdir -p outside template/board src
for d in $(seq -w 1 $dirs); do
  mkdir -p "outside/d$d" "template/board/d$d" "src/d$d"
  for f in $(seq 1 $files); do
    printf 'outside-secret\n' > "outside/d$d/f$f"
    printf 'page %s\n' "$f" > "template/board/d$d/f$f"
  done
  printf 'new\n' > "src/d$d/f1"
done
chmod -R go-rwx outside
chown -R www-data:www-data template/board
outside_state() { (cd outside && find . -printf '%p %U:%G %m %y %s\n' | sort && find . -type f -exec md5sum {} + | sort); }
before=$(outside_state)

mkdir product
cp "$INSTALL_BIN" product/install
cat > product/install.dat <<EOF
product Race
web_root $scratch/docroot
src $scratch/src
backup $scratch/backup
EOF
printf '# nothing\n' > product/install.int
printf '[race]\n' > product/install.q
cat > product/install.cpy <<'EOF'
[race]
CopyDir $(src)/*            - $(web_root)/board
Chown   $(web_root)/board   - www-data:www-data
Chmod   $(web_root)/board   - 777
CopyDir $(web_root)/board   - $(backup)
RmDir   $(web_root)/board/* -
EOF

# ---- the attacker: swaps each directory for a link to outside and back -----
cat > swapper.pl <<'EOF'
use strict;
my ($board, $outside, $dirs) = @ARGV;
my @names = map { sprintf "d%02d", $_ } 1 .. $dirs;
while (1) {
  for my $d (@names) {
    my $dir = "$board/$d";
    next unless rename $dir, "$dir.real";
    symlink "$outside/$d", $dir;
    for (1 .. 50) { }  # leave the link there a moment
    unlink $dir;
    rename "$dir.real", $dir;
  }
}
EOF
chmod 755 . swapper.pl

failed=0
for trial in $(seq 1 "$trials"); do
  rm -rf docroot backup
  mkdir -p docroot backup
  cp -a template/board docroot/board
  chmod 755 docroot
  setpriv --reuid=www-data --regid=www-data --clear-groups \
    perl swapper.pl "$scratch/docroot/board" "$scratch/outside" "$dirs" &
  attacker=$!
  (cd product && ./install -automate -special race < /dev/null > run.out 2>&1) || true
  kill "$attacker"
  wait "$attacker" 2>/dev/null || true
  now=$(outside_state)
  if [ "$now" != "$before" ]; then
    echo "trial $trial: the stand-in outside changed:"
    diff <(echo "$before") <(echo "$now") | head -5 || true
    failed=$((failed + 1))
    chown -R root:root outside && chmod -R go-rwx outside
    before=$(outside_state)
  fi
  if grep -rqs outside-secret backup; then
    echo "trial $trial: the backup holds text read from outside"
    failed=$((failed + 1))
  fi
done
refused=$(grep -c 'Not following symbolic link\|Error opening dir' product/install.log || true)
echo "$trials trials, $failed with something outside changed or read; $refused refusals logged over the run"
[ "$failed" -eq 0 ]
