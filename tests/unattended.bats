#!/usr/bin/env bats
# Unattended runs: an answers file that a run starts from and keeps the
# answers of a successful action in, the exit status that -status gives, and
# -help.

load test_helper

setup() {
  make_product_dir
  widget_product
  umask 022
  printf '%s\n' 'web_root $(current_dir)/default-root' 'app_dir widget' 'title Widget board' \
    'installed false' >> install.dat
  # An installed board makes Upgrade the default: the test sees the folders
  # the answers name. The last line stands for discovery: it overwrites an
  # answered setting, and the answers win again after it.
  printf '%s\n' 'Exist $(web_root)/$(app_dir)/index.html installed - -' \
    'Copy action upgrade installed true' 'Copy app_dir widget - -' > install.int
  local section
  for section in remove upgrade install; do
    printf '[%s]\nDir web_root - - 1 Root\nText app_dir - - 2 Folder\n' "$section"
  done > install.q
  printf 'Text title - - 3 Title\n' >> install.q  # install only
  local copy='CopyFile $(current_dir)/src/* - $(web_root)/$(app_dir)'
  printf '%s\n' '[install]' 'MkDir $(web_root)/$(app_dir)' "$copy" '[upgrade]' "$copy" \
    '[remove]' 'RmDir $(web_root)/$(app_dir) -' > install.cpy
  mkdir src keep
  chmod 700 keep
  printf 'v1\n' > src/index.html
}
teardown() { remove_product_dir; }

@test "a preseeded install, then an upgrade and a remove that find it through the answers kept" {
  printf '# preseeded\nweb_root   %s/srv\napp_dir board\n' "$PRODUCT_DIR" > keep/a
  talk "" -automate -status -answers keep/a
  ran_cleanly
  [[ "$output" == *"[Install]"*"Success 3 bytes in 2 files copied"* ]]
  [ "$(cat srv/board/index.html)" = v1 ]
  [ ! -e default-root ]
  # The preseeded lines as they stood, the answer taken by default added.
  [ "$(cat keep/a)" = "# preseeded
web_root   $PRODUCT_DIR/srv
app_dir board
title Widget board" ]
  printf 'v2\n' > src/index.html
  talk "" -automate -status -answers keep/a
  ran_cleanly
  [[ "$output" == *"[Upgrade]"*"Success 3 bytes in 1 files copied"* ]]
  [ "$(cat srv/board/index.html)" = v2 ]
  talk "" -automate -status -special remove -answers keep/a
  ran_cleanly
  [ ! -e srv/board ]
  [ -d srv ]
}

@test "the answers file is replaced whole, 0600; on a full disk the old one stays" {
  unshare -m true 2> /dev/null || skip "no private mount namespace here"
  # shellcheck disable=SC2016 # expanded by the inner shell
  run unshare -m sh -c '
    mount --make-rprivate / && mount -t tmpfs -o size=16k,mode=700 tmpfs keep || exit 9
    printf "app_dir board\n" > keep/a && chmod 644 keep/a
    $INSTALL_RUNNER ./install -automate -status -answers keep/a > /dev/null; echo "first $?"
    stat -c %a keep/a && cp keep/a kept
    dd if=/dev/zero of=keep/filler bs=1k count=64 2> /dev/null
    $INSTALL_RUNNER ./install -automate -status -answers keep/a; echo "second $?"
    cmp keep/a kept && ls -A keep'
  [ "${lines[0]}" = "first 0" ]
  [ "${lines[1]}" = 600 ]
  [ "$(cat kept)" = "app_dir board
web_root $PRODUCT_DIR/default-root
title Widget board" ]
  [[ "$output" == *"Success 3 bytes in 1 files copied"*"Error: Cannot keep the answers in 'keep/a', No space left on device"* ]]
  [ "${lines[-4]}" = "Exit status 2: Upgrade done, but Cannot keep the answers in 'keep/a', No space left on device" ]
  [ "${lines[-3]}" = "second 2" ]
  [ "${lines[-2]}" = a ]
  [ "${lines[-1]}" = filler ]
}

@test "a fixed setting in the answers is logged and passed over; an unknown or overlong line stops the run" {
  printf 'host elsewhere\napp_dir board\n' > keep/a
  talk "" -automate -status -answers keep/a
  ran_cleanly
  [ -f default-root/board/index.html ]
  log_has Error "keep/a:1: setting 'host' is fixed, its answer is ignored"
  local -A cases=(["app_dir x
web_rot /srv"]="keep/b:2: unknown setting 'web_rot'"
    ["title $(printf '%0994d' 0)"]="keep/b:1: line longer than 999 characters")
  local text
  for text in "${!cases[@]}"; do
    printf '%s\n' "$text" > keep/b
    talk "" -automate -status -answers keep/b
    [ "$status" -eq 4 ]
    [ ! -e default-root/x ]
    [ "$output" = "${cases[$text]}"$'\n'"Exit status 4: ${cases[$text]}" ]
  done
}

@test "as root, an answers file that another account placed or may change is not read" {
  chmod 755 .
  mkdir -m 1777 shared
  setpriv --reuid=www-data --regid=www-data --clear-groups sh -c 'printf "app_dir x\n" > shared/a'
  printf 'app_dir x\n' > keep/b
  chmod o+w keep/b
  local -A cases=([shared/a]="another account owns it" [keep/b]="other accounts may write to it")
  local file
  for file in "${!cases[@]}"; do
    talk "" -automate -status -answers "$file"
    [ "$status" -eq 4 ]
    [ ! -e default-root ]
    [ "$(head -n 1 "$STDOUT_FILE")" = "Cannot read answers from '$file', ${cases[$file]}" ]
  done
}

@test "-status: each exit status from a real run, and why on the last line" {
  # Each case: a change to the product (they add up), standard input,
  # arguments, status, last line that is not empty or "<Press enter...>".
  local -a cases=(
    : $'4\n' "" 0 "What would you like to do[1]? "
    : "" "-answers" 1 "Usage: install -answers <file>"
    : $'1\nq\n' "" 3 "Exit status 3: input ended before an action was chosen"
    "rm src/index.html" "" "-automate -answers keep/c" 2
    "Exit status 2: Install failed: copy line 2 ($PRODUCT_DIR/src/* -> $PRODUCT_DIR/default-root/widget): nothing matched it"
    "rm -r default-root" "" "-automate -special remove" 2
    "Exit status 2: remove failed: copy line 1 ($PRODUCT_DIR/default-root/widget): Error opening dir '$PRODUCT_DIR/default-root/', No such file or directory"
    "rm install.int" "" "" 4
    "Exit status 4: the init file '$PRODUCT_DIR/install.int' could not be loaded, Failed to read '$PRODUCT_DIR/install.int', No such file or directory"
  )
  local i
  for ((i = 0; i < ${#cases[@]}; i += 5)); do
    eval "${cases[i]}"
    # shellcheck disable=SC2086 # the arguments are words
    talk "${cases[i + 1]}" -status ${cases[i + 2]}
    [ "$status" -eq "${cases[i + 3]}" ]
    [ "$(grep -v -e '^<Press enter to exit>$' -e '^$' "$STDOUT_FILE" | tail -n 1)" = "${cases[i + 4]}" ]
    [ "${cases[i + 3]}" -eq 1 ] && continue
    # shellcheck disable=SC2086
    talk "${cases[i + 1]}" ${cases[i + 2]}
    [ "$status" -eq 0 ]
    [[ "$output" != *"Exit status"* ]]
  done
  [ ! -e keep/c ]  # a failed action keeps no answers
  # A product directory every account may write: 4 with -status (1 without,
  # and when "-status" is only the tag of -special).
  chmod o+w .
  talk "" -status
  [ "$status" -eq 4 ]
  talk "" -special -status
  [ "$status" -eq 1 ]
}

@test "-help: every option on a line, the files by the base name; no menu" {
  mv install setup
  run $INSTALL_RUNNER ./setup -automate -help -special
  [ "$status" -eq 0 ]
  [ "${lines[0]}" = "Usage: setup [option]..." ]
  local word
  for word in -debug -version -automate -check -plan '-special <tag>' '-httpd-conf <path>' \
    '-answers <file>' -status -help setup.dat setup.int setup.q setup.cpy blurb.txt setup.log; do
    [ "$(grep -c -- "^  $word  " <<< "$output")" -eq 1 ]
  done
  grep -qx '  ./setup -plan -automate   show what an unattended run would do' <<< "$output"
  [[ "$output" != *"Welcome"* ]]
  [[ "$output" != *"install."* ]]
  [ "$(awk 'length > 79' <<< "$output")" = "" ]
}
