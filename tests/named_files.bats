#!/usr/bin/env bats
# Files the program opens by name, as root, where the web server's account
# (www-data) can plant things: the init file's RFile and WFile, the copy
# script's WFile and Ini, the log, and the product directory itself.

load test_helper
load attacker

# -check: only [remove] in install.q and install.cpy (4 errors): every run
# here is a Remove.
setup() {
  attack_setup
  chown www-data:www-data docroot
  printf 'web_root %s/docroot\nleak none\nsecret none\nname anon\n' "$PRODUCT_DIR" >> install.dat
  printf '[remove]\n' > install.q
}

@test "files read or written by name: no link of the web server's account, no FIFO, no second name, nothing without bound" {
  local in=$PRODUCT_DIR/docroot
  as_web ln -s ../outside/dir/secret.txt docroot/data
  as_web mkfifo docroot/pipe
  ln outside/dir/secret.txt docroot/linked.conf  # as www-data could with fs.protected_hardlinks=0
  head -c 1100000 /dev/zero | tr '\0' x > big
  keep_outside
  printf 'RFile %s leak - -\n' "$in/data" "$in/pipe" "$PRODUCT_DIR/big" > install.int
  printf 'RFile %s/outside/dir/secret.txt secret - -\nWFile %s/pipe name - -\n' "$PRODUCT_DIR" "$in" >> install.int
  printf 'x = $(name)\n' > conf.in
  cat > install.cpy <<'EOF'
[remove]
WFile $(web_root)/pipe        name
WFile $(web_root)/data        name
Ini   $(current_dir)/conf.in  $(web_root)/data
Ini   $(current_dir)/conf.in  $(web_root)/linked.conf
WFile $(web_root)/linked.conf name
WFile $(current_dir)/out.txt  leak
WFile $(current_dir)/root.txt secret
EOF
  talk $'3\n\n\n'
  ran_cleanly
  outside_untouched
  [[ $(cat out.txt) = none && $(cat root.txt) = secret ]]
  log_has Error "Failed to read ($in/data), Too many levels of symbolic links"
  log_has Error "Failed to read ($in/pipe), Invalid argument"
  log_has Error "Failed to read ($PRODUCT_DIR/big), File too large"
  [ "$(grep -c "Failed to write ($in/pipe), Invalid argument" install.log)" -eq 2 ]
  log_has Error "Failed to write ($in/data), Too many levels of symbolic links"
  log_has Error "Error creating ini file '$in/data', Too many levels of symbolic links"
  log_has Error "Failed to write ($in/linked.conf), Too many links"
  log_has Error "Not writing '$in/linked.conf': it has other names and other accounts can change its directory"
}

@test "the log: one line per message whatever names it records, unforeseeable rotation" {
  # A name with a line end in it, logged when a backup makes that directory.
  as_web mkdir "docroot/x"$'\n'"Sun Nov 22 10:00:00  [1] Info: forged"
  mkdir backup
  printf '[remove]\nCopyDir $(web_root) - $(current_dir)/backup\n' > install.cpy
  talk $'3\n\n\n'
  ran_cleanly
  [ -z "$(grep '^Sun Nov 22 10:00:00  \[1\] Info: forged' install.log)" ]
  grep -qF 'x\nSun Nov 22 10:00:00  [1] Info: forged' install.log

  # A directory planted at the name an unseeded rand() gives does not stop
  # the rotation.
  mkdir install.log.8469308861804289383
  head -c 1048500 /dev/zero | tr '\0' x > install.log
  talk $'3\n\n\n'
  ran_cleanly
  [[ $(head -c 5 install.log0) = xxxxx && ! -e install.log1 && -d install.log.8469308861804289383 ]]
}

# Each row: how the directory or a data file is opened | what is refused | why.
@test "as root, a product directory or data file that every account may write is refused before anything is read" {
  printf '[remove]\nWFile $(current_dir)/ran.txt name\n' > install.cpy
  while IFS='|' read -r make what why; do
    chmod 0755 .; chmod 0644 install.*; eval "$make"
    talk $'3\n\n\n'
    [ "$status" -eq 1 ]
    [ "$output" = "Error: Refusing to $what, $why" ] || { echo "$output"; return 1; }
    [[ ! -e ran.txt && ! -e install.log ]]
  done <<EOF
chmod 0777 .|run in '$PRODUCT_DIR'|every account may write to it; move the product's files to a directory that only root can write
chmod 1777 .|run in '$PRODUCT_DIR'|it is a shared temporary directory; move the product's files to a directory that only root can write
chmod 0666 install.cpy|read '$PRODUCT_DIR/install.cpy'|every account may write to it; remove that permission (chmod o-w) first
EOF
}
