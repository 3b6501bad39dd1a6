#!/usr/bin/env bats
# -plan against the real run: the example product is planned and then run,
# for an install, an upgrade and a remove, and the names the plan says would
# change (with their type, owner and mode after) are exactly the names the
# run then changes; the plan itself changes nothing. The web server's
# configuration is written here so that its user, www-data, owns the notes
# and the chown and chmod lines run; the host outside the folder is
# read-only, as in the example's own cycle test.

load test_helper

setup() {
  id www-data > /dev/null 2>&1 || skip "no www-data account"
  example_product_confined
  printf '%s\n' 'User www-data' 'Group www-data' "DocumentRoot \"$PWD/www\"" \
    "ScriptAlias /cgi-bin/ \"$PWD/cgi/\"" > httpd.conf
  printf '%s\n' "data_dir $PWD/notes" 'remove_data true' > answers
}
teardown() { remove_product_dir; }

# Every name of the folder but the log and the answers: type, owner, mode,
# and for a file its size, times and checksum; a directory's times too, so
# that a plan which made or removed anything shows.
snapshot() {
  find . -mindepth 1 -path './install.log*' -prune -o -path ./answers -prune -o -printf '%p %y %U:%G %m %T@\n' |
    sort > "$BATS_TEST_TMPDIR/names"
  while read -r path type owner mode times; do
    case $type in [pscb]) type=s ;; esac  # the plan's "special"
    if [ "$type" = f ]; then
      echo "$path $type $owner $mode $times $(stat -c '%s' "$path") $(md5sum < "$path")"
    else
      echo "$path $type $owner $mode $times"
    fi
  done < "$BATS_TEST_TMPDIR/names"
}

# The names that differ between two snapshots, as the plan lists them
# ("<path> new|changed <type> <owner> <mode>", "<path> removed <type>"). A
# directory changes with its owner or mode, not with its entries.
changed_names() {
  join -a1 -a2 -e- -o 0,1.2,1.3,1.4,1.5,1.6,1.7,2.2,2.3,2.4,2.5,2.6,2.7 "$1" "$2" |
    while read -r path b_type b_owner b_mode b_rest1 b_rest2 b_rest3 \
      a_type a_owner a_mode a_rest1 a_rest2 a_rest3; do
      if [ "$a_type" = - ]; then
        echo "$path removed $b_type"
      elif [ "$b_type" = - ]; then
        echo "$path new $a_type $a_owner $a_mode"
      elif [ "$b_type $b_owner $b_mode" != "$a_type $a_owner $a_mode" ] ||
        { [ "$a_type" = f ] && [ "$b_rest1 $b_rest2 $b_rest3" != "$a_rest1 $a_rest2 $a_rest3" ]; }; then
        echo "$path changed $a_type $a_owner $a_mode"
      fi
    done | sort
}

# The plan's list of names it would change, in the same form.
planned_names() {
  sed -n '/^Names it would change/,/^$/{/^  /p}' "$STDOUT_FILE" |
    while read -r what type owner mode path; do
      if [ "$what" = removed ]; then
        echo ".${owner#"$PWD"} removed ${type:0:1}"
      else
        echo ".${path#"$PWD"} $what ${type:0:1} $owner $(printf '%o' "$((8#$mode))")"
      fi
    done | sort
}

# plan_then_run INPUT [ARGS...]: plans the action INPUT and ARGS choose,
# checks that the plan changed nothing, then runs it and checks that it
# changed just what the plan listed, and ended as the plan said it would.
plan_then_run() {
  local input=$1
  shift
  local args=(-httpd-conf httpd.conf -answers answers -status "$@")
  snapshot > "$BATS_TEST_TMPDIR/before"
  talk "$input" -plan "${args[@]}"
  ran_cleanly
  snapshot > "$BATS_TEST_TMPDIR/planned"
  diff "$BATS_TEST_TMPDIR/before" "$BATS_TEST_TMPDIR/planned"
  cp "$STDOUT_FILE" "$BATS_TEST_TMPDIR/plan_out"
  planned_names > "$BATS_TEST_TMPDIR/plan"
  [ -s "$BATS_TEST_TMPDIR/plan" ]
  local would
  would=$(sed -n 's/^The run would end with: //p' "$STDOUT_FILE")
  [ -n "$would" ]

  talk "$input" "${args[@]}"
  ran_cleanly
  snapshot > "$BATS_TEST_TMPDIR/after"
  changed_names "$BATS_TEST_TMPDIR/before" "$BATS_TEST_TMPDIR/after" > "$BATS_TEST_TMPDIR/done"
  diff "$BATS_TEST_TMPDIR/plan" "$BATS_TEST_TMPDIR/done"
  [[ "$output" == *"]"$'\n'"$would"* || "$output" == *"]"$'\n'" $would"* ]]
}

@test "a plan lists what the install, the upgrade and the remove then do, and changes nothing" {
  plan_then_run '' -automate
  grep -qxF "  chown $PWD/notes/welcome.txt to $(id -u www-data):$(id -g www-data)" \
    "$BATS_TEST_TMPDIR/plan_out"
  grep -qxF "./notes/welcome.txt new f $(id -u www-data):$(id -g www-data) 660" \
    "$BATS_TEST_TMPDIR/done"

  plan_then_run '' -automate
  grep -qxF '  rename '"$PWD"'/www/noticeboard/config.ini -> '"$PWD"'/www/noticeboard/config.ini.old' \
    "$BATS_TEST_TMPDIR/plan_out"

  plan_then_run $'3\n\n\n\n\n\n\n\n\n'
  grep -q ' removed ' "$BATS_TEST_TMPDIR/done"
}

@test "a plan takes the web server's links and FIFOs among the notes as names, as the run does" {
  chmod 0755 .
  mkdir -p outside/dir
  printf 'secret\n' > outside/dir/secret.txt
  plan_then_run '' -automate
  as_web() { setpriv --reuid=www-data --regid=www-data --clear-groups "$@"; }
  as_web ln -s "$PWD/outside/dir" notes/evil
  as_web ln -s "$PWD/outside/dir/secret.txt" notes/held/note.txt
  as_web mkfifo notes/pipe

  plan_then_run '' -automate
  grep -qxF "  chown $PWD/notes/evil to $(id -u www-data):$(id -g www-data)" \
    "$BATS_TEST_TMPDIR/plan_out"
  plan_then_run $'3\n\n\n\n\n\n\n\n\n'
  grep -qxF "./notes/pipe removed s" "$BATS_TEST_TMPDIR/done"
  ! grep -q '^\./outside' "$BATS_TEST_TMPDIR/plan"
  [ "$(cat outside/dir/secret.txt)" = secret ]
}
