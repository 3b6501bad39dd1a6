#!/usr/bin/env bats
# The four actions end to end: questions asked on the console, the copy
# script run with its progress dots and closing line, and the files, owners,
# modes and log lines left behind; then what each kind of failure prints.

load test_helper

setup() {
  make_product_dir
  widget_product
  umask 022
}
teardown() { remove_product_dir; }

# The product's own files: two pages, an editor backup and an image tree.
make_sources() {
  mkdir -p src/images/icons
  printf 'hello page\n' > src/index.html  # 11 bytes
  printf '#!/bin/sh\n' > src/run.sh       # 10 bytes
  printf 'old\n' > src/index.html.bak
  printf '<svg/>\n' > src/images/logo.svg  # 7 bytes
  printf '<svg/>\n' > src/images/icons/x.svg
}

# A board already installed in www/widget.
make_installed_board() {
  mkdir -p www/widget/sub
  printf 'old page\n' > www/widget/index.html
  printf 'title = Old\n' > www/widget/conf.ini
  printf 'a\n' > www/widget/sub/a.txt
  printf 'b\n' > www/widget/sub/b.txt
}

@test "install: answers steer the copy; dots, totals, owners, modes and templates" {
  make_sources
  printf '  title = $(title)  \nroot = $(web_root)/$(app_dir)\nkeep = $(unknown)\n' > conf.in
  cat >> install.dat <<'EOF'
web_root $(current_dir)/default-root
app_dir widget
web_owner www-data
log_owner nobody:nogroup
title Widget board
EOF
  cat > install.q <<'EOF'
[install]
Dir  web_root  - - 1 Document root
Text app_dir   - - 2 Folder for the board
Text web_owner - - 3 Owner of the pages
Text title     - - 4 Title
EOF
  cat > install.cpy <<'EOF'
[install]
MkDir    $(web_root)/$(app_dir)/logs
CopyFile $(current_dir)/src/*       *.bak  $(web_root)/$(app_dir)
CopyDir  $(current_dir)/src/images  -      $(web_root)/$(app_dir)
Ini      $(current_dir)/conf.in     $(web_root)/$(app_dir)/conf.ini
Chmod    $(web_root)/$(app_dir)/*.sh  -  750
Chown    $(web_root)/$(app_dir)       -  $(web_owner)
Chown    $(web_root)/$(app_dir)/logs  -  $(log_owner)
EOF
  printf 'Installed in $(web_root)/$(app_dir)\n' > blurb.txt
  talk "1"$'\n'"$PRODUCT_DIR/www/"$'\n\n\nMy board\nn\n\n'
  want_opening
  want $'[Install]\n' "Document root [$PRODUCT_DIR/default-root]? "
  want 'Folder for the board [widget]? ' 'Owner of the pages [www-data]? '
  want 'Title [Widget board]? ' 'Do you want to change your answers [n]? '
  # Dots: www, www/widget, www/widget/logs made; index.html and run.sh
  # copied; images and icons made, logo.svg and x.svg copied.
  # Files: MkDir 1, CopyFile 2, CopyDir 4, Ini 1, Chmod 1, Chown of the
  # board's tree 9, Chown of logs 1.
  want $'Copying files[.........]\nSuccess 35 bytes in 19 files copied\n'
  want $'\n' "Installed in $PRODUCT_DIR/www/widget"$'\n'
  want_press_enter
  check_dialogue

  local board=www/widget
  [ "$(cat $board/index.html)" = "hello page" ]
  [ "$(cat $board/images/icons/x.svg)" = "<svg/>" ]
  [ ! -e $board/index.html.bak ]
  [ "$(cat $board/conf.ini)" = "title = My board
root = $PRODUCT_DIR/www/widget
keep = \$(unknown)" ]
  [ "$(owner_mode $board)" = "www-data:www-data 755" ]
  [ "$(owner_mode $board/run.sh)" = "www-data:www-data 750" ]
  [ "$(owner_mode $board/index.html)" = "www-data:www-data 644" ]
  [ "$(owner_mode $board/images/icons/x.svg)" = "www-data:www-data 644" ]
  [ "$(owner_mode $board/logs)" = "nobody:nogroup 755" ]
  [ "$(owner_mode www)" = "root:root 755" ]
  log_has Info "Processing copy script..."
  log_has Info "Copy script completed successfully"
}

@test "upgrade: a refused answer is asked again; existing files are replaced" {
  make_sources
  make_installed_board
  printf 'web_root /nowhere\napp_dir widget\nversion 2.0\nhave_conf false\n' >> install.dat
  cat > install.q <<'EOF'
[upgrade]
DirExist web_root - - 1 Document root
Text     app_dir  - - 2 Folder of the board
EOF
  cat > install.cpy <<'EOF'
[upgrade]
Exist    $(web_root)/$(app_dir)/conf.ini  have_conf
Rename   $(web_root)/$(app_dir)/conf.ini  $(web_root)/$(app_dir)/conf.ini.old  have_conf
CopyFile $(current_dir)/src/*.html  -  $(web_root)/$(app_dir)
WFile    $(web_root)/$(app_dir)/VERSION  version
EOF
  printf 'Shown after an install only\n' > blurb.txt
  talk $'2\n\n'"$PRODUCT_DIR/www"$'\n\nn\n\n'
  want_opening
  want $'[Upgrade]\nDocument root [/nowhere]? '
  want $'Error: Directory \'/nowhere\' must exist, No such file or directory, please try again\n'
  want 'Document root [/nowhere]? Folder of the board [widget]? '
  want 'Do you want to change your answers [n]? '
  want $'Copying files[.]\nSuccess 11 bytes in 4 files copied\n'
  want_press_enter
  check_dialogue
  [ "$(cat www/widget/index.html)" = "hello page" ]
  [ "$(cat www/widget/conf.ini.old)" = "title = Old" ]
  [ ! -e www/widget/conf.ini ]
  [ "$(cat www/widget/VERSION)" = "2.0" ]
  log_has Error "Directory '/nowhere' must exist, No such file or directory"
}

@test "remove: goes on past a failing line and still reports success" {
  make_installed_board
  printf 'extra\n' > www/extra.txt
  printf 'web_root $(current_dir)/www\n' >> install.dat
  printf '[remove]\nDir web_root - - 1 Document root\n' > install.q
  cat > install.cpy <<'EOF'
[remove]
RmDir  $(web_root)/widget      -
RmFile $(web_root)/missing-*   -
RmFile $(web_root)/*.txt       -
EOF
  talk $'3\n\nn\n\n'
  want_opening
  want $'[Remove]\n' "Document root [$PRODUCT_DIR/www]? "
  want 'Do you want to change your answers [n]? '
  # widget holds index.html, conf.ini and sub/ with two files: 6 removed
  # with it; extra.txt makes 7.
  want $'Removing files[.......]\n Success 7 files removed\n'
  want_press_enter
  check_dialogue
  [ ! -e www/widget ]
  [ ! -e www/extra.txt ]
  [ -d www ]
  log_has Info "Stop on fail NOT set, continuing..."
}

@test "b steps back to the previous question, and stays put at the first" {
  printf 'first one\nsecond two\nthird three\n' >> install.dat
  cat > install.q <<'EOF'
[install]
Text first  - - 1 First
Text second - - 2 Second
Text third  - - 3 Third
EOF
  cat > install.cpy <<'EOF'
[install]
WFile $(current_dir)/first.txt  first
WFile $(current_dir)/second.txt second
WFile $(current_dir)/third.txt  third
EOF
  talk $'1\nb\nant\nb\nape\nbee\nB\nbat\ncat\nn\n\n'
  want_opening
  want $'[Install]\n'
  want 'First [one]? First [one]? Second [two]? First [ant]? Second [two]? '
  want 'Third [three]? Second [bee]? Third [three]? '
  want 'Do you want to change your answers [n]? '
  want $'Copying files[]\nSuccess 0 bytes in 3 files copied\n'
  want_press_enter
  check_dialogue
  [ "$(cat first.txt)" = ape ]
  [ "$(cat second.txt)" = bat ]
  [ "$(cat third.txt)" = cat ]
}

@test "changing the answers asks everything again with the new defaults" {
  printf 'colour red\nsize small\n' >> install.dat
  printf '[install]\nText colour - - 1 Colour\nText size - - 2 Size\n' > install.q
  printf '[install]\nWFile $(current_dir)/pick.txt colour\n' > install.cpy
  talk $'1\nblue\n\nyes\n\nlarge\nn\n\n'
  want_opening
  want $'[Install]\nColour [red]? Size [small]? Do you want to change your answers [n]? '
  want 'Colour [blue]? Size [small]? Do you want to change your answers [n]? '
  want $'Copying files[]\nSuccess 0 bytes in 1 files copied\n'
  want_press_enter
  check_dialogue
  [ "$(cat pick.txt)" = blue ]
}

# Each row: input | options | heading | how the output ends.
@test "install and upgrade stop at a failing line; remove and special go on" {
  printf 'sure false\nwhere $(current_dir)\n' >> install.dat
  for section in install upgrade remove nightly; do
    printf '[%s]\n' "$section" >> install.q
    cat >> install.cpy <<EOF
[$section]
WFile \$(where)/first.txt  one
Error sure  Not sure about \$(where),  stopping
WFile \$(where)/second.txt two
EOF
  done
  while IFS='|' read -r input args heading closing; do
    rm -f first.txt second.txt install.log
    printf -v input '%b' "$input"
    printf -v closing '%b' "$closing"
    talk "$input" $args
    [ "$status" -eq 0 ]
    [[ "$output" == *"[$heading]"$'\n'* ]]
    [[ "$output" == *"$closing" ]]
    [ "$(cat first.txt)" = one ]
    if [[ "$closing" == *Failed* ]]; then
      [ ! -e second.txt ]
      log_has Info "Stop on fail set, stopping..."
    else
      [ "$(cat second.txt)" = two ]
      log_has Info "Stop on fail NOT set, continuing..."
    fi
  done <<EOF
1\n\n\n||Install|Copying files[]\nFailed,  Not sure about $PRODUCT_DIR,  stopping\n<Press enter to exit>
2\n\n\n||Upgrade|Copying files[]\nFailed,  Not sure about $PRODUCT_DIR,  stopping\n<Press enter to exit>
3\n\n\n||Remove|Removing files[]\n Success 2 files removed\n\n<Press enter to exit>
\n\n|-special nightly|nightly|Executing[]\n Success 2 files done.\n\n<Press enter to exit>
EOF
}

@test "a failed install still shows the blurb; a failure without an Error line gives no reason" {
  printf '[install]\n' > install.q
  cat > install.cpy <<'EOF'
[install]
CopyFile $(current_dir)/src/*.none  -  $(current_dir)
WFile    $(current_dir)/after.txt  never
EOF
  mkdir src
  printf 'Read the manual\n' > blurb.txt
  talk $'1\n\n\n'
  want_opening
  want $'[Install]\nDo you want to change your answers [n]? '
  want $'Copying files[]\nFailed, \nRead the manual\n'
  want_press_enter
  check_dialogue
  [ ! -e after.txt ]
  log_has Info "No files found to copy in '$PRODUCT_DIR/src/' matching '*.none'"
}

@test "a file step that fails shows the system's reason between the dots" {
  mkdir -p src out/b.txt
  printf 'a\n' > src/a.txt
  printf 'b\n' > src/b.txt
  printf '[install]\n' > install.q
  cat > install.cpy <<'EOF'
[install]
CopyFile $(current_dir)/src/a.txt  -  $(current_dir)/out
CopyFile $(current_dir)/src/b.txt  -  $(current_dir)/out
EOF
  talk $'1\n\n\n'
  want_opening
  want $'[Install]\nDo you want to change your answers [n]? '
  want $'Copying files[.\nError: Is a directory\n]\nFailed, '
  want_press_enter
  check_dialogue
  [ "$(cat out/a.txt)" = a ]
  log_has Error "Error opening '$PRODUCT_DIR/out/b.txt' for write, Is a directory"
}

@test "questions that cannot be loaded: logged, nothing copied, blurb after install" {
  printf '[install]\nWFile $(current_dir)/ran.txt yes\n[upgrade]\nWFile $(current_dir)/ran.txt yes\n' > install.cpy
  printf 'Blurb text\n' > blurb.txt
  for questions in none '[other]\nText x - - 1 X\n'; do
    rm -f install.q install.log
    [ "$questions" = none ] || printf "$questions" > install.q
    talk $'1\n\n'
    want_opening
    want $'[Install]\n\nBlurb text\n'
    want_press_enter
    check_dialogue
    log_has Error "Error loading questions"

    talk $'2\n\n'
    want_opening
    want $'[Upgrade]\n'
    want_press_enter
    check_dialogue
    [ ! -e ran.txt ]
  done
  log_has Error "Section 'upgrade' not found"
}

@test "a copy script without the action's section prints nothing after the questions" {
  printf '[install]\n' > install.q
  printf 'Blurb text\n' > blurb.txt
  for script in none '[upgrade]\nWFile $(current_dir)/ran.txt yes\n'; do
    rm -f install.cpy
    [ "$script" = none ] || printf "$script" > install.cpy
    talk $'1\n\n\n'
    want_opening
    want $'[Install]\nDo you want to change your answers [n]? \nBlurb text\n'
    want_press_enter
    check_dialogue
    [ ! -e ran.txt ]
  done
  log_has Error "Error opening '$PRODUCT_DIR/install.cpy', No such file or directory"
}

# Each row: menu choice | heading | how the message reads | blurb shown.
@test "an Error question stops the action; only upgrade substitutes its text" {
  printf 'found false\nweb_root /srv/www\n' >> install.dat
  for section in install upgrade remove; do
    printf '[%s]\nError found 9 Cannot find $(web_root)\nText never - - 1 Never asked\n' \
      "$section" >> install.q
    printf '[%s]\nWFile $(current_dir)/ran.txt yes\n' "$section" >> install.cpy
  done
  printf 'Blurb text\n' > blurb.txt
  while IFS='|' read -r choice heading message blurb; do
    talk "$choice"$'\n\n'
    want_opening
    want "[$heading]"$'\n' "Error: $message"$'\n'
    [ -z "$blurb" ] || want $'\n' "$blurb"$'\n'
    want_press_enter
    check_dialogue
    [ ! -e ran.txt ]
  done <<'EOF'
1|Install|Cannot find $(web_root)|Blurb text
2|Upgrade|Cannot find /srv/www|
3|Remove|Cannot find $(web_root)|
EOF
}

@test "-automate: a refused default ends the action before the copy script" {
  printf 'data_dir /no/such/dir\nkeep yes\n' >> install.dat
  cat > install.q <<'EOF'
[install]
YN       keep     - - 1 Keep old data
DirExist data_dir - - 2 Data folder
EOF
  printf '[install]\nWFile $(current_dir)/ran.txt yes\n' > install.cpy
  printf 'Blurb text\n' > blurb.txt
  talk '' -automate
  want_banner Widget
  want_menu Widget
  want $'\n[Install]\n'
  want $'Error: Directory \'/no/such/dir\' must exist, No such file or directory, please try again\n'
  want $'\nBlurb text\n'
  check_dialogue
  [ ! -e ran.txt ]
}
