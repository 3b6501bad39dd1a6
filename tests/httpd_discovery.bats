#!/usr/bin/env bats
# Web-server discovery at the fixed system paths, put in place inside a private
# mount namespace (the host's files are never touched); the HTTP_ init
# commands' values and failure flags are read back from WFile lines' files.

load test_helper

CANDIDATES=(/etc/apache/httpd.conf /etc/httpd/conf/httpd.conf /etc/httpd/httpd.conf
  /usr/local/apache/conf/httpd.conf /usr/local/httpd/conf/httpd.conf /usr/local/apache/etc/httpd.conf
  /usr/internet/httpd/public/conf/httpd.conf /opt/apache/conf/httpd.conf)
export SAMPLES="$INSTALL_SOURCE_DIR/tests/data/httpd" LAYOUTS="$INSTALL_SOURCE_DIR/tests/data/httpd-layouts"
VALUES=(web_user web_group web_root cgi_dir user_failed group_failed root_failed cgi_failed)

# -check: no install.q or install.cpy (2 errors), and the values and failure
# flags undeclared (8 warnings): a flag's file holds its name unless the
# look-up set it, and the runs here never get past the start-up.
setup() {
  unshare -m true 2>/dev/null || skip "private mount namespaces are not available"
  make_product_dir
  : > install.dat
  printf 'HTTP_%s %s %s - -\n' User web_user user_failed Group web_group group_failed \
    Root web_root root_failed Scripts cgi_dir cgi_failed > install.int
  for name in "${VALUES[@]}"; do echo "WFile out.$name $name - -" >> install.int; done
}
teardown() { remove_product_dir; }

# Runs SETUP, then ./install -automate "${args[@]}", where /etc, /usr and /opt
# are overlays without any known layout and with the platforms' server accounts.
# SETUP may `place N FILE` at candidate N, or copy a `layout NAME` into place.
run_in_namespace() {
  rm -rf layers out.* install.log && mkdir layers
  run env CANDIDATE_LIST="${CANDIDATES[*]}" unshare -m bash -c '
    set -e
    mount --make-rprivate /
    mount -t tmpfs tmpfs layers
    for top in etc usr opt; do
      mkdir -p "layers/$top.upper" "layers/$top.work"
      mount -t overlay overlay \
        -o "lowerdir=/$top,upperdir=$PWD/layers/$top.upper,workdir=$PWD/layers/$top.work" "/$top"
    done
    rm -rf /etc/apache /etc/httpd /usr/local/apache /usr/local/httpd /usr/internet /opt/apache \
      /etc/apache2 /usr/local/apache2 /usr/local/etc/apache24 /opt/homebrew /usr/local/etc/httpd
    printf "%s\n" apache:x:48:48::/:/bin/false http:x:980:980::/:/bin/false \
      wwwrun:x:981:982::/:/bin/false www:x:80:80::/:/bin/false _www:x:70:70::/:/bin/false >> /etc/passwd
    printf "%s\n" apache:x:48: http:x:980: www:x:80: _www:x:70: >> /etc/group
    candidates=($CANDIDATE_LIST)
    place() { mkdir -p "$(dirname "${candidates[$1 - 1]}")"; cp "$2" "${candidates[$1 - 1]}"; }
    layout() { for top in "$LAYOUTS/$1"/*/; do cp -a "$top" /; done; }
    eval "$1"
    exec timeout 60 $INSTALL_RUNNER ./install -automate "${args[@]}" < /dev/null
  ' run_in_namespace "$1"
}

# The values, the failure flags (their names when not set), the first message.
found() {
  local name line=
  for name in "${VALUES[@]}"; do line+="$(cat "out.$name")|"; done
  echo "$line$(grep -m1 '^ERROR: ' <<< "$output")"
}

@test "the places are probed in order, and the first that opens is read" {
  run_in_namespace "place 8 $SAMPLES/no-cgi.conf; place 5 $SAMPLES/upstream-default.conf"
  [ "$status" -eq 0 ]
  [ "$(found)" = "daemon|daemon|/usr/local/apache2/htdocs|/usr/local/apache2/cgi-bin/|user_failed|group_failed|root_failed|cgi_failed|" ]
  diff <(grep -o 'Is Httpd conf?\[.*\]' install.log) <(printf 'Is Httpd conf?[%s]\n' "${CANDIDATES[@]:0:5}")
}

@test "real-world files and stock layouts: the values each server runs with, or the failure" {
  local cgid='ln -s ../mods-available/cgid.load /etc/apache2/mods-enabled/cgid.load'
  # The web server's account links a root-only file into an included directory.
  local planted='chmod 1777 /etc/apache2/conf-enabled; mkdir -m 700 /etc/secret;'
  planted+=' echo "DocumentRoot /var/www/planted" > /etc/secret/root.conf;'
  planted+=' setpriv --reuid=www-data --regid=www-data --clear-groups ln -s /etc/secret/root.conf /etc/apache2/conf-enabled/zz.conf'
  local blocking='mkdir -p /etc/apache /etc/httpd/conf; mkfifo /etc/apache/httpd.conf;'
  blocking+=' ln -s /dev/zero /etc/httpd/conf/httpd.conf'
  local given="printf 'User root\nGroup root\nDocumentRoot /srv/given\nScriptAlias /cgi-bin/ /srv/cgi/\n'"
  given+=" > given.conf; layout debian; args=(-httpd-conf given.conf)"
  local ok='user_failed|group_failed|root_failed|cgi_failed|'
  local failed='web_user|web_group|web_root|cgi_dir|true|true|true|true|ERROR:'
  # set-up | user | group | document root | CGI directory | failure flags | first message
  local rows=(
    "$blocking; place 3 $SAMPLES/vhosts-crlf.conf|www-data|www-data|/srv/www/vhosts/shop|/srv/www/vhosts/shop/cgi-bin/|$ok"
    "place 4 $SAMPLES/no-cgi.conf|nobody|nogroup|/var/www/html|cgi_dir|user_failed|group_failed|root_failed|true|ERROR: Could not find, ScriptAlias"
    "place 6 $SAMPLES/legacy-group-number.conf|$failed Group '#-1' has bad uid '-1'"
    "place 7 $SAMPLES/distro-envvars.conf|$failed User '\${APACHE_RUN_USER}' has bad uid '-1'"
    "place 8 $SAMPLES/upstream-default.conf|daemon|daemon|/usr/local/apache2/htdocs|/usr/local/apache2/cgi-bin/|$ok"
    "$given|root|root|/srv/given|/srv/cgi/|$ok"
    "layout debian|www-data|www-data|/var/www/html|cgi_dir|user_failed|group_failed|root_failed|true|ERROR: Could not find, ScriptAlias"
    "layout debian; $planted|www-data|www-data|/var/www/html|cgi_dir|user_failed|group_failed|root_failed|true|ERROR: Could not find, ScriptAlias"
    "layout redhat|apache|apache|/var/www/html|/var/www/cgi-bin/|$ok"
    "layout arch|http|http|/srv/http|/srv/http/cgi-bin/|$ok"
    "layout opensuse|wwwrun|www|/srv/www/htdocs|/srv/www/cgi-bin/|$ok"
    "layout alpine|apache|apache|/var/www/localhost/htdocs|/var/www/localhost/cgi-bin/|$ok"
    "layout freebsd|www|www|/usr/local/www/apache24/data|/usr/local/www/apache24/cgi-bin/|$ok"
    "layout source-build|daemon|daemon|/usr/local/apache2/htdocs|/usr/local/apache2/cgi-bin/|$ok"
    "layout homebrew-arm|_www|_www|/opt/homebrew/var/www|/opt/homebrew/var/www/cgi-bin/|$ok"
    "layout homebrew-intel|_www|_www|/usr/local/var/www|/usr/local/var/www/cgi-bin/|$ok"
    "layout panel|apache|apache|/var/www/html|/var/www/cgi-bin/|$ok"
    "layout debian; $cgid|www-data|www-data|/var/www/html|/usr/lib/cgi-bin/|$ok"
  )
  local row prepare expected
  for row in "${rows[@]}"; do
    IFS='|' read -r prepare expected <<< "$row"
    run_in_namespace "$prepare"
    [ "$status" -eq 0 ] || { echo "$prepare: status $status, $output"; false; }
    [ "$(found)" = "$expected" ] || { echo "$prepare: $(found)"; false; }
  done
  log_has Info "User [www-data] found in /etc/apache2/apache2.conf:115"
  log_has Info "ScriptAlias [/usr/lib/cgi-bin/] found in /etc/apache2/conf-enabled/serve-cgi-bin.conf:11"
}

@test "-httpd-conf without a path prints its usage and exits 1" {
  run program -automate -httpd-conf
  [ "$status" -eq 1 ]
  [ "$output" = "Usage: install -httpd-conf <path>" ]
}
