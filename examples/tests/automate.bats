#!/usr/bin/env bats
# The product run by the real installer on a host without a web server:
# installed, upgraded, backed up and removed, all inside a scratch copy of
# the product folder. Needs INSTALL_BIN (the built program); the automated
# runs are made with every other path of the host mounted read-only.

load helpers

httpd_candidates=(/etc/apache/httpd.conf /etc/httpd/conf/httpd.conf /etc/httpd/httpd.conf
    /usr/local/apache/conf/httpd.conf /usr/local/httpd/conf/httpd.conf
    /usr/local/apache/etc/httpd.conf /usr/internet/httpd/public/conf/httpd.conf
    /opt/apache/conf/httpd.conf /etc/apache2/apache2.conf /etc/apache2/httpd.conf
    /usr/local/apache2/conf/httpd.conf /usr/local/etc/apache24/httpd.conf
    /opt/homebrew/etc/httpd/httpd.conf /usr/local/etc/httpd/httpd.conf)

setup() {
    [ -x "${INSTALL_BIN:-}" ] || skip "INSTALL_BIN does not name the built installer"
    local conf
    for conf in "${httpd_candidates[@]}"; do
        [ ! -e "$conf" ] || skip "this host has a web server configuration ($conf)"
    done
    product=$(mktemp -d /tmp/noticeboard.XXXXXX)
    cp -r "$PRODUCT_DIR"/. "$product"
    rm -rf "$product/tests" "$product/scratch" "$product/backups" "$product"/install.log*
    cp "$INSTALL_BIN" "$product/install"
}

teardown() {
    [ -z "${product:-}" ] || rm -rf "$product"
}

# confined ARGS...: runs the installer in the product folder with the rest
# of the file system read-only, so that a write outside fails.
confined() {
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare -m sh -c 'dir=$1 && shift && mount --make-rprivate / && mount --bind "$dir" "$dir" &&
        mount -o bind,remount,ro / && cd "$dir" && exec ${INSTALL_RUNNER:-} ./install "$@"' confined "$product" "$@"
}

@test "an automated install on a host without a web server stays in the product folder" {
    unshare -m true 2>/dev/null || skip "no private mount namespace here"
    run confined -automate </dev/null
    [ "$status" -eq 0 ]
    [ "$(grep -c '^ERROR: Cannot find httpd.conf file$' <<<"$output")" -eq 4 ]
    [[ "$output" == *"[Install]"*"Copying files["*"Success "*" bytes in "*" files copied"* ]]
    [[ "$output" != *"Failed"* && "$output" != *"<Press enter to exit>"* ]]
    [[ "$output" == *"Thank you for choosing Noticeboard 1.1."* ]]
    local site="$product/scratch/htdocs/noticeboard"
    [ -f "$site/index.php" ] && [ -f "$site/.htaccess" ] && [ -f "$site/images/pin.svg" ]
    [ "$(cat "$site/VERSION")" = 1.1 ]
    grep -qxF "data_dir = \"$product/scratch/data\"" "$site/config.ini"
    grep -qxF 'cgi_url = "/cgi-bin/noticeboard.cgi"' "$product/scratch/cgi-bin/noticeboard.ini"
    [ "$(stat -c %a "$product/scratch/cgi-bin/noticeboard.cgi")" = 755 ]
    [ ! -e "$product/scratch/cgi-bin/notes.cgi" ]
    [ -f "$product/scratch/data/welcome.txt" ] && [ -d "$product/scratch/data/held" ]
    local outside
    outside=$(grep "Directory created '" "$product/install.log" | grep -v "Directory created '$product/" || true)
    [ -z "$outside" ]
}

# with_web_server ARGS...: like confined, with a web server configuration at
# the last of the places the installer looks, whose directories lie in the
# product folder.
with_web_server() {
    mkdir -p "$product/www/html" "$product/www/cgi-bin"
    sed -i "s|^data_dir .*|data_dir $product/www/notes|" "$product/install.dat"
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare -m sh -c 'dir=$1 && shift && mount --make-rprivate / && mount -t tmpfs tmpfs /opt &&
        mkdir -p /opt/apache/conf && printf "%s\n" "User root" "Group root" \
            "DocumentRoot \"$dir/www/html\"" "ScriptAlias /cgi-bin/ \"$dir/www/cgi-bin/\"" \
            >/opt/apache/conf/httpd.conf &&
        mount --bind "$dir" "$dir" && mount -o bind,remount,ro / && cd "$dir" && exec ${INSTALL_RUNNER:-} ./install "$@"' \
        with_web_server "$product" "$@"
}

@test "with a web server the discovered places and owners are used" {
    unshare -m true 2>/dev/null || skip "no private mount namespace here"
    run with_web_server -automate </dev/null
    [ "$status" -eq 0 ]
    [[ "$output" != *"ERROR:"* && "$output" != *"Failed"* ]]
    [[ "$output" == *"Success "*" files copied"* ]]
    grep -qF "Httpd conf is [/opt/apache/conf/httpd.conf]" "$product/install.log"
    [ -f "$product/www/html/noticeboard/index.php" ]
    [ "$(stat -c %a "$product/www/cgi-bin/noticeboard.cgi")" = 755 ]
    [ "$(stat -c %a:%U "$product/www/notes")" = 770:root ]
    [ "$(stat -c %a "$product/www/notes/welcome.txt")" = 660 ]
    [ ! -e "$product/scratch" ]
}

@test "a second automated run upgrades, and a special run backs the notes up" {
    unshare -m true 2>/dev/null || skip "no private mount namespace here"
    confined -automate </dev/null
    run confined -automate </dev/null
    [[ "$output" == *"[Upgrade]"*"Success "* ]]
    [ -f "$product/scratch/htdocs/noticeboard/config.ini.old" ]
    run confined -automate -special backup </dev/null
    [[ "$output" == *"[backup]"*"Executing["*" Success "*" files done."* ]]
    local copies=("$product"/backups/notes-*)
    [ "${#copies[@]}" -eq 1 ]
    [ -f "${copies[0]}/welcome.txt" ] && [ -d "${copies[0]}/held" ]
}

@test "remove takes the board away and keeps the notes unless asked" {
    unshare -m true 2>/dev/null || skip "no private mount namespace here"
    confined -automate </dev/null
    # Menu choice, five defaults, keep the notes, no changes, <enter> to exit.
    run confined <<<$'3\n\n\n\n\n\n\n\n\n'
    [[ "$output" == *"[Remove]"*"Removing files["*" Success "*" files removed"* ]]
    [ ! -e "$product/scratch/htdocs/noticeboard" ]
    [ ! -e "$product/scratch/cgi-bin/noticeboard.cgi" ] && [ ! -e "$product/scratch/cgi-bin/noticeboard.ini" ]
    [ -f "$product/scratch/data/welcome.txt" ]
    run confined <<<$'3\n\n\n\n'
    [[ "$output" == *"Error: No board found there, nothing to remove"* ]]
}
