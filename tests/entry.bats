#!/usr/bin/env bats
# The program's entry: the options that end a run with their own status, and
# where the program's files are looked for.

load test_helper

# -check: no data files at all (4 errors): these options end the run before
# any is read.
setup() { make_product_dir; }
teardown() { remove_product_dir; }

# Each row: arguments | exit status | output | times "Logging set to debug" logged.
@test "-version and a -special without its tag end the run at once, after the log opened" {
  local args want_status want_output debug
  while IFS='|' read -r args want_status want_output debug; do
    rm -f install.log
    run program $args < /dev/null
    echo "$args: status $status, output '$output'"
    [ "$status" -eq "$want_status" ]
    [ "$output" = "$want_output" ]
    grep -Eq "$(log_line_pattern "Info: Log file opened in '$PRODUCT_DIR/install.log'")" install.log
    [ "$(grep -c 'Info: Logging set to debug' install.log)" -eq "$debug" ]
  done <<'EOF'
-version -debug|0|Installer version 1.0d|0
-debug -version|0|Installer version 1.0d|1
-special|1|Usage: install -special <tag>|0
EOF
}

@test "the files are named by argv[0] up to its first dot, in the working directory" {
  mkdir bin
  mv install bin/setup.bin.1
  run $INSTALL_RUNNER bin/setup.bin.1 -version < /dev/null
  [ "$status" -eq 0 ]
  [ ! -e bin/setup.log ]
  grep -q "Info: Log file opened in '$PRODUCT_DIR/setup.log'" setup.log
}
