#!/usr/bin/env bats
# The program run as root on a document root that the web server's account
# (www-data) can write into, and has planted links in: links at destination
# file names, a dangling one, directory links inside the tree and above the
# paths a copy line names, a link where a directory is to be removed. Nothing
# outside the document root may be written, re-owned, re-moded or removed.

load test_helper

setup() {
  [ "$(id -u)" -eq 0 ] || skip "the program runs as root here"
  getent passwd www-data >/dev/null || skip "no www-data account"
  make_product_dir
  widget_product
  umask 022
  mkdir -p outside/dir outside/old docroot/board/assets src/assets/images src/assets/css
  printf 'victim\n' > outside/victim.html
  printf 'secret\n' > outside/dir/secret.txt
  printf 'old\n' > outside/old/keep.txt
  chmod 0600 outside/victim.html outside/dir/secret.txt
  printf 'index\n' > src/index.html
  printf 'about\n' > src/about.html
  printf 'new\n' > src/new.html
  printf 'logo\n' > src/assets/images/logo.svg
  printf 'css\n' > src/assets/css/main.css
  printf 'web_root %s/docroot\nsrc %s/src\n' "$PRODUCT_DIR" "$PRODUCT_DIR" >> install.dat
  printf '[install]\n[harden]\n' > install.q
  OUTSIDE_BEFORE=$(snapshot outside)
}
teardown() { remove_product_dir; }

# Every path below $1 with its owner, mode, size and a digest of its contents.
snapshot() {
  find "$1" -printf '%p %U:%G %m %y %s %l\n' | sort
  find "$1" -type f -exec md5sum {} + | sort
}

# plant LINK TARGET: a link made by the web server's account, as it could.
plant() {
  ln -s "$2" "$1"
  chown -h www-data:www-data "$1"
}

outside_untouched() {
  local now
  now=$(snapshot outside)
  [ "$now" = "$OUTSIDE_BEFORE" ] || { diff <(echo "$OUTSIDE_BEFORE") <(echo "$now"); return 1; }
}

@test "links planted in the document root: copies refuse them, owners and modes stay inside, removals take the links" {
  local board=docroot/board
  plant $board/index.html "$PRODUCT_DIR/outside/victim.html"
  plant $board/new.html "$PRODUCT_DIR/outside/created.html"
  plant $board/assets/images "$PRODUCT_DIR/outside/dir"
  plant $board/stale.bak "$PRODUCT_DIR/outside/victim.html"
  plant docroot/old "$PRODUCT_DIR/outside/old"
  cat > install.cpy <<'EOF'
[install]
CopyFile $(src)/*.html     -  $(web_root)/board
CopyDir  $(src)/assets     -  $(web_root)/board
Chown    $(web_root)/board -  www-data:www-data
Chmod    $(web_root)/board -  750
RmFile   $(web_root)/board/*.bak -
RmDir    $(web_root)/old   -
EOF
  talk '' -automate
  [ "$status" -eq 0 ]
  [ ! -s "$STDERR_FILE" ]
  outside_untouched
  [ ! -e outside/created.html ]

  # about.html copied; index.html and new.html refused; in assets, images
  # refused and css made with main.css.
  [ "$(cat $board/about.html)" = about ]
  [ "$(cat $board/assets/css/main.css)" = css ]
  [ -L $board/index.html ] && [ -L $board/new.html ] && [ -L $board/assets/images ]
  local reason="Too many levels of symbolic links"
  [ "$(grep -c "^Error: $reason\$" <<< "$output")" -eq 3 ]
  [[ "$output" == *$'\nSuccess '*' bytes in '*' files copied'* ]]
  log_has Error "Error opening '$PRODUCT_DIR/$board/index.html' for write, $reason"
  log_has Error "Error opening '$PRODUCT_DIR/$board/new.html' for write, $reason"
  log_has Error "Not following symbolic link '$PRODUCT_DIR/$board/assets/images', $reason"

  # The links themselves were re-owned, the files inside too; the links
  # planted at a removal's names are gone, their targets kept.
  [ "$(stat -c %U $board/assets/images)" = www-data ]
  [ "$(owner_mode $board/about.html)" = "www-data:www-data 750" ]
  [ "$(owner_mode $board/assets/css)" = "www-data:www-data 750" ]
  [ ! -e $board/stale.bak ] && [ ! -L $board/stale.bak ]
  [ ! -L docroot/old ]
  [ "$(stat -c %a install.log)" = 600 ]
  log_has Info "Copy script completed successfully"
}

@test "a link planted above the paths a copy line names refuses the whole line" {
  local board=docroot/board
  mkdir $board/data
  printf 'note\n' > $board/data/note.txt
  plant $board/cache "$PRODUCT_DIR/outside/dir"
  cat > install.cpy <<'EOF'
[harden]
CopyFile $(src)/*.html            -  $(web_root)/board/cache/pages
Chown    $(web_root)/board/cache/*  -  www-data
Chmod    $(web_root)/board/cache/*  -  777
RmFile   $(web_root)/board/cache/*  -
RmDir    $(web_root)/board/cache/*  -
MkDir    $(web_root)/board/cache/made
WFile    $(web_root)/board/cache/secret.txt  src
Rename   $(web_root)/board/cache/secret.txt  $(web_root)/board/data/stolen.txt
Chown    $(web_root)/board/data/* - www-data
EOF
  talk '' -automate -special harden
  [ "$status" -eq 0 ]
  outside_untouched
  [ ! -e outside/dir/made ] && [ ! -e $board/data/stolen.txt ]
  [ "$(stat -c %U $board/data/note.txt)" = www-data ]
  local refused="Error: Not following symbolic link '$PRODUCT_DIR/$board/cache', Too many levels of symbolic links"
  [ "$(sed 's/^[^[]*\[[0-9]*\] //' install.log | grep -cxF -- "$refused")" -eq 8 ]
  [ "$(grep -c '^Error: Too many levels of symbolic links$' <<< "$output")" -eq 8 ]
  [[ "$output" == *$'\n Success 1 files done.'* ]]
}

@test "the operator's own link on the way to the document root is followed" {
  mv docroot real-root
  ln -s real-root docroot
  printf '[install]\nCopyFile $(src)/*.html - $(web_root)/board\n' > install.cpy
  talk '' -automate
  [ "$status" -eq 0 ]
  [[ "$output" == *$'Copying files[...]\nSuccess 16 bytes in 3 files copied'* ]]
  [ "$(cat real-root/board/index.html)" = index ]
  outside_untouched
}

# ---- the web server's account attacks its own tree ---------------------------
# In these, docroot/board is www-data's (as after an install's Chown) and
# the attacker's steps run as www-data.

as_web() { setpriv --reuid=www-data --regid=www-data --clear-groups "$@"; }

let_web_in() {
  chmod 755 "$PRODUCT_DIR" docroot
  chown -R www-data:www-data docroot/board
  mkdir backup
  printf 'backup %s/backup\n' "$PRODUCT_DIR" >> install.dat
}

# web_file NAME TEXT: the web server's account writes TEXT to NAME.
web_file() { as_web sh -c 'printf %s "$2" > "$1"' - "$1" "$2"; }

# run_harden SCRIPT-LINES: runs them as the [harden] special action.
run_harden() {
  printf '[harden]\n%s\n' "$1" > install.cpy
  talk '' -automate -special harden
  ran_cleanly
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
  OUTSIDE_BEFORE=$(snapshot outside)
  as_web ln outside/shared.txt docroot/board/index.html
  run_harden 'Chown $(web_root)/board - www-data:www-data
Chmod $(web_root)/board - 600
CopyFile $(src)/index.html - $(web_root)/board'
  outside_untouched
  [ "$(grep -c '^Error: Too many links$' <<< "$output")" -eq 3 ]
  local why="it has other names and other accounts can change its directory, Too many links"
  log_has Error "Not changing the owner of '$PRODUCT_DIR/docroot/board/index.html': $why"
  log_has Error "Not changing the mode of '$PRODUCT_DIR/docroot/board/index.html': $why"
  log_has Error "Not writing '$PRODUCT_DIR/docroot/board/index.html': $why"
}

@test "an owner change to root does not turn the web server's links into root's" {
  let_web_in
  mkdir outside/dir/www
  OUTSIDE_BEFORE=$(snapshot outside)
  as_web ln -s "$PRODUCT_DIR/outside/dir" docroot/board/cache
  run_harden 'Chown $(web_root)/board - root:root
CopyFile $(src)/*.html - $(web_root)/board/cache/www
MkDir $(web_root)/board/cache/made'
  outside_untouched
  [ "$(stat -c %U docroot/board)" = root ] && [ "$(stat -c %U docroot/board/cache)" = www-data ]
  [ "$(grep -c '^Error: Too many levels of symbolic links$' <<< "$output")" -eq 2 ]
  log_has Info "Leaving link '$PRODUCT_DIR/docroot/board/cache' to its owner"
}

@test "a backup of the web server's tree reads none of its links and never waits on its FIFOs" {
  let_web_in
  web_file docroot/board/page.html page
  as_web ln -s "$PRODUCT_DIR/outside/victim.html" docroot/board/steal.html
  as_web mkfifo docroot/board/wait.html
  run_harden 'CopyDir $(web_root)/board - $(backup)'
  [ "$(cat backup/board/page.html)" = page ]
  ! grep -rq victim backup
  [[ "$output" == *$'Error: Too many levels of symbolic links\n'* ]]
  [[ "$output" == *$'Error: Invalid argument\n'* ]]
  log_has Error "Not following symbolic link '$PRODUCT_DIR/docroot/board/steal.html', Too many levels of symbolic links"
  outside_untouched
}

@test "paths too long for 255 characters fail with a message, never cut" {
  let_web_in
  local long
  long=$(printf 'n%.0s' {1..80})
  printf a > "src/${long}A"
  printf b > "src/${long}B"
  local deep
  deep=docroot/board/$(printf 'd%.0s' {1..150})
  as_web mkdir "$deep"
  web_file "$deep/$long" kept
  run_harden "CopyFile \$(src)/${long}* - $PRODUCT_DIR/$deep
Chown \$(web_root)/board - root"
  [ "$(grep -c '^Error: File name too long$' <<< "$output")" -eq 3 ]
  [ "$(ls "$deep")" = "$long" ]
  log_has Error "Error joining '$PRODUCT_DIR/$deep' and '${long}A', File name too long"
}
