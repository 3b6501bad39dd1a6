#!/usr/bin/env bats
# The example product run by the real program: installed, upgraded, backed
# up and removed in a copy of its folder, with no web server configuration
# to be read and every other path of the host read-only, so that a write
# outside the folder fails the run.

load ../../tests/test_helper

setup() { example_product_confined; }
teardown() { remove_product_dir; }

# board INPUT [ARGS...]: a run with the web server's configuration missing.
board() {
  local input=$1
  shift
  talk "$input" -httpd-conf no-such.conf "$@"
  ran_cleanly
  [ "$(grep -c '^ERROR: Cannot find httpd.conf file$' "$STDOUT_FILE")" -eq 4 ]
}

@test "install, upgrade, backup and remove the board, all inside its folder" {
  local site=scratch/htdocs/noticeboard
  board '' -automate
  [[ "$output" == *$'4. Exit\n[Install]\nCopying files[.'*$'.]\nSuccess '*$' files copied\n'* ]]
  [[ "$output" == *$'\n\nThank you for choosing Noticeboard 1.1.\n'* ]]
  [[ "$output" != *"<Press enter to exit>"* ]]
  cmp "$site/index.php" htdocs/index.php
  cmp "$site/images/pin.svg" htdocs/images/pin.svg
  [ "$(cat $site/VERSION)" = 1.1 ]
  grep -qxF "title = \"Notes on $(hostname)\"" "$site/config.ini"
  grep -qxF "data_dir = \"$PRODUCT_DIR/scratch/data\"" scratch/cgi-bin/noticeboard.ini
  [ "$(owner_mode scratch/cgi-bin/noticeboard.cgi)" = "root:root 755" ]
  [ ! -e scratch/cgi-bin/notes.cgi ]
  cmp scratch/data/welcome.txt data/welcome.txt

  board '' -automate
  [[ "$output" == *$'4. Exit\n[Upgrade]\nCopying files[.'*$'.]\nSuccess '*' files copied' ]]
  grep -qxF 'previous_version = "1.1"' "$site/config.ini"
  [ -f "$site/config.ini.old" ]

  board '' -automate -special backup
  [[ "$output" == *$'=\n[backup]\nExecuting[.'*$'.]\n Success 3 files done.' ]]
  local copies=(backups/notes-*)
  [ "${#copies[@]}" -eq 1 ]
  [[ "${copies[0]}" =~ ^backups/notes-[0-9]{8}-[0-9]{6}$ ]]
  cmp "${copies[0]}/welcome.txt" data/welcome.txt

  # The menu's default is Upgrade now; five defaults, keep the notes, no changes.
  board $'3\n\n\n\n\n\n\n\n\n'
  [[ "$output" == *$'What would you like to do[2]? [Remove]\n'* ]]
  [[ "$output" == *$'Removing files[.'*$'.]\n Success 13 files removed\n\n<Press enter to exit>' ]]
  [ ! -e "$site" ]
  [ -z "$(ls scratch/cgi-bin)" ]
  cmp scratch/data/welcome.txt data/welcome.txt
}
