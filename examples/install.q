# Questions of the Noticeboard installer, one section per action.
# Asked types:  Type  setting  control  comparison  help-id  question text
# Not asked:    Exist path setting | Error setting help-id text |
#               Loop setting index | Copy setting - - help-id source-setting
# A control of "-" means always ask; a control alone asks when its setting
# reads as true; with a comparison, when the two are exactly equal.
# Loop indexes count the questions of their section from 0.

[install]
Dir       web_root     -           -      100  Web server document root
Exist     $(web_root)  root_found
Copy      make_root    -           -      101  create_dirs
YN        make_root    root_found  false  102  $(web_root) does not exist yet. Create it
Loop      make_root    0
Text      app_dir      -           -      103  Folder under $(web_root) for the board
Dir       cgi_dir      -           -      104  Directory for CGI scripts
FileName  cgi_name     -           -      105  Name of the notes script in $(cgi_dir)
DirEmpty  data_dir     -           -      106  Folder for the notes (new or empty)
FileExist welcome_note -           -      107  Text file to pin as the first note
Text      board_title  -           -      108  Title shown at the top of the board
YN        moderate     -           -      109  Hold new notes until a moderator approves them
Text      moderator_email moderate -      110  E-mail address of the moderator
YN        keep_log     -           -      111  Keep a log of posted notes
File      notes_log    keep_log    -      112  File to log posted notes in
YN        set_owner    -           -      113  Hand the notes folder to the web server's user
Text      web_user     set_owner   -      114  User the web server runs as
Text      web_group    set_owner   -      115  Group the web server runs as

[upgrade]
DirExist  web_root     -           -      200  Web server document root
Text      app_dir      -           -      201  Folder under $(web_root) that holds the board
Exist     $(web_root)/$(app_dir)/index.php  app_present
Error     app_present  202  No board found in $(web_root)/$(app_dir); choose Install instead
Dir       cgi_dir      -           -      203  Directory for CGI scripts
FileName  cgi_name     -           -      204  Name of the notes script in $(cgi_dir)
DirExist  data_dir     -           -      205  Folder that holds the notes
Text      board_title  -           -      206  Title shown at the top of the board
YN        moderate     -           -      207  Hold new notes until a moderator approves them
Text      moderator_email moderate -      208  E-mail address of the moderator
YN        keep_log     -           -      209  Keep a log of posted notes
File      notes_log    keep_log    -      210  File to log posted notes in
YN        set_owner    -           -      211  Hand the notes folder to the web server's user
Text      web_user     set_owner   -      212  User the web server runs as
Text      web_group    set_owner   -      213  Group the web server runs as
YN        go_ahead     -           -      214  Upgrade the board in $(web_root)/$(app_dir) to version $(version) now
Error     go_ahead     215  Upgrade cancelled, nothing was changed

[remove]
DirExist  web_root     -           -      300  Web server document root
Text      app_dir      -           -      301  Folder under $(web_root) that holds the board
Exist     $(web_root)/$(app_dir)/index.php  app_present
Error     app_present  302  No board found there, nothing to remove
Dir       cgi_dir      -           -      303  Directory for CGI scripts
FileName  cgi_name     -           -      304  Name of the notes script in $(cgi_dir)
Dir       data_dir     -           -      305  Folder that holds the notes
YN        remove_data  -           -      306  Delete the notes in $(data_dir) as well

# Run with: install -special backup
[backup]
DirExist  data_dir     -           -      400  Folder that holds the notes
Dir       backup_dir   -           -      401  Folder to keep backups in
