#!/usr/bin/env bats
# The banner, the main menu and its choices, the closing blurb, and the
# unattended and tagged runs, driven through whole console dialogues.

load test_helper

setup() {
  make_product_dir
  widget_product
}
teardown() { remove_product_dir; }

# Each row: product | input.
@test "the banner and the menu name the product, NONAME without one; 4 or end of input ends the run" {
  local product input
  while IFS='|' read -r product input; do
    printf -v input '%b' "$input"
    : > install.dat
    [ -z "$product" ] || printf 'product %s\n' "$product" > install.dat
    talk "$input"
    want_banner "${product:-NONAME}"
    want_menu "${product:-NONAME}"
    want_choice_prompt 1
    want_press_enter
    check_dialogue
  done <<'EOF'
Widget 2.0|4\n\n
|
EOF
}

@test "an unrecognised choice, or 5 without a tag, brings the menu back" {
  local choice
  for choice in abc 0 5 7 -1; do
    talk "$choice"$'\n4\n\n'
    want_opening
    want "That is not a recognised option, please try again"
    want_menu_again
    want_press_enter
    check_dialogue
  done
}

# Each row: setting next | init file | input | default choice | heading started.
# Without a question file each action stops after its heading.
@test "the default is 2 only when action is exactly upgrade; a choice is the number a line begins with" {
  # -check: install.q and install.cpy cannot be read (2 errors), as this test means.
  rm install.q install.cpy
  local next int input default heading
  while IFS='|' read -r next int input default heading; do
    printf 'product Widget\nnext %s\n' "$next" > install.dat
    printf '%s\n' "$int" > install.int
    printf -v input '%b' "$input"
    talk "$input"
    want_opening "$default"
    want "[$heading]"$'\n'
    want_press_enter
    check_dialogue
  done <<'EOF'
upgrade|Copy action next - -|\n|2|Upgrade
Upgrade|Copy action next - -|\n|1|Install
upgrade|# none| 3 \n|1|Remove
upgrade|# none|3abc\n|1|Remove
EOF
  log_has Error "Error loading questions"
}

@test "q in the questions of upgrade or remove brings the menu back without copying" {
  printf 'name anon\n' >> install.dat
  printf '[%s]\nText name - - 1 Your name\n' install upgrade remove > install.q
  printf '[%s]\nWFile $(current_dir)/ran.txt name\n' install upgrade remove > install.cpy
  local row choice heading quit
  for row in 2:Upgrade:q 3:Remove:Q; do
    IFS=: read -r choice heading quit <<< "$row"
    talk "$choice"$'\n'"$quit"$'\n4\n\n'
    want_opening
    want "[$heading]"$'\nYour name [anon]? '
    want_menu_again
    want_press_enter
    check_dialogue
  done
  [ ! -e ran.txt ]
}

# The install questions set action to upgrade on the way, yet the menu's
# default stays 1: it is fixed before the first pass.
@test "after a quit the install starts again; quit is an answer; the blurb is trimmed and filled in" {
  # -check: install.cpy cannot be read, and blurb.txt's $(none) names no setting
  # (2 errors): the test shows an install without a copy script and what an
  # unknown name in the blurb expands to.
  rm install.cpy
  printf 'next upgrade\nname anon\ninstall_dir /srv/widget\n' >> install.dat
  printf '[install]\nCopy action - - 1 next\nText name - - 2 Your name\n' > install.q
  printf '   Thanks, $(name), in $(install_dir)\t\n\nOn $(host), from $(current_dir)$(none).\n' \
    > blurb.txt
  talk $'1\nq\n\nquit\nn\n\n'
  want_opening
  want $'[Install]\nYour name [anon]? '
  want_menu_again
  # No copy script: nothing between the questions and the blurb.
  want $'[Install]\nYour name [anon]? Do you want to change your answers [n]? '
  want $'\nThanks, quit, in /srv/widget\n\n' "On $(hostname), from $PRODUCT_DIR."$'\n'
  want_press_enter
  check_dialogue
}

# Each row: where the answer's default points | what the run prints then.
@test "-automate: the menu, an empty line, every default taken, no prompt, no wait" {
  # -check: no [upgrade] or [remove] sections (4 errors): this test only runs Install.
  printf '[install]\nDirExist dest - - 1 Where\nText label - - 2 Label\n' > install.q
  printf '[install]\nWFile $(dest)/label.txt label\n' > install.cpy
  printf 'Done: $(label)\n' > blurb.txt
  mkdir out
  local dest printed
  while IFS='|' read -r dest printed; do
    printf 'product Widget\nlabel shelf\ndest %s\n' "$dest" > install.dat
    printf -v printed '%b' "$printed"
    talk '' -automate
    want_banner Widget
    want_menu Widget
    want $'\n[Install]\n' "$printed" $'\nDone: shelf\n'
    check_dialogue
  done <<EOF
$PRODUCT_DIR/out|Copying files[]\nSuccess 0 bytes in 1 files copied\n
/no/such/dir|Error: Directory '/no/such/dir' must exist, No such file or directory, please try again\n
EOF
  [ "$(cat out/label.txt)" = shelf ]
  log_has Info "Automated install/upgrade..."
  log_has Error "Directory '/no/such/dir' must exist, No such file or directory"
}

@test "-special runs the tagged sections once, without the menu; -automate asks nothing there" {
  # -check: no [upgrade] or [remove] sections, nor [install] in install.cpy (5
  # errors), and 'nothing' undeclared: [install] only shows that it is not asked.
  printf 'where $(current_dir)/kept\n' >> install.dat
  printf '[install]\nText nothing - - 1 Not asked\n[Nightly]\nDir where - - 1 Keep in\n' > install.q
  printf '[nightly]\nMkDir $(where)\n' > install.cpy
  talk $'\n\n\n' -special nightly
  want_banner Widget
  want $'[nightly]\n' "Keep in [$PRODUCT_DIR/kept]? " 'Do you want to change your answers [n]? '
  want $'Executing[.]\n Success 1 files done.\n'
  want_press_enter
  check_dialogue
  [ -d kept ]

  # Options in any order; an unknown one is passed over; the last tag counts.
  rmdir kept
  talk '' -automate -bogus -special backup -special nightly
  want_banner Widget
  want $'[nightly]\nExecuting[.]\n Success 1 files done.\n'
  check_dialogue
  [ -d kept ]
  log_has Info "Special mode [backup]"
  log_has Info "Special mode [nightly]"
}
