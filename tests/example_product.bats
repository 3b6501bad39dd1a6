#!/usr/bin/env bats
# The example product installed, upgraded, backed up and removed by the real
# program. Without a web server the product keeps everything in the scratch
# folder of its own directory, so each test works on a copy of it.

load test_helper

EXAMPLE="$INSTALL_SOURCE_DIR/examples"
HTTPD_CONFS=(
  /etc/apache/httpd.conf /etc/httpd/conf/httpd.conf /etc/httpd/httpd.conf
  /usr/local/apache/conf/httpd.conf /usr/local/httpd/conf/httpd.conf
  /usr/local/apache/etc/httpd.conf /usr/internet/httpd/public/conf/httpd.conf
  /opt/apache/conf/httpd.conf /etc/apache2/apache2.conf /etc/apache2/httpd.conf
  /usr/local/apache2/conf/httpd.conf /usr/local/etc/apache24/httpd.conf
  /opt/homebrew/etc/httpd/httpd.conf /usr/local/etc/httpd/httpd.conf
)

setup() {
  [ -f "$EXAMPLE/install.dat" ] || skip "no example product in $EXAMPLE"
  local conf
  for conf in "${HTTPD_CONFS[@]}"; do
    [ ! -e "$conf" ] || skip "a web server is configured here ($conf); the example would install into it"
  done
  make_product_dir
  cp -a "$EXAMPLE/." .
  rm -rf tests scratch backups install.log*
  cp "$INSTALL_BIN" install
  umask 022
}
teardown() { remove_product_dir; }

BOARD=scratch/htdocs/noticeboard

# Every path that the copy script worked on, and every directory the run
# made, lies inside the product directory.
check_stayed_inside() {
  local paths
  paths=$(sed -n -e 's/^.*Debug: Processing \[[0-9]*:\(.*\)\]$/\1/p' \
    -e "s/^.*Debug: Directory created '\(.*\)'$/\1/p" install.log |
    tr ',' '\n' | sed 's/->/\n/' | grep '^/' || true)
  [ -n "$paths" ]
  local outside
  outside=$(grep -v "^$PRODUCT_DIR/" <<< "$paths" || true)
  [ -z "$outside" ] || { echo "outside the product directory: $outside"; return 1; }
}

install_board() {
  talk '' -automate
  check_stayed_inside
}

@test "an unattended install puts the board, its script and its notes in the scratch folder" {
  install_board
  [ "$status" -eq 0 ]
  [ ! -s "$STDERR_FILE" ]
  [[ "$output" == *$'4. Exit\n[Install]\nCopying files['* ]]
  [[ "$output" =~ \]$'\n'Success\ [0-9]+\ bytes\ in\ [0-9]+\ files\ copied$'\n' ]]
  [[ "$output" == *"Thank you for choosing Noticeboard 1.1."* ]]
  [[ "$output" != *"<Press enter to exit>"* ]]

  cmp "$BOARD/index.php" htdocs/index.php
  cmp "$BOARD/images/pin.svg" htdocs/images/pin.svg
  [ -f "$BOARD/.htaccess" ]
  [ "$(cat $BOARD/VERSION)" = 1.1 ]
  grep -qxF "title = \"Notes on $(hostname)\"" "$BOARD/config.ini"
  grep -qxF "data_dir = \"$PRODUCT_DIR/scratch/data\"" scratch/cgi-bin/noticeboard.ini
  [ "$(owner_mode scratch/cgi-bin/noticeboard.cgi)" = "root:root 755" ]
  [ ! -e scratch/cgi-bin/notes.cgi ]
  cmp scratch/data/welcome.txt data/welcome.txt
  [ -d scratch/data/held ]
}

@test "a second unattended run upgrades the board and keeps the old settings" {
  install_board
  rm install.log
  talk '' -automate
  [ "$status" -eq 0 ]
  check_stayed_inside
  [[ "$output" == *$'4. Exit\n[Upgrade]\nCopying files['* ]]
  [[ "$output" =~ \]$'\n'Success\ [0-9]+\ bytes\ in\ [0-9]+\ files\ copied$ ]]
  [ -f "$BOARD/config.ini.old" ]
  grep -qxF 'previous_version = "1.1"' "$BOARD/config.ini"
  cmp "$BOARD/index.php" htdocs/index.php
  [ "$(cat $BOARD/VERSION)" = 1.1 ]
}

@test "upgrading where there is no board names the missing path and changes nothing" {
  mkdir -p scratch/htdocs
  talk $'2\n\n\n\n\n'
  [ "$status" -eq 0 ]
  [[ "$output" == *"What would you like to do[1]? [Upgrade]"* ]]
  [[ "$output" == *"Error: No board found in $PRODUCT_DIR/scratch/htdocs/noticeboard; choose Install instead"$'\n'* ]]
  [[ "$output" != *"Copying files["* ]]
  [ -z "$(ls scratch/htdocs)" ]
}

@test "remove, with upgrade as the default, takes the board and script and keeps the notes" {
  install_board
  rm install.log
  talk $'3\n\n\n\n\n\n\n\n\n'
  [ "$status" -eq 0 ]
  check_stayed_inside
  [[ "$output" == *"What would you like to do[2]? [Remove]"* ]]
  [[ "$output" =~ Removing\ files\[\.+\]$'\n'\ Success\ [0-9]+\ files\ removed$'\n' ]]
  [ ! -e "$BOARD" ]
  [ -z "$(ls scratch/cgi-bin)" ]
  cmp scratch/data/welcome.txt data/welcome.txt
}

@test "-special backup copies the notes into a dated folder" {
  install_board
  rm install.log
  talk '' -automate -special backup
  [ "$status" -eq 0 ]
  check_stayed_inside
  [[ "$output" =~ \[backup\]$'\n'Executing\[\.+\]$'\n'\ Success\ [0-9]+\ files\ done\.$ ]]
  local copies=(backups/notes-*)
  [ "${#copies[@]}" -eq 1 ]
  [[ "${copies[0]}" =~ ^backups/notes-[0-9]{8}-[0-9]{6}$ ]]
  cmp "${copies[0]}/welcome.txt" data/welcome.txt
}
