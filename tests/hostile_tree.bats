#!/usr/bin/env bats
# The program run as root on a tree that the web server's account (www-data)
# owns, as after an install's Chown, and has filled with odd names, links,
# FIFOs and second names. Nothing outside it may be written, re-owned,
# re-moded, removed or read.

load test_helper
load attacker

# -check: only [harden] in install.q and install.cpy (6 errors): every run
# here is that special action.
setup() {
  attack_setup
  mkdir -p docroot/board src backup
  chown -R www-data:www-data docroot/board
  printf 'index\n' > src/index.html
  printf '%s %s/%s\n' web_root "$PRODUCT_DIR" docroot src "$PRODUCT_DIR" src \
    backup "$PRODUCT_DIR" backup >> install.dat
  printf '[harden]\n' > install.q
}

# run_harden LINES: the copy section [harden], run unattended with -special.
run_harden() {
  keep_outside
  printf '[harden]\n%s\n' "$1" > install.cpy
  talk '' -automate -special harden
  ran_cleanly
  outside_untouched
}

# errors REASON: how often the console showed "Error: REASON".
errors() { grep -c "^Error: $1\$" <<< "$output"; }

@test "names holding a backslash, a FIFO, and links that stay the web server's own through an owner change to root and refuse the lines through them" {
  local board=docroot/board loop="Too many levels of symbolic links"
  mkdir outside/dir/www
  as_web mkdir "$board/..\\..\\outside\\dir"
  web_file "$board/..\\..\\outside\\dir/secret.txt" mine
  web_file "$board/..\\..\\outside\\victim.html" mine
  web_file "$board/lnk\\secret.txt" mine
  as_web ln -s "$PRODUCT_DIR/outside/dir" $board/lnk
  as_web ln -s "$PRODUCT_DIR/outside/dir/secret.txt" $board/steal.html
  as_web mkfifo $board/wait.html
  run_harden 'Chown $(web_root)/board - root:root
Chmod $(web_root)/board - 640
CopyFile $(src)/*.html - $(web_root)/board/lnk/www
MkDir $(web_root)/board/lnk/made
CopyDir $(web_root)/board - $(backup)
RmFile $(web_root)/board/*.html -
RmDir $(web_root)/board -'
  log_has Info "Leaving link '$PRODUCT_DIR/$board/lnk' to its owner"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/$board/lnk', $loop"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/$board/steal.html', $loop"
  [[ $(errors "$loop") -eq 4 && $(errors "Invalid argument") -eq 1 ]]
  [ "$(cat "backup/board/..\\..\\outside\\dir/secret.txt")" = mine ]
  [ "$(cat "backup/board/lnk\\secret.txt")" = mine ]
  [ -z "$(grep -rlx secret backup)" ]
  [ ! -e $board ]
}

@test "a second name for root's file, made by the web server's account, is neither re-owned, re-moded nor written" {
  printf 'shared\n' > outside/shared.txt
  chmod 666 outside/shared.txt  # so that fs.protected_hardlinks lets www-data link it
  as_web ln outside/shared.txt docroot/board/index.html
  run_harden 'Chown $(web_root)/board - www-data:www-data
Chmod $(web_root)/board - 600
CopyFile $(src)/index.html - $(web_root)/board'
  [ "$(errors "Too many links")" -eq 3 ]
  local name="'$PRODUCT_DIR/docroot/board/index.html'"
  local why="it has other names and other accounts can change its directory, Too many links"
  log_has Error "Not changing the owner of $name: $why"
  log_has Error "Not changing the mode of $name: $why"
  log_has Error "Not writing $name: $why"
}
