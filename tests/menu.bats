#!/usr/bin/env bats
# The banner, the main menu and its choices, the closing blurb, and the
# unattended and tagged runs, driven through whole console dialogues.

load test_helper

setup() {
  make_product_dir
  widget_product
}
teardown() { remove_product_dir; }

# A remove action that asks nothing and removes the file doomed.txt.
remove_doomed_product() {
  printf '[remove]\n' > install.q
  printf '[remove]\nRmFile $(current_dir)/doomed.txt -\n' > install.cpy
  touch doomed.txt
}

@test "the banner and the menu name the product; 4 or end of input ends the run" {
  printf '[install]\n' > install.q
  printf '[install]\nWFile $(current_dir)/ran.txt yes\n' > install.cpy
  for product in "Widget 2.0" ""; do
    if [ -n "$product" ]; then
      printf 'product %s\n' "$product" > install.dat
    else
      : > install.dat
    fi
    for input in $'4\n\n' ''; do
      talk "$input"
      want_banner "${product:-NONAME}"
      want_menu "${product:-NONAME}"
      want_choice_prompt 1
      want_press_enter
      check_dialogue
    done
  done
  [ ! -e ran.txt ]
}

@test "an unrecognised choice, or 5 without a tag, brings the menu back once" {
  printf '[special]\n' > install.q
  printf '[special]\nWFile $(current_dir)/ran.txt yes\n' > install.cpy
  local long_line
  printf -v long_line '%1500s' 1
  for choice in abc 0 7 -1 5 '#1' "${long_line// /x}"; do
    talk "$choice"$'\n4\n\n'
    want_opening
    want "That is not a recognised option, please try again"
    want_menu_again
    want_press_enter
    check_dialogue
  done
  [ ! -e ran.txt ]
}

@test "the choice is the number the trimmed line begins with" {
  for choice in ' 3 ' 3abc $'\t3'; do
    remove_doomed_product
    talk "$choice"$'\n\n\n'
    want_opening
    want $'[Remove]\nDo you want to change your answers [n]? '
    want $'Removing files[]\n Success 1 files removed\n'
    want_press_enter
    check_dialogue
    [ ! -e doomed.txt ]
  done
}

# Each row: how action gets its value | default choice | heading it starts.
@test "the default choice is 2 only when action is exactly upgrade" {
  printf 'flag\n' > flag.txt
  while IFS='|' read -r dat_line int_lines default heading; do
    printf 'product Widget\n%s\n' "$dat_line" > install.dat
    printf '%b' "$int_lines" > install.int
    talk $'\n\n'
    want_opening "$default"
    want "[$heading]"$'\n'
    want_press_enter
    check_dialogue

    talk '' -automate
    want_banner Widget
    want_menu Widget
    want $'\n' "[$heading]"$'\n'
    check_dialogue
  done <<'EOF'
next upgrade|# nothing\n|1|Install
action upgrade|# a .dat line cannot change a built-in setting\n|1|Install
next upgrade|Copy action next - -\n|2|Upgrade
next upgrade|Copy action upgrade - -\n|2|Upgrade
next Upgrade|Copy action next - -\n|1|Install
next upgrade|Exist $(current_dir)/flag.txt found - -\nCopy action next found true\n|2|Upgrade
next upgrade|Exist $(current_dir)/none.txt found - -\nCopy action next found true\n|1|Install
EOF
}

# Each row: input | heading. The install questions set action to upgrade
# on the way, yet the menu's default stays 1: it is fixed before the first pass.
@test "q or end of input in the questions of any action brings the menu back without copying" {
  printf 'next upgrade\nname anon\n' >> install.dat
  cat > install.q <<'EOF'
[install]
Copy action - - 1 next
Text name   - - 2 Your name
[upgrade]
Text name - - 1 Your name
[remove]
Text name - - 1 Your name
EOF
  printf '[%s]\nWFile $(current_dir)/ran.txt name\n' install upgrade remove > install.cpy
  while IFS='|' read -r input heading; do
    printf -v input '%b' "$input"
    talk "$input"
    want_opening
    want "[$heading]"$'\nYour name [anon]? '
    want_menu_again
    want_press_enter
    check_dialogue
    [ ! -e ran.txt ]
  done <<'EOF'
\nq\n4\n\n|Install
2\nQ\n4\n\n|Upgrade
3\nQ\n4\n\n|Remove
1\n|Install
EOF
}

@test "after a quit the install can be started again; quit is an ordinary answer" {
  printf 'name anon\n' >> install.dat
  printf '[install]\nText name - - 1 Your name\n' > install.q
  printf '[install]\nWFile $(current_dir)/name.txt name\n' > install.cpy
  printf '  Thanks, $(name).  \n' > blurb.txt
  talk $'1\nq\n1\nquit\nn\n\n'
  want_opening
  want $'[Install]\nYour name [anon]? '
  want_menu_again
  want $'[Install]\nYour name [anon]? Do you want to change your answers [n]? '
  want $'Copying files[]\nSuccess 0 bytes in 1 files copied\n'
  want $'\nThanks, quit.\n'
  want_press_enter
  check_dialogue
  [ "$(cat name.txt)" = quit ]
}

@test "blurb.txt is shown after an install, trimmed, with settings substituted" {
  printf 'install_dir /srv/widget\n' >> install.dat
  printf '[install]\n' > install.q
  printf '[install]\nExist $(current_dir) here\n' > install.cpy
  printf '   Installed in $(install_dir)\t\n\nOn $(host), from $(current_dir)$(no_such_setting).\n' > blurb.txt
  talk $'1\n\n\n'
  want_opening
  want $'[Install]\nDo you want to change your answers [n]? '
  want $'Copying files[]\nSuccess 0 bytes in 1 files copied\n'
  want $'\nInstalled in /srv/widget\n\n' "On $(hostname), from $PRODUCT_DIR."$'\n'
  want_press_enter
  check_dialogue
}

@test "no blurb after an upgrade or a remove, and none when blurb.txt is missing" {
  printf '[install]\n[upgrade]\n[remove]\n' > install.q
  printf 'Shown after an install only\n' > blurb.txt
  for choice in 2 3; do
    talk "$choice"$'\n\n\n'
    [[ "$output" != *"Shown after"* ]]
  done
  rm blurb.txt
  talk $'1\n\n\n'
  want_opening
  want $'[Install]\nDo you want to change your answers [n]? '
  want_press_enter
  check_dialogue
}

@test "-automate: menu, an empty line, every default taken, no prompt, no wait" {
  printf 'dest $(current_dir)/out\nlabel shelf\n' >> install.dat
  printf '[install]\nDir dest - - 1 Where\nText label - - 2 Label\n' > install.q
  printf '[install]\nWFile $(dest)/label.txt label\n' > install.cpy
  printf 'Done: $(label)\n' > blurb.txt
  mkdir out
  talk '' -automate
  want_banner Widget
  want_menu Widget
  want $'\n[Install]\n'
  want $'Copying files[]\nSuccess 0 bytes in 1 files copied\n'
  want $'\nDone: shelf\n'
  check_dialogue
  [ "$(cat out/label.txt)" = shelf ]
  log_has Info "Automated install/upgrade..."
}

@test "-special runs the tagged sections once, without menu, going on past failures" {
  printf 'backup_dir $(current_dir)/backups\nsure false\n' >> install.dat
  cat > install.q <<'EOF'
[install]
Text nothing - - 1 Not asked in special mode
[Backup]
Dir backup_dir - - 1 Keep backups in
EOF
  cat > install.cpy <<'EOF'
[backup]
MkDir $(backup_dir)/daily
Error sure Not sure about $(backup_dir)
WFile $(backup_dir)/daily/stamp.txt done
EOF
  talk $'\n\n\n' -special backup
  want_banner Widget
  want $'[backup]\n' "Keep backups in [$PRODUCT_DIR/backups]? "
  want 'Do you want to change your answers [n]? '
  # one dot for each directory made: backups, then backups/daily
  want $'Executing[..]\n Success 2 files done.\n'
  want_press_enter
  check_dialogue
  [ "$(cat backups/daily/stamp.txt)" = done ]
  log_has Info "Special mode [backup]"
  log_has Info "Stop on fail NOT set, continuing..."
}

@test "-special with -automate asks nothing and does not wait" {
  printf '[nightly]\nText nothing - - 1 Anything\n' > install.q
  printf '[nightly]\nWFile $(current_dir)/ran.txt yes\n' > install.cpy
  printf 'nothing something\n' >> install.dat
  talk '' -automate -special nightly
  want_banner Widget
  want $'[nightly]\nExecuting[]\n Success 1 files done.\n'
  check_dialogue
  [ "$(cat ran.txt)" = yes ]
}
