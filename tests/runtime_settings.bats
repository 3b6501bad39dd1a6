#!/usr/bin/env bats
# The run-time settings file (<base>.dat): its lines reach the settings store
# at start-up, references between them are resolved once, and a missing file
# ends the run quietly.

load test_helper

setup() {
  make_product_dir
  widget_product
}
teardown() { remove_product_dir; }

@test "each line of the .dat file is added in order after the four built-ins" {
  printf '%s\r\n' '# a comment is no setting' '' \
    '  web_root   /srv/www   ' 'greeting	Hello,  world' 'lonely' 'host elsewhere' >> install.dat
  talk '' -automate
  [ "$status" -eq 0 ]
  log_has Info "host=$(hostname)"
  log_has Info "current_dir=$PRODUCT_DIR"
  log_has Debug "Adding 'product'='Widget'"
  log_has Debug "Adding 'web_root'='/srv/www'"
  log_has Debug "Adding 'greeting'='Hello,  world'"
  log_has Debug "Adding 'lonely'=''"
  log_has Debug "Adding 'host'='elsewhere'"
  ! grep -q "comment" install.log
  # The built-in rows come first, then the file's rows in file order.
  run grep -oE "Ini setting '[a-z_]+' setup" install.log
  [ "${lines[*]//Ini setting /}" = "'host' setup 'system_dir' setup 'current_dir' setup 'action' setup 'product' setup 'web_root' setup 'greeting' setup 'lonely' setup 'host' setup" ]
}

@test "references resolve once at start; one that refers to itself ends with an error" {
  printf '%s\n' 'web_root /srv/www' 'app_dir $(WEB_ROOT)/board' 'ping $(pong)' 'pong $(ping)' >> install.dat
  talk '' -automate
  [ "$status" -eq 0 ]
  log_has Debug "Replaced '\$(WEB_ROOT)' in '\$(WEB_ROOT)/board' with '/srv/www' = '/srv/www/board'"
  log_has Error "References in setting 'ping' never resolve, value left as '\$(pong)'"
  log_has Debug "Finished processing replacable settings"
  grep -q "Welcome to the Widget installer" "$STDOUT_FILE"
}

@test "a missing .dat file ends the run quietly" {
  rm install.dat
  talk '' -automate
  [ "$status" -eq 0 ]
  [ ! -s "$STDOUT_FILE" ]
  [ ! -s "$STDERR_FILE" ]
  log_has Error "Error opening '$PRODUCT_DIR/install.dat' for read, No such file or directory"
  ! grep -q "Processing replacable settings" install.log
}
