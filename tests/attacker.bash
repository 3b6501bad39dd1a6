# Shared set-up of the attack tests, run as root: outside/ stands for root's
# files elsewhere, which no attack may change; docroot/ is a tree the web
# server's account (www-data) may write into; as_web runs its steps.

attack_setup() {
  [ "$(id -u)" -eq 0 ] || skip "the program runs as root here"
  getent passwd www-data >/dev/null || skip "no www-data account"
  make_product_dir
  widget_product
  umask 022
  chmod 0755 .
  mkdir -p outside/dir docroot
  printf 'secret\n' > outside/dir/secret.txt
  chmod 0600 outside/dir/secret.txt
}
teardown() { remove_product_dir; }

as_web() { setpriv --reuid=www-data --regid=www-data --clear-groups "$@"; }

web_file() { as_web sh -c 'printf %s "$2" > "$1"' - "$1" "$2"; }  # web_file NAME TEXT

# keep_outside notes every path below outside/ (owner, mode, kind, size,
# link target, digest); outside_untouched compares.
snapshot_outside() {
  find outside -printf '%p %U:%G %m %y %s %l\n' | sort
  find outside -type f -exec md5sum {} + | sort
}
keep_outside() { OUTSIDE_BEFORE=$(snapshot_outside); }
outside_untouched() { diff <(echo "$OUTSIDE_BEFORE") <(snapshot_outside); }
