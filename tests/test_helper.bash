# Shared set-up for the end-to-end tests: a scratch product directory per
# test, with the program reachable as ./install inside it.
: "${INSTALL_BIN:?INSTALL_BIN must name the built program}"

make_product_dir() {
  PRODUCT_DIR=$(mktemp -d /tmp/install-e2e.XXXXXX)
  cp "$INSTALL_BIN" "$PRODUCT_DIR/install"
  cd "$PRODUCT_DIR"
}

remove_product_dir() {
  cd /
  [ -n "${PRODUCT_DIR:-}" ] && rm -rf "$PRODUCT_DIR"
}

# The log's stamped line shape: 20 characters of time, two blanks, [pid].
log_line_pattern() {
  printf '^[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2}  \\[[0-9]+\\] %s$' "$1"
}
