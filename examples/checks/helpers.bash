# Shared helpers for the product's checks: readers for the five data files
# that follow the installer's own line rules (trimmed lines, "#" comments,
# "[name]" sections compared ignoring case, fields split on blanks and tabs).

PRODUCT_DIR="$(cd "$BATS_TEST_DIRNAME/.." && pwd)"

# data_lines FILE: the trimmed lines of FILE that are neither empty nor comments.
data_lines() {
    sed -e 's/\r$//' -e 's/^[[:space:]]*//' -e 's/[[:space:]]*$//' "$1" |
        grep -v -e '^$' -e '^#' || true
}

# section_lines FILE [SECTION]: the lines of one section (any case), or of
# every section, without the headers.
section_lines() {
    data_lines "$1" | awk -v want="$(printf '%s' "${2:-}" | tr '[:upper:]' '[:lower:]')" '
        /^\[/ { name = tolower($0); sub(/^\[/, "", name); sub(/\]$/, "", name); inside = (want == "" || name == want); next }
        inside'
}

# section_names FILE: the section names of FILE, lower case, in file order.
section_names() {
    data_lines "$1" | sed -n 's/^\[\(.*\)\]$/\1/p' | tr '[:upper:]' '[:lower:]'
}

# declared_settings: the settings that exist before the init file runs.
declared_settings() {
    printf '%s\n' host system_dir current_dir action
    data_lines "$PRODUCT_DIR/install.dat" | awk '{ print $1 }'
}

# references: every name used as $(name) in the data files (comments left
# out), the blurb and the settings template.
references() {
    {
        local file
        for file in install.dat install.int install.q install.cpy; do
            data_lines "$PRODUCT_DIR/$file"
        done
        cat "$PRODUCT_DIR/blurb.txt" "$PRODUCT_DIR/conf/board.ini.in"
    } | grep -o '\$([^)]*)' | sed 's/^\$(\(.*\))$/\1/' | sort -u
}

# init_written: settings that the init file writes.
init_written() {
    data_lines "$PRODUCT_DIR/install.int" | awk '
        $1 ~ /^HTTP_/ { print $2; print $3 }
        $1 == "Copy" { print $2 }
        $1 == "Exist" || $1 == "TimeDate" || $1 == "RFile" { print $3 }'
}

# question_written: settings that the questions write.
question_written() {
    section_lines "$PRODUCT_DIR/install.q" | awk '
        tolower($1) == "exist" { print $3; next }
        tolower($1) == "loop" || tolower($1) == "error" { next }
        { print $2 }'
}

# copy_written: settings that the copy script writes.
copy_written() {
    section_lines "$PRODUCT_DIR/install.cpy" |
        awk 'tolower($1) == "exist" || tolower($1) == "rfile" { print $3 }'
}

# missing_from LIST_FILE NAMES...: prints each name missing from the list.
missing_from() {
    local list="$1"
    shift
    local name
    for name in "$@"; do
        grep -qxF -- "$name" "$list" || printf '%s\n' "$name"
    done
}
