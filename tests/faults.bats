#!/usr/bin/env bats
# Faults met on the way: a full disk, files that cannot be read or written, a
# log that cannot be written, input that ends or runs long, broken data files.
# Each ends with a clear message, status 0, nothing on standard error.

load test_helper

setup() {
  make_product_dir
  widget_product
  umask 022
  printf 'name anon\n' >> install.dat
}
teardown() { remove_product_dir; }

as_nobody="setpriv --reuid=nobody --regid=nogroup --clear-groups"

# make_file NAME KIB LETTER: a file of KIB kibibytes of one repeated letter.
make_file() { head -c "$(($2 * 1024))" /dev/zero | tr '\0' "$3" > "$1"; }

# script SECTION LINES...: no questions and these copy lines for SECTION.
# -check: the other actions' sections are missing (4 errors): each test runs
# only SECTION.
script() { printf '[%s]\n' "$1" | tee install.q > install.cpy; shift; printf '%s\n' "$@" >> install.cpy; }

# talk_on_small_disk INPUT ARGS...: talk with docroot a 1 MiB tmpfs (full
# with SMALL_DISK_FULL=1) in a private mount namespace, then copied to installed/.
talk_on_small_disk() {
  unshare -m true 2>/dev/null || skip "private mount namespaces are not available"
  local input=$1; shift
  mkdir -p docroot installed
  STDERR_FILE="$BATS_TEST_TMPDIR/stderr" status=0
  # shellcheck disable=SC2016 # expanded by the inner shell
  output=$(printf '%s' "$input" | timeout 120 unshare -m bash -c '
    mount --make-rprivate / && mount -t tmpfs -o size=1m tmpfs docroot || exit 90
    [ -z "${SMALL_DISK_FULL:-}" ] || head -c 2M /dev/zero > docroot/filler 2>/dev/null
    status=0
    $INSTALL_RUNNER ./install "$@" || status=$?
    cp -a docroot/. installed/
    exit $status' small_disk "$@" 2> "$STDERR_FILE") || status=$?
}

@test "a disk that fills during an install: the failing file and its reason, the run stops, earlier files intact" {
  mkdir src
  local n
  for n in one two three; do make_file src/$n.bin 400 "${n:0:1}"; done
  printf 'small\n' > src/four.txt
  script install 'CopyFile $(current_dir)/src/'{one.bin,two.bin,three.bin,four.txt}' - $(current_dir)/docroot'
  talk_on_small_disk '' -automate
  ran_cleanly
  [[ "$output" == *$'Copying files[..\nError: No space left on device\n]\nFailed, ' ]]
  cmp src/one.bin installed/one.bin
  cmp src/two.bin installed/two.bin
  [ ! -e installed/four.txt ]
  log_has Error "Error writing to '$PRODUCT_DIR/docroot/three.bin', No space left on device"
  log_has Info "Stop on fail set, stopping..."
}

@test "a full disk: each file of a tree copy and each settings file fails with the reason, the run goes on" {
  local full=$PRODUCT_DIR/docroot i
  mkdir -p src/site/a src/site/b
  for i in 1 2 3; do make_file "src/site/a/file$i.bin" 8 "$i"; done
  cp src/site/a/* src/site/b/
  printf 'WFile $(current_dir)/docroot/init.txt name - -\n' > install.int
  printf 'x = $(name)\n' > conf.in
  script remove 'CopyDir $(current_dir)/src/site - $(current_dir)/docroot' \
    'WFile $(current_dir)/docroot/name.txt name' \
    'Ini $(current_dir)/conf.in $(current_dir)/docroot/conf.ini' 'WFile $(current_dir)/after.txt name'
  SMALL_DISK_FULL=1 talk_on_small_disk $'3\n\n\n'
  ran_cleanly
  [ "$(grep -c '^Error: No space left on device$' <<< "$output")" -eq 6 ]
  [ "$(cat after.txt)" = anon ]
  [ "$(grep -c "Error: Error writing to '$full/site/[ab]/file[123].bin', No space left on device$" install.log)" -eq 6 ]
  log_has Error "Failed to write ($full/init.txt), No space left on device"
  log_has Error "Failed to write ($full/name.txt), No space left on device"
  log_has Error "Error writing ini file '$full/conf.ini', No space left on device"
}

@test "unreadable sources and unwritable destinations: each reported with its reason, the rest done" {
  local dir=$PRODUCT_DIR
  mkdir -p src docroot/shut docroot/open
  printf 'public\n' > src/public.txt
  printf 'private\n' > src/private.txt
  chmod 000 src/private.txt
  chmod 555 docroot/shut
  script remove "CopyFile $dir/src/*.txt - $dir/docroot/open" "CopyFile $dir/src/public.txt - $dir/docroot/shut"
  chown -R nobody:nogroup .
  INSTALL_RUNNER="$as_nobody $INSTALL_RUNNER" talk $'3\n\n\n'
  ran_cleanly
  [[ $(grep -c '^Error: Permission denied$' <<< "$output") -eq 2 ]]
  [[ $output == *$'\n Success 1 files removed\n'* ]]
  [ "$(cat docroot/open/public.txt)" = public ]
  [[ -f docroot/open/private.txt && ! -s docroot/open/private.txt ]]  # left empty, as documented
  [ ! -e docroot/shut/public.txt ]
  log_has Error "Error opening '$dir/src/private.txt' for read, Permission denied"
  log_has Error "Error opening '$dir/docroot/shut/public.txt' for write, Permission denied"
}

# Each row: how the log is made unusable | who runs the program.
@test "a log that cannot be written costs only the log" {
  # -check: no [upgrade] or [remove] sections (4 errors): this test only runs Install.
  printf '[install]\nText name - - 1 Your name\n' > install.q
  printf '[install]\nWFile $(current_dir)/name.txt name\n' > install.cpy
  talk $'1\nSam\n\n\n'
  local usable=$output
  while IFS='|' read -r make runner; do
    rm -rf install.log name.txt
    eval "$make"
    INSTALL_RUNNER="$runner $INSTALL_RUNNER" talk $'1\nSam\n\n\n'
    ran_cleanly
    [ "$output" = "$usable" ] || { echo "$make: $output"; return 1; }
    [ "$(cat name.txt)" = Sam ]
  done <<EOF
mkdir install.log|
ln -s /dev/full install.log|
touch install.log; chmod 600 install.log; chmod 777 .|$as_nobody
EOF
}

# Each row: input (BIG a line of a mebibyte) | how the output ends | whether
# the copy ran | how often an answer was refused.
@test "end of input at each kind of prompt, and a line of a mebibyte at the menu and each question" {
  # -check: no [upgrade] or [remove] sections (4 errors): this test only runs Install.
  printf 'sure yes\nplace /tmp\n' >> install.dat
  printf '[install]\nText name - - 1 Your name\nYN sure - - 2 Sure\nDirExist place - - 3 Where\n' > install.q
  printf '[install]\nWFile $(current_dir)/ran.txt name\n' > install.cpy
  local menu=$'\n1. Install Widget\n2. Upgrade Widget\n3. Remove Widget\n4. Exit\nWhat would you like to do[1]? '
  local copied=$'Copying files[]\nSuccess 0 bytes in 1 files copied\n\n<Press enter to exit>'
  while IFS='|' read -r input ending ran refused; do
    rm -f ran.txt
    printf -v input '%b' "${input//BIG/$(head -c 1048576 /dev/zero | tr '\0' x)}"
    printf -v ending '%b' "${ending//MENU/$menu}"
    talk "$input"
    ran_cleanly
    [[ "$output" == *"${ending//COPIED/$copied}" ]] || { echo "$output"; return 1; }
    [ "$([ -e ran.txt ] && wc -c < ran.txt || echo no)" = "$ran" ]
    [ "$(grep -c 'That is not a recognised option\|You must answer either Yes or No' <<< "$output")" -eq "$refused" ]
  done <<'EOF'
1\n\n|Sure [y]? MENU\n<Press enter to exit>|no|0
1\n\n\n|Where [/tmp]? MENU\n<Press enter to exit>|no|0
1\n\n\n\n|Do you want to change your answers [n]? COPIED|4|0
1\n\n\n\nn\n|COPIED|4|0
BIG\n4\n\n|MENU\n<Press enter to exit>|no|1
1\nBIG\nBIG\n\n\nBIG\n\n|COPIED|999|1
EOF
  log_has Info "End of input at 'sure', taken as 'q'"
  log_has Info "End of input at 'place', taken as 'q'"
}

# Each data file in turn is empty, or lacks its final line end (binary data
# is the fuzz targets' part).
@test "empty and unterminated data files" {
  # -check: no [upgrade] or [remove] sections (4 errors) and 'greeting' undeclared,
  # besides what the emptied file lacks: the files are broken on purpose.
  local file kind
  for file in install.dat install.int install.q install.cpy blurb.txt; do
    for kind in empty unterminated; do
      printf 'product Widget\nname anon\n' > install.dat
      printf 'Copy greeting name - -\n' > install.int
      printf '[install]\nText name - - 1 Your name\n' > install.q
      printf '[install]\nWFile $(current_dir)/name.txt greeting\n' > install.cpy
      printf 'Thanks, $(name)\n' > blurb.txt
      rm -f name.txt install.log
      if [ $kind = empty ]; then : > "$file"; else printf '%s' "$(cat "$file")" > "$file"; fi
      talk $'1\n\n\n\n'
      ran_cleanly || { echo "$file $kind"; return 1; }
      [[ "$output" == *$'\n<Press enter to exit>' ]] || { echo "$file $kind: $output"; return 1; }
      [[ $kind != unterminated || $(cat name.txt) = anon ]] || { echo "$file: $(cat name.txt)"; return 1; }
      [[ $kind != unterminated || $file != blurb.txt || $output == *$'\nThanks, anon\n'* ]]
    done
  done
}
