#!/usr/bin/env bats
# The example product installed unattended on a host with Debian's stock web
# server (cgid enabled), then served by it. The server is Debian's own
# binaries and configuration, unpacked from the archive's packages that
# scripts/deps.sh keeps in $INSTALL_DEB_CACHE (never installed on this host),
# put at their real paths in a private mount and network namespace where /etc,
# /usr, /var and /run are overlays, listening on 127.0.0.1 only. The product's
# install.dat holds no Debian value: everything Debian-specific must come from
# discovery.

load test_helper

DEB_CACHE=${INSTALL_DEB_CACHE:-/var/tmp/install-debs}
EXAMPLE="$INSTALL_SOURCE_DIR/examples"

setup() {
  unshare -mn true 2>/dev/null || skip "private mount and network namespaces are not available"
  make_product_dir
  cp -r "$EXAMPLE"/{install.dat,install.int,install.q,install.cpy,blurb.txt,cgi-bin,conf,data,htdocs} .
  mkdir server
  local deb
  for deb in apache2 apache2-bin libapache2-mod-php8.2; do
    set -- "$DEB_CACHE/${deb}_"*.deb
    [ -f "$1" ] || { echo "no $deb package in $DEB_CACHE: run scripts/deps.sh"; return 1; }
    dpkg-deb -x "$1" server
  done
}
teardown() { remove_product_dir; }

# The inside of the namespace: the server as Debian's postinst scripts leave
# it (default modules, confs and site; PHP with the prefork MPM it needs; cgid
# added), started; then the installer; then what the server answers and who
# owns what, written to report.txt.
serve_and_install() {
  unshare -mn bash -c '
    set -e
    server=$PWD/server
    mount --make-rprivate /
    ip link set lo up
    mkdir layers
    mount -t tmpfs tmpfs layers
    for top in etc usr var run; do
      mkdir -p "layers/$top.upper" "layers/$top.work"
      mount -t overlay overlay \
        -o "lowerdir=/$top,upperdir=$PWD/layers/$top.upper,workdir=$PWD/layers/$top.work" "/$top"
    done
    for top in etc usr var; do cp -a "$server/$top/." "/$top/"; done
    cd /etc/apache2
    enable() { [ ! -f "$1-available/$2" ] || ln -s "../$1-available/$2" "$1-enabled/$2"; }
    for module in mpm_prefork authz_core authz_host auth_basic access_compat authn_core authn_file \
        authz_user alias dir autoindex env mime negotiation setenvif filter deflate status \
        reqtimeout cgid php8.2; do
      enable mods "$module.load"
      enable mods "$module.conf"
    done
    for conf in charset localized-error-pages other-vhosts-access-log security serve-cgi-bin; do
      enable conf "$conf.conf"
    done
    enable sites 000-default.conf
    sed -i "s/^Listen 80\$/Listen 127.0.0.1:80/" ports.conf
    apache2ctl start
    trap "apache2ctl stop" EXIT
    for _ in $(seq 100); do curl -s -o /dev/null http://127.0.0.1/ && break; sleep 0.1; done
    cd "$OLDPWD"
    $INSTALL_RUNNER ./install -automate < /dev/null > install.out
    {
      stat -c "%U:%G %a %n" /var/lib/noticeboard /usr/lib/cgi-bin/noticeboard.cgi \
        /var/www/html/noticeboard/index.php
      curl -s -o /dev/null -w "%{http_code} board\n" http://127.0.0.1/noticeboard/
      curl -s -o /dev/null -w "%{http_code} %{redirect_url}\n" \
        -d "note=pinned+through+the+server" http://127.0.0.1/cgi-bin/noticeboard.cgi
      curl -s http://127.0.0.1/noticeboard/ > board.html
    } > report.txt
  '
}

@test "Debian's stock server with cgid: the board is installed where it serves it, and it answers" {
  run serve_and_install
  echo "$output"
  [ "$status" -eq 0 ]
  cat install.out
  ! grep -q '^ERROR' install.out
  diff - report.txt <<'EOF'
www-data:www-data 770 /var/lib/noticeboard
root:root 755 /usr/lib/cgi-bin/noticeboard.cgi
root:root 644 /var/www/html/noticeboard/index.php
200 board
303 http://127.0.0.1/noticeboard/?posted=1
EOF
  # The page ran as PHP and shows the note that the CGI script stored.
  grep -qF "<title>Notes on $(hostname)</title>" board.html
  grep -qF "pinned through the server" board.html
  ! grep -qF '<?php' board.html
  log_has Info "ScriptAlias [/usr/lib/cgi-bin/] found in /etc/apache2/conf-enabled/serve-cgi-bin.conf:11"
}
