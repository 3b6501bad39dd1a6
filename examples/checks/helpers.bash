# Shared helpers for the product's checks: readers for its sectioned data
# files that follow the installer's own line rules (trimmed lines, "#"
# comments, "[name]" sections compared ignoring case).

PRODUCT_DIR="$(cd "$BATS_TEST_DIRNAME/.." && pwd)"

# data_lines FILE: the trimmed lines of FILE that are neither empty nor comments.
data_lines() {
    sed -e 's/\r$//' -e 's/^[[:space:]]*//' -e 's/[[:space:]]*$//' "$1" |
        grep -v -e '^$' -e '^#' || true
}

# section_lines FILE: the lines of every section, without the headers.
section_lines() { data_lines "$1" | awk '/^\[/ { inside = 1; next } inside'; }
