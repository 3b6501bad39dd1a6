#!/usr/bin/env bats
# Init commands through the real program: each test writes install.dat and
# install.int into a scratch product directory, runs ./install -automate and
# reads settings back from the files that WFile lines write.

load test_helper

setup() {
  make_product_dir
  printf 'product Widget\nyear_format %%Y\ncontents unchanged\ninstalled false\n' > install.dat
}
teardown() { remove_product_dir; }

@test "each command fills its setting; conditions compare exactly" {
  mkdir app
  printf 'line one\nline two\n' > in.txt
  cat > install.int <<'EOF'
Exist $(current_dir)/app installed - -
Exist $(current_dir)/in.txt found_file - -
Exist $(current_dir)/nothing found_none - -
Copy copied product - -
Copy literal no_such_setting - -
TimeDate year_format year - -
RFile $(current_dir)/in.txt contents - -
Copy action upgrade installed true
WFile out.case ran action Upgrade
WFile out.word ran some_word some_word
WFile out.no_name ran - true
EOF
  for name in installed found_file found_none copied literal year contents action; do
    echo "WFile \$(current_dir)/out.$name $name - -" >> install.int
  done
  run program -automate < /dev/null
  [ "$status" -eq 0 ]
  [ "$(cat out.installed),$(cat out.found_file),$(cat out.found_none)" = "true,true,false" ]
  [ "$(cat out.copied),$(cat out.literal)" = "Widget,no_such_setting" ]
  [ "$(cat out.year)" = "$(date +%Y)" ]
  [ "$(cat out.contents)" = "$(printf 'line one\nline two\n')" ]
  [ "$(wc -c < out.copied)" -eq 6 ]  # no line end added
  [ "$(cat out.action)" = "upgrade" ]
  [[ "$output" == *"[Upgrade]"* ]]
  [ "$(cat out.word)" = "ran" ]
  [ ! -e out.case ] && [ ! -e out.no_name ]
}

@test "malformed lines and failing commands never stop the program" {
  : > empty.txt
  {
    echo "   # a comment"
    echo "Copy a b c"  # short: its condition word carries over, harmlessly
    echo "WFile out.carried yes - -"
    echo "copy lower yes - -"
    echo "x#y a b - -"
    # 999 characters, then the next command on the same physical line.
    printf 'WFile out.split yes - - %s' "$(printf '%0975d' 0)"
    echo "WFile out.second yes - - and more words"
    head -c 4096 /dev/urandom | tr -d 'A-Za-z\n'
    echo
    echo 'RFile $(current_dir)/missing.txt contents - -'
    echo 'RFile $(current_dir)/empty.txt contents - -'
    echo 'WFile $(current_dir)/no/dir/out.txt contents - -'
    echo 'TimeDate no_format stamp - -'
    echo 'WFile out.after contents - -'
  } > install.int
  run program -automate < /dev/null
  [ "$status" -eq 0 ]
  [ -f out.carried ] && [ -f out.split ] && [ -f out.second ]
  [ "$(cat out.after)" = "unchanged" ]
  grep -q "Unknown init command 'copy'" install.log
  grep -q "Unknown init command 'x#y'" install.log
  grep -q "Failed to read ($PRODUCT_DIR/missing.txt), No such file or directory" install.log
  grep -q "Failed to write ($PRODUCT_DIR/no/dir/out.txt), No such file or directory" install.log
  grep -q "TimeDate 'no_format' is NULL" install.log
  [[ "$output" == *"[Install]"* ]]
}

@test "an init file that cannot be read ends the run before the menu" {
  run program -automate < /dev/null
  [ "$status" -eq 0 ]
  local path="$PRODUCT_DIR/install.int"
  [ "$output" = "Error: Failed to load init file '$path', Failed to read '$path', No such file or directory" ]
}
