#!/usr/bin/env bats
# The notes script, run as the web server runs it: settings beside it, the
# form on standard input, the request in the environment.

load helpers

setup() {
    scratch="$BATS_TEST_TMPDIR"
    mkdir -p "$scratch/cgi-bin" "$scratch/notes/held"
    cp "$PRODUCT_DIR/cgi-bin/notes.cgi" "$scratch/cgi-bin/board.cgi"
    write_settings false false
}

# write_settings MODERATE LOG_NOTES: the settings file the installer would write.
write_settings() {
    cat >"$scratch/cgi-bin/board.ini" <<INI
; Settings of Noticeboard 1.1
[board]
title = "Test board"
board_url = "/noticeboard/"
data_dir = "$scratch/notes"
moderate = $1
log_notes = $2
log_file = "$scratch/posted.log"
INI
}

# post BODY [METHOD]: runs the script with BODY as the form.
post() {
    printf '%s' "$1" | REQUEST_METHOD="${2:-POST}" CONTENT_LENGTH="${#1}" \
        HTTP_HOST=board.example REMOTE_ADDR=192.0.2.7 sh "$scratch/cgi-bin/board.cgi"
}

@test "a posted note is decoded, stored and the browser sent back to the board" {
    run post 'x=1&note=Milk+%26+eggs%0Aby+Ann%21&y=2'
    [ "$status" -eq 0 ]
    [[ "$output" == *"Status: 303 See Other"* ]]
    [[ "$output" == *"Location: http://board.example/noticeboard/?posted=1"* ]]
    local stored=("$scratch"/notes/note-*.txt)
    [ "${#stored[@]}" -eq 1 ]
    [ "$(cat "${stored[0]}")" = "$(printf 'Milk & eggs\nby Ann!')" ]
    [ ! -e "$scratch/posted.log" ]
    [ -z "$(ls "$scratch/notes/held")" ]
}

@test "a moderated board holds the note and a logging board logs it" {
    write_settings true true
    run post 'note=hello'
    [[ "$output" == *"303 See Other"* ]]
    [ -f "$(echo "$scratch"/notes/held/note-*.txt)" ]
    [ -z "$(compgen -G "$scratch/notes/note-*.txt")" ]
    grep -q ' 192.0.2.7 note-.*\.txt$' "$scratch/posted.log"
}

@test "requests that must not store anything are refused with their reason" {
    run post 'note=+%20+' POST
    [[ "$output" == *"Status: 400 Bad Request"*"An empty note was not pinned."* ]]
    run post 'note=hi' GET
    [[ "$output" == *"Status: 405 Method Not Allowed"* ]]
    run post "note=$(printf 'a%.0s' $(seq 4001))"
    [[ "$output" == *"Status: 413 Payload Too Large"* ]]
    run sh -c "printf 'note=hi' | REQUEST_METHOD=POST CONTENT_LENGTH=7x sh '$scratch/cgi-bin/board.cgi'"
    [[ "$output" == *"Status: 400 Bad Request"* ]]
    [ -z "$(find "$scratch/notes" -type f)" ]
}

@test "missing settings or an unwritable notes folder give a server error and leave nothing behind" {
    write_settings false false
    sed -i "s|^data_dir = .*|data_dir = \"$scratch/absent\"|" "$scratch/cgi-bin/board.ini"
    run post 'note=hi'
    [[ "$output" == *"Status: 500 Internal Server Error"*"could not be stored"* ]]
    [ ! -e "$scratch/absent" ]
    rm "$scratch/cgi-bin/board.ini"
    run post 'note=hi'
    [[ "$output" == *"Status: 500 Internal Server Error"*"board.ini is missing"* ]]
}
