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

# Runs ./install -automate with each "N=FILE" argument's file at candidate N
# (1 to 8); every candidate path is emptied first.
run_with_confs() {
  local placements=()
  local arg
  for arg in "$@"; do
    placements+=("${CANDIDATES[$((${arg%%=*} - 1))]}=${arg#*=}")
  done
  mkdir layers
  run unshare -m bash -c '
    set -e
    mount --make-rprivate /
    mount -t tmpfs tmpfs layers
    for top in etc usr opt; do
      mkdir -p "layers/$top.upper" "layers/$top.work"
      mount -t overlay overlay \
        -o "lowerdir=/$top,upperdir=$PWD/layers/$top.upper,workdir=$PWD/layers/$top.work" "/$top"
      mountpoint -q "/$top"
    done
    rm -rf /etc/apache /etc/httpd /usr/local/apache /usr/local/httpd /usr/internet /opt/apache
    for placement in "$@"; do
      mkdir -p "$(dirname "${placement%%=*}")"
      cp "${placement#*=}" "${placement%%=*}"
    done
    exec $INSTALL_RUNNER ./install -automate < /dev/null
  ' run_with_confs "${placements[@]}"
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
