#!/bin/sh
# Noticeboard notes script: stores a note posted from the board's form and
# sends the browser back to the board. Its settings are in the file beside it
# that has its name with ".ini" in place of ".cgi".

settings_file="${0%.cgi}.ini"
max_bytes=4000

# reply STATUS TEXT: a plain-text answer, then stop.
reply() {
    printf 'Status: %s\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n%s\n' "$1" "$2"
    exit 0
}

# setting NAME: the value of "NAME = value" in the settings file, unquoted.
setting() {
    sed -n "s/^$1[[:blank:]]*=[[:blank:]]*//p" "$settings_file" |
        sed -e 's/^"\(.*\)"$/\1/' -e 1q
}

# is_on VALUE: whether a settings value means yes.
is_on() {
    case $1 in
        true | TRUE | True | yes | on | 1) return 0 ;;
        *) return 1 ;;
    esac
}

# form_field NAME: one field of the url-encoded form on standard input.
form_field() {
    tr '&' '\n' | sed -n "s/^$1=//p" | sed 1q | LC_ALL=C awk '
        BEGIN { for (i = 1; i < 256; i++) byte[sprintf("%02X", i)] = sprintf("%c", i) }
        {
            gsub(/\+/, " ")
            decoded = ""
            while (match($0, /%[0-9A-Fa-f][0-9A-Fa-f]/)) {
                decoded = decoded substr($0, 1, RSTART - 1) byte[toupper(substr($0, RSTART + 1, 2))]
                $0 = substr($0, RSTART + 3)
            }
            printf "%s", decoded $0
        }' | tr -d '\r'
}

[ -r "$settings_file" ] ||
    reply '500 Internal Server Error' "The board is not set up: $settings_file is missing."
[ "$REQUEST_METHOD" = POST ] ||
    reply '405 Method Not Allowed' 'Notes are pinned from the board page.'

length=${CONTENT_LENGTH:-0}
case $length in
    '' | *[!0-9]*) reply '400 Bad Request' 'The form was not sent whole.' ;;
esac
[ "$length" -le "$max_bytes" ] ||
    reply '413 Payload Too Large' "A note may hold at most $max_bytes bytes."

note=$(dd bs=1 count="$length" 2>/dev/null | form_field note)
[ -n "$(printf '%s' "$note" | tr -d '[:space:]')" ] ||
    reply '400 Bad Request' 'An empty note was not pinned.'

folder=$(setting data_dir)
is_on "$(setting moderate)" && folder="$folder/held"
name="note-$(date +%Y%m%d-%H%M%S)-$$.txt"

# Written under a temporary name first, so that the board never shows half a note.
if ! printf '%s\n' "$note" >"$folder/$name.tmp" 2>/dev/null ||
    ! mv "$folder/$name.tmp" "$folder/$name"; then
    rm -f "$folder/$name.tmp"
    reply '500 Internal Server Error' 'The note could not be stored; the web server may not own the notes folder.'
fi

if is_on "$(setting log_notes)"; then
    printf '%s %s %s\n' "$(date '+%Y-%m-%d %H:%M:%S')" "${REMOTE_ADDR:-unknown}" "$name" \
        >>"$(setting log_file)" 2>/dev/null
fi

scheme=http
[ "${HTTPS:-off}" = on ] && scheme=https
printf 'Status: 303 See Other\r\nLocation: %s://%s%s?posted=1\r\n\r\n' \
    "$scheme" "${HTTP_HOST:-${SERVER_NAME:-localhost}}" "$(setting board_url)"
