#!/usr/bin/env bats
# Web-server discovery through the real program: httpd.conf files are put at
# the fixed candidate paths inside a private mount namespace, where /etc, /usr
# and /opt are overlays whose changes vanish with the namespace. The host's
# own files are never touched. Settings are observed through WFile lines.

load test_helper

CANDIDATES=(
  /etc/apache/httpd.conf
  /etc/httpd/conf/httpd.conf
  /etc/httpd/httpd.conf
  /usr/local/apache/conf/httpd.conf
  /usr/local/httpd/conf/httpd.conf
  /usr/local/apache/etc/httpd.conf
  /usr/internet/httpd/public/conf/httpd.conf
  /opt/apache/conf/httpd.conf
)
SAMPLES="$INSTALL_SOURCE_DIR/tests/data/httpd"
LAYOUTS="$INSTALL_SOURCE_DIR/tests/data/httpd-layouts"

setup() {
  unshare -m true 2>/dev/null || skip "private mount namespaces are not available"
  make_product_dir
  printf '%s\n' web_user web_group web_root cgi_dir > install.dat
  printf '%s false\n' user_failed group_failed root_failed cgi_failed >> install.dat
  cat > install.int <<'EOF'
HTTP_User web_user user_failed - -
HTTP_Group web_group group_failed - -
HTTP_Root web_root root_failed - -
HTTP_Scripts cgi_dir cgi_failed - -
EOF
  for name in web_user web_group web_root cgi_dir user_failed group_failed root_failed cgi_failed; do
    echo "WFile out.$name $name - -" >> install.int
  done
}
teardown() { remove_product_dir; }

# Runs PREPARE (shell text) and then ./install -automate ARGS... inside a
# private mount namespace whose /etc, /usr and /opt are overlays, with every
# candidate and every other known layout emptied first. The accounts of the
# platforms' servers are added to the namespace's passwd and group files, so
# their lookups are real. "$@" of PREPARE is the list of extra words given
# after "--".
run_in_namespace() {
  local prepare=$1
  shift
  mkdir layers
  run unshare -m bash -c '
    set -e
    prepare=$1
    shift
    mount --make-rprivate /
    mount -t tmpfs tmpfs layers
    for top in etc usr opt; do
      mkdir -p "layers/$top.upper" "layers/$top.work"
      mount -t overlay overlay \
        -o "lowerdir=/$top,upperdir=$PWD/layers/$top.upper,workdir=$PWD/layers/$top.work" "/$top"
      mountpoint -q "/$top"
    done
    rm -rf /etc/apache /etc/httpd /usr/local/apache /usr/local/httpd /usr/internet /opt/apache \
      /etc/apache2 /usr/local/apache2 /usr/local/etc/apache24 /opt/homebrew /usr/local/etc/httpd
    printf "%s\n" apache:x:48:48::/:/bin/false http:x:980:980::/:/bin/false \
      wwwrun:x:981:982::/:/bin/false www:x:80:80::/:/bin/false _www:x:70:70::/:/bin/false >> /etc/passwd
    printf "%s\n" apache:x:48: http:x:980: www:x:80: _www:x:70: >> /etc/group
    args=()
    while [ $# -gt 0 ] && [ "$1" != "--" ]; do args+=("$1"); shift; done
    [ $# -gt 0 ] && shift
    eval "$prepare"
    exec $INSTALL_RUNNER ./install -automate "${args[@]}" < /dev/null
  ' run_in_namespace "$prepare" "$@"
}

# Runs ./install -automate with each "N=FILE" argument's file at candidate N
# (1 to 8); every candidate path is emptied first.
run_with_confs() {
  local placements=()
  local arg
  for arg in "$@"; do
    placements+=("${CANDIDATES[$((${arg%%=*} - 1))]}=${arg#*=}")
  done
  run_in_namespace '
    for placement in "$@"; do
      mkdir -p "$(dirname "${placement%%=*}")"
      cp "${placement#*=}" "${placement%%=*}"
    done' -- "${placements[@]}"
}

# Runs ./install -automate on the stock layout LAYOUT (a folder of
# tests/data/httpd-layouts holding real paths), after the shell text SETUP.
run_with_layout() {
  run_in_namespace 'for top in "$1"/*/; do cp -a "$top" /; done; eval "$2"' \
    -- "$LAYOUTS/$1" "${2:-}"
}

# What the web-server commands printed (the banner and menu are left out).
errors() { grep '^ERROR: ' <<< "$output" || true; }

# The four values and the failure flags, one line.
found() {
  local flags
  flags="$(cat out.user_failed),$(cat out.group_failed),$(cat out.root_failed),$(cat out.cgi_failed)"
  echo "$(cat out.web_user)|$(cat out.web_group)|$(cat out.web_root)|$(cat out.cgi_dir)|$flags"
}

full_conf() {
  printf 'User root\nGroup root\nDocumentRoot "/srv/%s/htdocs"\nScriptAlias /cgi-bin/ "/srv/%s/cgi-bin/"\n' "$1" "$1" > "$1.conf"
}

@test "only the eighth candidate exists: seven probes logged, the eighth read" {
  full_conf eighth
  run_with_confs 8=eighth.conf
  [ "$status" -eq 0 ]
  [ "$(errors)" = "" ]
  [ "$(found)" = "root|root|/srv/eighth/htdocs|/srv/eighth/cgi-bin/|false,false,false,false" ]
  diff <(grep -o 'Is Httpd conf?\[.*\]' install.log) \
       <(printf 'Is Httpd conf?[%s]\n' "${CANDIDATES[@]}")
  grep -q "Httpd conf is \[/opt/apache/conf/httpd.conf\]" install.log
}

@test "only the first candidate that opens is read; a missing directive sets its flag" {
  printf 'User root\nGroup root\nDocumentRoot /srv/second\n' > second.conf
  full_conf fifth
  run_with_confs 2=second.conf 5=fifth.conf
  [ "$status" -eq 0 ]
  [ "$(errors)" = "ERROR: Could not find, ScriptAlias" ]
  [ "$(found)" = "root|root|/srv/second|cgi_dir|false,false,false,true" ]
  grep -q "Is Httpd conf?\[/etc/httpd/conf/httpd.conf\]" install.log
  ! grep -q "Is Httpd conf?\[/etc/httpd/httpd.conf\]" install.log
  # User, group and root come from the one scan; ScriptAlias scans again.
  [ "$(grep -c 'Httpd conf is \[/etc/httpd/conf/httpd.conf\]' install.log)" -eq 2 ]
}

@test "real-world, broken and missing configurations" {
  head -c 65536 /dev/urandom | tr -d 'A-Za-z' > "$PRODUCT_DIR/binary.conf"
  # candidate | file | values and flags | first message
  local rows=(
    "4|upstream-default.conf|daemon|daemon|/usr/local/apache2/htdocs|/usr/local/apache2/cgi-bin/|false,false,false,false|"
    "1|vhosts-crlf.conf|www-data|www-data|/srv/www/vhosts/shop|/srv/www/vhosts/shop/cgi-bin/|false,false,false,false|"
    "2|no-cgi.conf|nobody|nogroup|/var/www/html|cgi_dir|false,false,false,true|ERROR: Could not find, ScriptAlias"
    "6|legacy-group-number.conf|web_user|web_group|web_root|cgi_dir|true,true,true,true|ERROR: Group '#-1' has bad uid '-1'"
    "8|distro-envvars.conf|web_user|web_group|web_root|cgi_dir|true,true,true,true|ERROR: User '\${APACHE_RUN_USER}' has bad uid '-1'"
    "-|none|web_user|web_group|web_root|cgi_dir|true,true,true,true|ERROR: Cannot find httpd.conf file"
    "3|$PRODUCT_DIR/binary.conf|web_user|web_group|web_root|cgi_dir|true,true,true,true|ERROR: Could not find, Group, User, DocumentRoot, ScriptAlias"
  )
  local row index file expected
  for row in "${rows[@]}"; do
    IFS='|' read -r index file expected <<< "$row"
    rm -rf layers out.* install.log
    [[ "$file" == /* ]] || file="$SAMPLES/$file"
    if [ "$index" = "-" ]; then run_with_confs; else run_with_confs "$index=$file"; fi
    echo "$file: $(found)|$(errors | head -1)"
    [ "$status" -eq 0 ]
    [ "$(found)|$(errors | head -1)" = "$expected" ]
  done
}

@test "the stock layouts of today's hosts: the values each server runs with" {
  local cgid='ln -s ../mods-available/cgid.load /etc/apache2/mods-enabled/cgid.load'
  local cgi='ln -s ../mods-available/cgi.load /etc/apache2/mods-enabled/cgi.load'
  # The web server's account plants a link in a directory an include reads,
  # to a root-only file that would make its own directory the document root.
  local planted='chmod 1777 /etc/apache2/conf-enabled; mkdir -m 700 /etc/secret;'
  planted+=' echo "DocumentRoot /var/www/planted" > /etc/secret/root.conf;'
  planted+=' setpriv --reuid=www-data --regid=www-data --clear-groups ln -s /etc/secret/root.conf /etc/apache2/conf-enabled/zz.conf'
  # layout | set-up | values and flags | first message
  local rows=(
    "debian||www-data|www-data|/var/www/html|cgi_dir|false,false,false,true|ERROR: Could not find, ScriptAlias"
    "debian|$planted|www-data|www-data|/var/www/html|cgi_dir|false,false,false,true|ERROR: Could not find, ScriptAlias"
    "debian|$cgid|www-data|www-data|/var/www/html|/usr/lib/cgi-bin/|false,false,false,false|"
    "debian|$cgi|www-data|www-data|/var/www/html|/usr/lib/cgi-bin/|false,false,false,false|"
    "redhat||apache|apache|/var/www/html|/var/www/cgi-bin/|false,false,false,false|"
    "arch||http|http|/srv/http|/srv/http/cgi-bin/|false,false,false,false|"
    "opensuse||wwwrun|www|/srv/www/htdocs|/srv/www/cgi-bin/|false,false,false,false|"
    "alpine||apache|apache|/var/www/localhost/htdocs|/var/www/localhost/cgi-bin/|false,false,false,false|"
    "freebsd||www|www|/usr/local/www/apache24/data|/usr/local/www/apache24/cgi-bin/|false,false,false,false|"
    "source-build||daemon|daemon|/usr/local/apache2/htdocs|/usr/local/apache2/cgi-bin/|false,false,false,false|"
    "homebrew-arm||_www|_www|/opt/homebrew/var/www|/opt/homebrew/var/www/cgi-bin/|false,false,false,false|"
    "homebrew-intel||_www|_www|/usr/local/var/www|/usr/local/var/www/cgi-bin/|false,false,false,false|"
    "panel||apache|apache|/var/www/html|/var/www/cgi-bin/|false,false,false,false|"
  )
  local row layout prepare expected
  for row in "${rows[@]}"; do
    IFS='|' read -r layout prepare expected <<< "$row"
    rm -rf layers out.* install.log
    run_with_layout "$layout" "$prepare"
    echo "$layout $prepare: $(found)|$(errors | head -1)"
    [ "$status" -eq 0 ]
    [ "$(found)|$(errors | head -1)" = "$expected" ]
  done
}

@test "Debian with cgid: each place probed, each value logged with the line it came from" {
  run_with_layout debian 'ln -s ../mods-available/cgid.load /etc/apache2/mods-enabled/cgid.load'
  [ "$status" -eq 0 ]
  [ "$(errors)" = "" ]
  diff <(grep -o 'Is Httpd conf?\[.*\]' install.log | sort -u) \
       <(printf 'Is Httpd conf?[%s]\n' "${CANDIDATES[@]}" /etc/apache2/apache2.conf | sort -u)
  log_has Info "User [www-data] found in /etc/apache2/apache2.conf:115"
  log_has Info "Group [www-data] found in /etc/apache2/apache2.conf:116"
  log_has Info "DocumentRoot [/var/www/html] found in /etc/apache2/sites-enabled/000-default.conf:12"
  log_has Info "ScriptAlias [/usr/lib/cgi-bin/] found in /etc/apache2/conf-enabled/serve-cgi-bin.conf:11"
  # One reading found all four: the later requests are answered from the cache.
  [ "$(grep -c 'Reading httpd conf \[/etc/apache2/apache2.conf\]' install.log)" -eq 1 ]
}

@test "a FIFO or a device at a candidate is skipped at once, never waited on" {
  full_conf third
  run_in_namespace '
    mkdir -p /etc/apache /etc/httpd/conf /etc/httpd
    mkfifo /etc/apache/httpd.conf
    ln -s /dev/zero /etc/httpd/conf/httpd.conf
    cp third.conf /etc/httpd/httpd.conf'
  [ "$status" -eq 0 ]
  [ "$(found)" = "root|root|/srv/third/htdocs|/srv/third/cgi-bin/|false,false,false,false" ]
  log_has Debug "Not a regular file, skipped [/etc/apache/httpd.conf]"
  log_has Debug "Not a regular file, skipped [/etc/httpd/conf/httpd.conf]"
}

@test "-httpd-conf names the main file: read as the server reads it, no place probed" {
  mkdir -p conf/parts
  # No ServerRoot: includes are taken from the main file's directory.
  printf 'Define ROOT /srv/given\nInclude parts/*.conf\nUser root\n' > conf/main.conf
  printf 'Group root\nDocumentRoot ${ROOT}/htdocs\nScriptAlias /cgi-bin/ "${ROOT}/cgi-bin/"\n' > conf/parts/a.conf
  mkfifo fifo.conf
  # path given | values and flags | first message
  local rows=(
    "conf/main.conf|root|root|/srv/given/htdocs|/srv/given/cgi-bin/|false,false,false,false|"
    "fifo.conf|web_user|web_group|web_root|cgi_dir|true,true,true,true|ERROR: Cannot find httpd.conf file"
    "no-such.conf|web_user|web_group|web_root|cgi_dir|true,true,true,true|ERROR: Cannot find httpd.conf file"
  )
  local row given expected
  for row in "${rows[@]}"; do
    IFS='|' read -r given expected <<< "$row"
    rm -f out.* install.log
    run timeout 60 $INSTALL_RUNNER ./install -automate -httpd-conf "$given" < /dev/null
    echo "$given: $(found)|$(errors | head -1)"
    [ "$status" -eq 0 ]
    [ "$(found)|$(errors | head -1)" = "$expected" ]
    ! grep -q 'Is Httpd conf?' install.log
    log_has Info "Httpd conf given [$given]"
  done
  log_has Error "Cannot read httpd conf [no-such.conf]"
  run program -automate -httpd-conf
  [ "$status" -eq 1 ]
  [ "$output" = "Usage: install -httpd-conf <path>" ]
}
