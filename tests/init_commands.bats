#!/usr/bin/env bats
# Start-up: install.dat and the init file's commands, whose results are read
# back from the files that WFile lines write.

load test_helper

# -check: no install.q or install.cpy (2 errors), and the settings the init
# commands fill undeclared (warnings): these tests run only the start-up.
setup() {
  make_product_dir
  printf 'product Widget\nyear_format %%Y\nkept unchanged\n' > install.dat
}
teardown() { remove_product_dir; }

@test "each init command fills its setting before the menu" {
  mkdir app
  printf 'line one\nline two\n' > in.txt
  : > empty.txt
  printf '%s\n' 'Exist $(current_dir)/app found - -' 'Exist $(current_dir)/nothing none - -' \
    'Copy copied product - -' 'Copy literal no_such_setting - -' 'TimeDate year_format year - -' \
    'RFile $(current_dir)/in.txt read - -' 'RFile $(current_dir)/empty.txt kept - -' > install.int
  for name in found none copied literal year read kept; do echo "WFile out.$name $name - -"; done >> install.int
  run program -plan -automate < /dev/null  # says what it would write, writes nothing
  [ "$status" -eq 0 ]
  [[ "$output" == *$'\nPlan: the start-up would write "Widget" (6 bytes) to out.copied\n'* ]]
  [ -z "$(ls out.* 2> /dev/null)" ]
  run program -automate < /dev/null
  [ "$status" -eq 0 ]
  # As they are, no line end added.
  [ "$(cat out.found out.none out.copied out.literal out.kept)" = "truefalseWidgetno_such_settingunchanged" ]
  [ "$(cat out.year)" = "$(date +%Y)" ]
  [ "$(cat out.read)" = "$(printf 'line one\nline two\n')" ]
}

@test "without its .dat file the run ends quietly; without its .int file, with a message" {
  mv install.dat saved.dat
  talk '' -automate
  ran_cleanly
  [ ! -s "$STDOUT_FILE" ]
  log_has Error "Error opening '$PRODUCT_DIR/install.dat' for read, No such file or directory"
  mv saved.dat install.dat
  talk ''
  local path="$PRODUCT_DIR/install.int"
  [ "$output" = "Error: Failed to load init file '$path', Failed to read '$path', No such file or directory"$'\n\n<Press enter to exit>' ]
}
