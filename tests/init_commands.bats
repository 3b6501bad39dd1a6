#!/usr/bin/env bats
# Init commands through the real program: each test writes install.dat and
# install.int into a scratch product directory, runs ./install -automate and
# reads settings back from the files that WFile lines write.

load test_helper

setup() {
  make_product_dir
  cat > install.dat <<'EOF'
product Widget
year_format %Y
greeting hello there
contents unchanged
installed false
EOF
}
teardown() { remove_product_dir; }

run_init() {
  cat > install.int
  run ./install -automate < /dev/null
}

@test "each command fills its setting" {
  mkdir sub
  printf 'line one\nline two\n' > in.txt
  run_init <<'EOF'
Exist $(current_dir)/sub found_dir - -
Exist $(current_dir)/in.txt found_file - -
Exist $(current_dir)/nothing found_none - -
Copy copied product - -
Copy literal no_such_setting - -
TimeDate year_format year - -
RFile $(current_dir)/in.txt contents - -
WFile out.found_dir found_dir - -
WFile out.found_file found_file - -
WFile out.found_none found_none - -
WFile $(current_dir)/out.copied copied - -
WFile out.literal literal - -
WFile out.year year - -
WFile out.contents contents - -
EOF
  [ "$status" -eq 0 ]
  [ "$(cat out.found_dir),$(cat out.found_file),$(cat out.found_none)" = "true,true,false" ]
  [ "$(cat out.copied)" = "Widget" ]
  [ "$(cat out.literal)" = "no_such_setting" ]
  [ "$(cat out.year)" = "$(date +%Y)" ]
  [ "$(cat out.contents)" = "$(printf 'line one\nline two\n')" ]
  # WFile adds no line end.
  [ "$(wc -c < out.copied)" -eq 6 ]
}

@test "conditions compare exactly with a setting or the word itself" {
  run_init <<'EOF'
WFile out.exact ran action install
WFile out.case ran action Install
WFile out.literal ran some_word some_word
WFile out.other ran some_word other_word
WFile out.no_name ran - true
EOF
  [ "$status" -eq 0 ]
  [ -f out.exact ]
  [ ! -e out.case ]
  [ -f out.literal ]
  [ ! -e out.other ]
  [ ! -e out.no_name ]
}

@test "an existing installation makes Upgrade the menu's default" {
  mkdir -p app
  run_init <<'EOF'
Exist $(current_dir)/app installed - -
Copy action upgrade installed true
WFile out.action action - -
EOF
  [ "$status" -eq 0 ]
  [ "$(cat out.action)" = "upgrade" ]
  [[ "$output" == *"[Upgrade]"* ]]
}

@test "malformed lines are skipped or reported and the rest still runs" {
  {
    echo "   # a comment"
    echo "Copy half"
    echo "Copy a b c"
    echo "WFile out.carried yes - -"
    echo "copy lower yes - -"
    echo "x#y a b - -"
    echo "Copy extra yes - - and more words"
    # 999 characters, then the next command on the same physical line.
    printf 'WFile out.split yes - - %s' "$(printf '%0975d' 0)"
    echo "WFile out.second yes - -"
    head -c 4096 /dev/urandom | tr -d 'A-Za-z\n'
    echo
    echo "WFile out.extra extra - -"
  } > install.int
  run ./install -automate < /dev/null
  [ "$status" -eq 0 ]
  # The short line's condition word is carried over, without an expected
  # value, so the command runs.
  [ -f out.carried ]
  [ -f out.split ]
  [ -f out.second ]
  [ "$(cat out.extra)" = "yes" ]
  grep -q "Unknown init command 'copy'" install.log
  grep -q "Unknown init command 'x#y'" install.log
  ! grep -q "Unknown init command '#" install.log
}

@test "failing commands are logged and never stop the program" {
  : > empty.txt
  run_init <<'EOF'
RFile $(current_dir)/missing.txt contents - -
RFile $(current_dir)/empty.txt contents - -
WFile $(current_dir)/no/such/dir/out.txt greeting - -
TimeDate no_format stamp - -
WFile out.after contents - -
EOF
  [ "$status" -eq 0 ]
  [ "$(cat out.after)" = "unchanged" ]
  grep -q "Failed to read ($PRODUCT_DIR/missing.txt), No such file or directory" install.log
  grep -q "Failed to write ($PRODUCT_DIR/no/such/dir/out.txt), No such file or directory" install.log
  grep -q "TimeDate 'no_format' is NULL" install.log
  [[ "$output" == *"[Install]"* ]]
}

@test "an init file that cannot be read ends the run before the menu" {
  run ./install -automate < /dev/null
  [ "$status" -eq 0 ]
  local path="$PRODUCT_DIR/install.int"
  [ "$output" = "Error: Failed to load init file '$path', Failed to read '$path', No such file or directory" ]
}
