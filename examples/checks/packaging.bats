#!/usr/bin/env bats
# Checks of the product's data files: the installer's own -check, run on a
# scratch copy of the product, and the one thing it leaves to the product,
# that the files the copy script takes from this folder are here.

load helpers

# The built program: INSTALL_BIN when given, else ./install in this folder
# (where the README puts it), else the build tree's.
installer() {
    local candidate
    for candidate in "${INSTALL_BIN:-}" "$PRODUCT_DIR/install" "$PRODUCT_DIR/../build/install"; do
        [ -n "$candidate" ] && [ -x "$candidate" ] && { echo "$candidate"; return; }
    done
    echo "no built program: set INSTALL_BIN or put it in $PRODUCT_DIR as install" >&2
    return 1
}

@test "install -check finds nothing in the product's files" {
    local program scratch="$BATS_TEST_TMPDIR/product"
    program=$(installer)
    mkdir "$scratch"
    cp -r "$PRODUCT_DIR"/. "$scratch"
    # Not the product: its own tests and checks, and what a run here left.
    rm -rf "$scratch"/{tests,checks,scratch,backups,install.log*}
    cp "$program" "$scratch/install"
    cd "$scratch"
    run ./install -check
    [ "$status" -eq 0 ] || { echo "status $status: $output"; false; }
    [ "$output" = "0 errors, 0 warnings" ]
}

missing_sources() {
    local source
    for source in $(section_lines "$PRODUCT_DIR/install.cpy" | awk '{ print $2 }' |
        grep '^\$(current_dir)/' | sed 's|^\$(current_dir)/||'); do
        compgen -G "$PRODUCT_DIR/$source" >/dev/null || echo "$source"
    done
    return 0
}

# Not a -check matter: a copy source is the host's file when a run gets there.
@test "files the copy script takes from the product folder are here" {
    run missing_sources
    [ -z "$output" ] || { echo "missing: $output"; false; }
    [ -f "$PRODUCT_DIR/data/welcome.txt" ]
}
