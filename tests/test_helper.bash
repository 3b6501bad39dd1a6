# Shared set-up for the end-to-end tests: a scratch product directory per
# test, with the program reachable as ./install inside it.
: "${INSTALL_BIN:?INSTALL_BIN must name the built program}"

# A command put before every run of the program, empty by default;
# scripts/memcheck.sh sets it to its valgrind wrapper. Tests start the program
# with `program ARGS`, or write "$INSTALL_RUNNER ./install" where another
# command (timeout, setpriv, an unshare'd shell) starts it.
INSTALL_RUNNER=${INSTALL_RUNNER:-}
export INSTALL_RUNNER

# shellcheck disable=SC2086 # the runner is a command and its arguments
program() { $INSTALL_RUNNER ./install "$@"; }

make_product_dir() {
  PRODUCT_DIR=$(mktemp -d /tmp/install-e2e.XXXXXX)
  cp "$INSTALL_BIN" "$PRODUCT_DIR/install"
  cd "$PRODUCT_DIR"
}

remove_product_dir() {
  cd /
  [ -n "${PRODUCT_DIR:-}" ] && rm -rf "$PRODUCT_DIR"
  memcheck_verdict
}

# Under scripts/memcheck.sh: fails the test when one of its runs (any run
# started in the product directory) had a memory error or leak.
memcheck_verdict() {
  local errors=${INSTALL_MEMCHECK_LOGS:-}/errors
  [ -n "${INSTALL_MEMCHECK_LOGS:-}" ] && [ -n "${PRODUCT_DIR:-}" ] && [ -f "$errors" ] || return 0
  ! grep -F "$PRODUCT_DIR" "$errors" || { echo "memcheck found errors, see the logs above"; return 1; }
}

# The log's stamped line shape: 20 characters of time, two blanks, [pid].
log_line_pattern() {
  printf '^[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2}  \\[[0-9]+\\] %s$' "$1"
}

# ---- whole dialogues ---------------------------------------------------------

# talk INPUT [ARGS...]: runs ./install ARGS with INPUT on standard input.
# Standard output goes to $STDOUT_FILE (also in $output, trailing line ends
# cut), standard error to $STDERR_FILE; the exit status is in $status.
talk() {
  local input=$1
  shift
  STDOUT_FILE="$BATS_TEST_TMPDIR/stdout"
  STDERR_FILE="$BATS_TEST_TMPDIR/stderr"
  WANT_FILE="$BATS_TEST_TMPDIR/want"
  : > "$WANT_FILE"
  status=0
  # shellcheck disable=SC2086 # the runner is a command and its arguments
  printf '%s' "$input" | timeout 60 $INSTALL_RUNNER ./install "$@" > "$STDOUT_FILE" 2> "$STDERR_FILE" || status=$?
  output=$(cat "$STDOUT_FILE")
}

# want TEXT...: appends the texts, as they are, to the expected output.
want() { printf '%s' "$@" >> "$WANT_FILE"; }

want_banner() {
  local rule
  printf -v rule '%54s' ''
  rule=${rule// /=}
  want "$rule"$'\n' "             Welcome to the $1 installer"$'\n' \
    $' You will be asked a series of questions, for each a\n' \
    $' default answer will be provided (thus), to accept the\n' \
    $' default simply press <enter>, otherwise enter a new\n' \
    $' answer and press <enter>\n' "$rule"$'\n'
}

want_menu() { want $'\n' "1. Install $1"$'\n' "2. Upgrade $1"$'\n' "3. Remove $1"$'\n' "4. Exit"; }

want_choice_prompt() { want $'\nWhat would you like to do['"$1"']? '; }

want_press_enter() { want $'\n<Press enter to exit>'; }

# want_opening [DEFAULT]: Widget's banner, its menu and the choice prompt.
want_opening() { want_banner Widget; want_menu Widget; want_choice_prompt "${1:-1}"; }

# The menu again, after an action ended early.
want_menu_again() { want_menu Widget; want_choice_prompt 1; }

# The run ended with status 0 and nothing on standard error.
ran_cleanly() {
  [ "$status" -eq 0 ] || { echo "status $status"; cat "$STDERR_FILE"; return 1; }
  [ ! -s "$STDERR_FILE" ] || { cat "$STDERR_FILE"; return 1; }
}

# The run ended with status 0, nothing on standard error (sanitizer
# reports land there), and standard output exactly as wanted.
check_dialogue() {
  ran_cleanly || return 1
  diff -u "$WANT_FILE" "$STDOUT_FILE"
}

# A product called Widget that checks clean: an init file that does nothing,
# and the three actions' sections, empty, in the question file and the copy
# script. Tests add lines to install.dat and write over the files they need.
widget_product() {
  printf 'product Widget\n' > install.dat
  printf '# no start-up commands\n' > install.int
  printf '[%s]\n' install upgrade remove | tee install.q > install.cpy
}

# example_product_confined: the example product in a new product directory,
# run with every path of the host but that directory read-only (a private
# mount namespace), so that a write outside the folder fails the run.
example_product_confined() {
  unshare -m true 2>/dev/null || skip "private mount namespaces are not available"
  make_product_dir
  cp -r "$INSTALL_SOURCE_DIR"/examples/{install.dat,install.int,install.q,install.cpy,blurb.txt} .
  cp -r "$INSTALL_SOURCE_DIR"/examples/{cgi-bin,conf,data,htdocs} .
  # shellcheck disable=SC2016 # expanded by the confined shell
  printf '%s\n' '#!/bin/sh' 'mount --make-rprivate / && mount --bind "$PWD" "$PWD" &&' \
    '  mount -o bind,remount,ro / && cd "$PWD" && exec "$@"' > "$BATS_TEST_TMPDIR/confine"
  chmod +x "$BATS_TEST_TMPDIR/confine"
  INSTALL_RUNNER="unshare -m $BATS_TEST_TMPDIR/confine $INSTALL_RUNNER"
  umask 022
}

# log_has LEVEL MESSAGE: the log holds a stamped line that reads exactly
# "LEVEL: MESSAGE" after its stamp.
log_has() {
  sed 's/^[^[]*\[[0-9]*\] //' install.log | grep -qxF -- "$1: $2" ||
    { echo "no log line '$1: $2'"; return 1; }
}

# owner_mode PATH: "user:group mode" of PATH.
owner_mode() { stat -c '%U:%G %a' "$1"; }
