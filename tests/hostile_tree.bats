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

# run_harden LINES: the copy section [harden], run unattended with -special.
run_harden() {
  printf '[harden]\n%s\n' "$1" > install.cpy
  talk '' -automate -special harden
  ran_cleanly
}

# errors REASON: how often the console showed "Error: REASON".
errors() { grep -c "^Error: $1\$" <<< "$output"; }

loop="Too many levels of symbolic links"

@test "planted links: copies refuse them, walks change links themselves, removals take them, a link above a line's paths refuses the line" {
  local board=docroot/board link
  for link in $board/index.html:victim.html $board/new.html:created.html \
    $board/assets/images:dir $board/stale.bak:victim.html docroot/old:old docroot/cache:dir; do
    ln -s "$PRODUCT_DIR/outside/${link#*:}" "${link%:*}"
    chown -h www-data:www-data "${link%:*}"
  done
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
  [ "$(errors "$loop")" -eq 4 ]
  log_has Error "Error opening '$PRODUCT_DIR/$board/index.html' for write, $loop"
  log_has Error "Error opening '$PRODUCT_DIR/$board/new.html' for write, $loop"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/$board/assets/images', $loop"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/docroot/cache', $loop"
  [ "$(owner_mode $board/about.html)" = "www-data:www-data 750" ]
  [ "$(stat -c %U:%G $board/own)" = www-data:www-data ]
  [[ ! -L $board/stale.bak && ! -L docroot/old ]]
}

@test "the web server's own tree: names holding a backslash, its links after an owner change to root, its FIFO; nothing outside is reached" {
  chown -R www-data:www-data docroot/board
  local board=docroot/board
  mkdir outside/dir/www
  keep_outside
  as_web mkdir "$board/..\\..\\outside\\dir"
  web_file "$board/..\\..\\outside\\dir/secret.txt" mine
  web_file "$board/..\\..\\outside\\victim.html" mine
  web_file "$board/lnk\\secret.txt" mine
  as_web ln -s "$PRODUCT_DIR/outside/dir" $board/lnk
  as_web ln -s "$PRODUCT_DIR/outside/victim.html" $board/steal.html
  as_web mkfifo $board/wait.html
  run_harden 'Chown $(web_root)/board - root:root
Chmod $(web_root)/board - 640
CopyFile $(src)/*.html - $(web_root)/board/lnk/www
MkDir $(web_root)/board/lnk/made
CopyDir $(web_root)/board - $(backup)
RmFile $(web_root)/board/*.html -
RmDir $(web_root)/board -'
  outside_untouched
  log_has Info "Leaving link '$PRODUCT_DIR/$board/lnk' to its owner"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/$board/steal.html', $loop"
  [[ $(errors "$loop") -eq 4 && $(errors "Invalid argument") -eq 1 ]]
  [ "$(cat "backup/board/..\\..\\outside\\dir/secret.txt")" = mine ]
  [ "$(cat "backup/board/lnk\\secret.txt")" = mine ]
  [ -z "$(grep -rl victim backup)" ]
  [ ! -e $board ]
}

@test "a second name for root's file, made by the web server's account, is neither re-owned, re-moded nor written" {
  chown -R www-data:www-data docroot/board
  printf 'shared\n' > outside/shared.txt
  chmod 666 outside/shared.txt  # so that fs.protected_hardlinks lets www-data link it
  keep_outside
  as_web ln outside/shared.txt docroot/board/index.html
  run_harden 'Chown $(web_root)/board - www-data:www-data
Chmod $(web_root)/board - 600
CopyFile $(src)/index.html - $(web_root)/board'
  outside_untouched
  [ "$(errors "Too many links")" -eq 3 ]
  local name="'$PRODUCT_DIR/docroot/board/index.html'"
  local why="it has other names and other accounts can change its directory, Too many links"
  log_has Error "Not changing the owner of $name: $why"
  log_has Error "Not changing the mode of $name: $why"
  log_has Error "Not writing $name: $why"
}
