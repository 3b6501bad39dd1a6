#!/usr/bin/env bats
# Checks of the product's five data files against the rules the installer
# reads them by: the mistakes caught here are the ones that show only on a
# host where a discovery fails or a question is answered a second time.

load helpers

setup() {
    declared="$BATS_TEST_TMPDIR/declared"
    declared_settings | sort -u >"$declared"
}

# Each check prints the offending lines; an empty output passes.
# none_found LABEL CHECK [ARGS...]: runs the check, failing on any output.
none_found() {
    local label=$1
    shift
    run "$@"
    [ -z "$output" ] || { echo "$label$output"; false; }
}

controls_used() {
    section_lines "$PRODUCT_DIR/install.q" |
        awk 'tolower($1) !~ /^(exist|error|loop|copy)$/ && $3 != "-" { print $3 }'
    section_lines "$PRODUCT_DIR/install.cpy" | awk '
        { op = tolower($1) }
        op ~ /^(copyfile|copydir|chown|chmod)$/ && NF >= 5 { print $5 }
        op ~ /^(rmfile|rmdir|ini|rename|exist|wfile|rfile)$/ && NF >= 4 { print $4 }
        op == "mkdir" && NF >= 3 { print $3 }'
    data_lines "$PRODUCT_DIR/install.int" | awk '$4 != "-" { print $4 }'
}

dat_refers_to_init_settings() {
    local filled name
    filled=$(init_written | sort -u)
    for name in $(data_lines "$PRODUCT_DIR/install.dat" | grep -o '\$([^)]*)' | tr -d '$()' | sort -u); do
        grep -qxF "$name" <<<"$filled" && echo "$name"
    done
    return 0
}

bad_init_lines() {
    data_lines "$PRODUCT_DIR/install.int" | awk '
        $1 !~ /^(Exist|Copy|HTTP_User|HTTP_Group|HTTP_Root|HTTP_Scripts|TimeDate|WFile|RFile)$/ { print "command: " $0 }
        NF != 5 { print "words: " $0 }
        $4 == "-" && $5 != "-" { print "expected value without a setting: " $0 }'
}

bad_question_lines() {
    section_lines "$PRODUCT_DIR/install.q" | awk '
        { t = tolower($1) }
        t ~ /^(text|yn|dir|direxist|dirempty|file|fileexist|filename|copy)$/ { if (NF < 6) print; next }
        t == "exist" || t == "loop" { if (NF < 3) print; next }
        t == "error" { if (NF < 4) print; next }
        { print "type: " $0 }'
}

# Loop indexes count the questions of a section from 0 and must go back.
bad_loops() {
    local section
    for section in $(section_names "$PRODUCT_DIR/install.q"); do
        section_lines "$PRODUCT_DIR/install.q" "$section" |
            awk -v s="$section" 'tolower($1) == "loop" && !($3 ~ /^[0-9]+$/ && $3 + 0 < NR - 1) { print "[" s "] " $0 }'
    done
}

# Only the upgrade action prints an Error question's text with settings filled in.
literal_errors_with_references() {
    local section
    for section in $(section_names "$PRODUCT_DIR/install.q"); do
        [ "$section" = upgrade ] && continue
        section_lines "$PRODUCT_DIR/install.q" "$section" |
            awk -v s="$section" 'tolower($1) == "error" && index($0, "$(") { print "[" s "] " $0 }'
    done
}

bad_copy_lines() {
    section_lines "$PRODUCT_DIR/install.cpy" | awk '
        { op = tolower($1) }
        op !~ /^(copyfile|copydir|mkdir|rmfile|rmdir|ini|rename|exist|chown|chmod|error|wfile|rfile)$/ { print "operation: " $0; next }
        op ~ /^(copyfile|copydir|chown|chmod)$/ && NF < 4 { print "fields: " $0; next }
        op ~ /^(rmfile|rmdir|ini|rename|exist|wfile|rfile|error)$/ && NF < 3 { print "fields: " $0; next }
        op ~ /^(copyfile|copydir)$/ && $4 ~ /[\/\\]$/ { print "destination ends in a separator: " $0 }
        op ~ /^(copyfile|copydir)$/ && $4 !~ /[\/\\]/ && $4 !~ /^\$\([^)]*\)$/ { print "destination without a directory: " $0 }
        op == "chmod" && $4 !~ /^[0-7]+$/ { print "mode: " $0 }'
}

missing_sources() {
    local source
    for source in $(section_lines "$PRODUCT_DIR/install.cpy" | awk '{ print $2 }' |
        grep '^\$(current_dir)/' | sed 's|^\$(current_dir)/||'); do
        compgen -G "$PRODUCT_DIR/$source" >/dev/null || echo "$source"
    done
    return 0
}

@test "every setting that is written is declared in install.dat" {
    none_found "undeclared: " missing_from "$declared" $(init_written) $(question_written) $(copy_written)
}

@test "every \$(name) reference and every control names a declared setting" {
    none_found "unknown reference: " missing_from "$declared" $(references)
    none_found "unknown control: " missing_from "$declared" $(controls_used)
}

@test "the web server failure flags start as false" {
    local flag
    for flag in $(data_lines "$PRODUCT_DIR/install.int" | awk '$1 ~ /^HTTP_/ { print $3 }'); do
        data_lines "$PRODUCT_DIR/install.dat" | grep -q "^$flag[[:blank:]][[:blank:]]*false$" ||
            { echo "flag $flag is not declared false"; false; }
    done
}

@test "install.dat values do not refer to settings the init file fills later" {
    none_found "filled later: " dat_refers_to_init_settings
}

@test "init, question and copy lines are well formed" {
    none_found "" bad_init_lines
    none_found "" bad_question_lines
    none_found "" bad_copy_lines
}

@test "each Loop goes back to an earlier question of its own section" {
    none_found "" bad_loops
}

@test "Error questions outside upgrade carry no references" {
    none_found "" literal_errors_with_references
}

@test "files the copy script takes from the product folder are there" {
    none_found "missing: " missing_sources
    [ -f "$PRODUCT_DIR/data/welcome.txt" ]
}

@test "every action has questions and a copy section" {
    local section
    for section in install upgrade remove backup; do
        section_names "$PRODUCT_DIR/install.q" | grep -qx "$section"
        section_names "$PRODUCT_DIR/install.cpy" | grep -qx "$section"
    done
}
