#!/usr/bin/env bats
# The program's entry: file names, options, exit statuses and shut-down.

load test_helper

setup() { make_product_dir; }
teardown() { remove_product_dir; }

@test "-version prints the version and exits 0 before loading anything" {
  run program -version -debug
  [ "$status" -eq 0 ]
  [ "$output" = "Installer version 1.0d" ]
  ! grep -q "Logging set to debug" install.log
  grep -q "Info: Log file opened in '$PRODUCT_DIR/install.log'" install.log
}

@test "-debug before -version is logged first" {
  run program -debug -version
  [ "$status" -eq 0 ]
  grep -q "Info: Logging set to debug" install.log
}

@test "-special without a tag prints its usage and exits 1 after the log opened" {
  run program -special
  [ "$status" -eq 1 ]
  [ "$output" = "Usage: install -special <tag>" ]
  grep -Eq "$(log_line_pattern "Info: Log file opened in '$PRODUCT_DIR/install.log'")" install.log
}

@test "the base name comes from argv[0] cut at its first dot" {
  mv install setup.bin
  run $INSTALL_RUNNER ./setup.bin -version
  [ "$status" -eq 0 ]
  [ -f setup.log ]
  [ ! -f install.log ]
  grep -q "Log file opened in '$PRODUCT_DIR/setup.log'" setup.log
}

@test "files are looked for in the working directory, not beside the program" {
  mkdir elsewhere
  cd elsewhere
  run $INSTALL_RUNNER ../install -version
  [ "$status" -eq 0 ]
  [ -f "$PRODUCT_DIR/elsewhere/install.log" ]
}

@test "options are logged; unknown arguments are passed over" {
  run program -automate -bogus -special backup -special restore < /dev/null
  [ "$status" -eq 0 ]
  grep -q "Info: Automated install/upgrade..." install.log
  grep -q "Info: Special mode \[backup\]" install.log
  grep -q "Info: Special mode \[restore\]" install.log
}

@test "-automate never waits for enter" {
  run timeout 10 $INSTALL_RUNNER ./install -automate
  [ "$status" -eq 0 ]
  [[ "$output" != *"<Press enter to exit>"* ]]
}

@test "an unwritable log costs only the log" {
  chmod 0555 "$PRODUCT_DIR"
  run setpriv --reuid=nobody --regid=nogroup --clear-groups $INSTALL_RUNNER ./install -version
  chmod 0755 "$PRODUCT_DIR"
  [ "$status" -eq 0 ]
  [ "$output" = "Installer version 1.0d" ]
  [ ! -f install.log ]
}
