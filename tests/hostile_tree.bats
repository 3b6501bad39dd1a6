#!/usr/bin/env bats
# The program run as root on a document root that the web server's account
# (www-data) can write into, and has planted links, second names, FIFOs and
# odd names in: at destination file names, inside the tree and above the
# paths a copy line names. Nothing outside the document root may be written,
# re-owned, re-moded, removed or read.

load test_helper
load attacker

setup() {
  attack_setup
  mkdir -p outside/old docroot/board/assets src/assets/images src/assets/css backup
  printf 'victim\n' > outside/victim.html
  printf 'old\n' > outside/old/keep.txt
  chmod 0600 outside/victim.html
  for page in index about new; do printf '%s\n' $page > src/$page.html; done
  printf 'logo\n' > src/assets/images/logo.svg
  printf 'css\n' > src/assets/css/main.css
  printf '%s %s/%s\n' web_root "$PRODUCT_DIR" docroot src "$PRODUCT_DIR" src \
    backup "$PRODUCT_DIR" backup >> install.dat
  printf '[harden]\n' > install.q
  keep_outside
}

# plant LINK TARGET: a link to outside/TARGET, made as the web server's
# account could make it.
plant() {
  ln -s "$PRODUCT_DIR/outside/$2" "$1"
  chown -h www-data:www-data "$1"
}

# As after an install's Chown: docroot/board is the web server's account's.
let_web_in() { chown -R www-data:www-data docroot/board; }

# run_harden LINES: the copy section [harden], run unattended with -special.
run_harden() {
  printf '[harden]\n%s\n' "$1" > install.cpy
  talk '' -automate -special harden
  ran_cleanly
}

loop="Too many levels of symbolic links"

@test "planted links: copies refuse them, walks change links themselves, removals take them, a link above a line's paths refuses the line" {
  local board=docroot/board
  plant $board/index.html victim.html
  plant $board/new.html created.html
  plant $board/assets/images dir
  plant $board/stale.bak victim.html
  plant docroot/old old
  plant docroot/cache dir
  ln -s "$PRODUCT_DIR/outside/dir" $board/own
  run_harden 'CopyFile $(src)/*.html     -  $(web_root)/board
CopyDir  $(src)/assets     -  $(web_root)/board
Chown    $(web_root)/board -  www-data:www-data
Chmod    $(web_root)/board -  750
RmFile   $(web_root)/board/*.bak -
RmDir    $(web_root)/old   -
MkDir    $(web_root)/cache/made'
  outside_untouched
  # about.html copied, index.html and new.html refused; in assets, images
  # refused and the walk goes on: css made with main.css.
  [[ $(cat $board/about.html) = about && $(cat $board/assets/css/main.css) = css ]]
  [[ -L $board/index.html && -L $board/new.html && -L $board/assets/images ]]
  [ "$(grep -c "^Error: $loop\$" <<< "$output")" -eq 4 ]
  log_has Error "Error opening '$PRODUCT_DIR/$board/index.html' for write, $loop"
  log_has Error "Error opening '$PRODUCT_DIR/$board/new.html' for write, $loop"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/$board/assets/images', $loop"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/docroot/cache', $loop"
  [ "$(owner_mode $board/about.html)" = "www-data:www-data 750" ]
  [ "$(stat -c %U:%G $board/own)" = www-data:www-data ]
  [[ ! -L $board/stale.bak && ! -L docroot/old ]]
}

@test "names holding a backslash, made by the web server's account, reach nothing outside its tree" {
  let_web_in
  local board=docroot/board
  as_web mkdir "$board/..\\..\\outside\\dir"
  web_file "$board/..\\..\\outside\\dir/secret.txt" mine
  web_file "$board/..\\..\\outside\\victim.html" mine
  as_web ln -s "$PRODUCT_DIR/outside/dir" $board/lnk
  web_file "$board/lnk\\secret.txt" mine
  run_harden 'Chown $(web_root)/board - root
Chmod $(web_root)/board - 640
CopyDir $(web_root)/board - $(backup)
RmFile $(web_root)/board/*.html -
RmDir $(web_root)/board -'
  outside_untouched
  [ "$(cat "backup/board/..\\..\\outside\\dir/secret.txt")" = mine ]
  [ "$(cat "backup/board/lnk\\secret.txt")" = mine ]
  [ ! -e $board ]
}

@test "a second name for root's file, made by the web server's account, is neither re-owned, re-moded nor written" {
  let_web_in
  printf 'shared\n' > outside/shared.txt
  chmod 666 outside/shared.txt  # so that fs.protected_hardlinks lets www-data link it
  keep_outside
  as_web ln outside/shared.txt docroot/board/index.html
  run_harden 'Chown $(web_root)/board - www-data:www-data
Chmod $(web_root)/board - 600
CopyFile $(src)/index.html - $(web_root)/board'
  outside_untouched
  [ "$(grep -c '^Error: Too many links$' <<< "$output")" -eq 3 ]
  local name="'$PRODUCT_DIR/docroot/board/index.html'"
  local why="it has other names and other accounts can change its directory, Too many links"
  log_has Error "Not changing the owner of $name: $why"
  log_has Error "Not changing the mode of $name: $why"
  log_has Error "Not writing $name: $why"
}

@test "the web server's links stay its own through an owner change to root; a backup reads none of them and never waits on a FIFO" {
  let_web_in
  mkdir outside/dir/www
  keep_outside
  web_file docroot/board/page.html page
  as_web ln -s "$PRODUCT_DIR/outside/dir" docroot/board/cache
  as_web ln -s "$PRODUCT_DIR/outside/victim.html" docroot/board/steal.html
  as_web mkfifo docroot/board/wait.html
  run_harden 'Chown $(web_root)/board - root:root
CopyFile $(src)/*.html - $(web_root)/board/cache/www
MkDir $(web_root)/board/cache/made
CopyDir $(web_root)/board - $(backup)'
  outside_untouched
  [ "$(stat -c %U docroot/board docroot/board/cache)" = $'root\nwww-data' ]
  log_has Info "Leaving link '$PRODUCT_DIR/docroot/board/cache' to its owner"
  [ "$(cat backup/board/page.html)" = page ]
  [ -z "$(grep -rl victim backup)" ]
  [ "$(grep -c "^Error: $loop\$" <<< "$output")" -eq 4 ]
  log_has Error "Not following symbolic link '$PRODUCT_DIR/docroot/board/steal.html', $loop"
  [[ "$output" == *$'\nError: Invalid argument\n'* ]]
}

@test "paths too long for 255 characters fail with a message, never cut" {
  let_web_in
  local long deep
  long=$(printf 'n%.0s' {1..80})
  deep=docroot/board/$(printf 'd%.0s' {1..150})
  printf a > "src/${long}A"
  printf b > "src/${long}B"
  as_web mkdir "$deep"
  web_file "$deep/$long" kept
  run_harden "CopyFile \$(src)/${long}* - $PRODUCT_DIR/$deep
Chown \$(web_root)/board - root"
  [ "$(grep -c '^Error: File name too long$' <<< "$output")" -eq 3 ]
  [ "$(ls "$deep")" = "$long" ]
  log_has Error "Error joining '$PRODUCT_DIR/$deep' and '${long}A', File name too long"
}
