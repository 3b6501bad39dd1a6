# File work of the Noticeboard installer, one section per action.
#   CopyFile, CopyDir, Chown, Chmod:  source  not  destination  [control [comparison]]
#   RmFile, RmDir:                    source  not  [control [comparison]]
#   MkDir:                            path  [control [comparison]]
#   Ini, Rename, Exist, WFile, RFile: source  destination  [control [comparison]]
#   Error:                            setting  message to the end of the line
# "not" lists names to leave out, separated by commas ("-" for none).
# A destination names existing directories and never ends in "/".
# $(name) references are filled in when the section is loaded, after the
# questions; controls are read when the line runs.

[install]
# Refuse to start from an incomplete product folder
Exist     $(current_dir)/htdocs/index.php   kit_ok
Error     kit_ok  The product folder is incomplete (htdocs/index.php is missing), unpack it again
# The board's folders, with any missing parents
MkDir     $(web_root)/$(app_dir)
MkDir     $(cgi_dir)
MkDir     $(data_dir)/held
# Pages, style sheet and access rules, without editor leftovers; then the images as a tree
CopyFile  $(current_dir)/htdocs/*        *~,*.bak,*.orig   $(web_root)/$(app_dir)
CopyDir   $(current_dir)/htdocs/images   -                 $(web_root)/$(app_dir)
# Settings for the page, filled in from the answers, and the version it was made by
Ini       $(current_dir)/conf/board.ini.in   $(web_root)/$(app_dir)/config.ini
WFile     $(web_root)/$(app_dir)/VERSION     version
# The notes script under its chosen name, with its own copy of the settings
CopyFile  $(current_dir)/cgi-bin/notes.cgi   -   $(cgi_dir)
Rename    $(cgi_dir)/notes.cgi               $(cgi_dir)/$(cgi_name).cgi
Ini       $(current_dir)/conf/board.ini.in   $(cgi_dir)/$(cgi_name).ini
Chmod     $(cgi_dir)/$(cgi_name).cgi   -   755
# The first note
CopyFile  $(welcome_note)   -   $(data_dir)
# The web server writes the notes: give it the folder, and keep others out
Chown     $(data_dir)         -   $(web_user):$(web_group)   set_owner
Chmod     $(data_dir)         -   770                        set_owner
Chmod     $(data_dir)/*.txt   -   660                        set_owner

[upgrade]
# New pages and images over the old ones; the notes are left alone
CopyFile  $(current_dir)/htdocs/*        *~,*.bak,*.orig   $(web_root)/$(app_dir)
CopyDir   $(current_dir)/htdocs/images   -                 $(web_root)/$(app_dir)
# Version 1.0 posted notes from a page of its own; the board page does it now
Exist     $(web_root)/$(app_dir)/post.html   old_post_page
RmFile    $(web_root)/$(app_dir)/post.html   -   old_post_page
# Keep the previous settings beside the new ones
Exist     $(web_root)/$(app_dir)/config.ini   have_config
Rename    $(web_root)/$(app_dir)/config.ini   $(web_root)/$(app_dir)/config.ini.old   have_config
Ini       $(current_dir)/conf/board.ini.in    $(web_root)/$(app_dir)/config.ini
WFile     $(web_root)/$(app_dir)/VERSION      version
# The notes script
CopyFile  $(current_dir)/cgi-bin/notes.cgi   -   $(cgi_dir)
Rename    $(cgi_dir)/notes.cgi               $(cgi_dir)/$(cgi_name).cgi
Ini       $(current_dir)/conf/board.ini.in   $(cgi_dir)/$(cgi_name).ini
Chmod     $(cgi_dir)/$(cgi_name).cgi   -   755
MkDir     $(data_dir)/held
Chown     $(data_dir)   -   $(web_user):$(web_group)   set_owner

[remove]
# Runs to the end even when a line fails
RmDir     $(web_root)/$(app_dir)    -
RmFile    $(cgi_dir)/$(cgi_name).*  -
RmDir     $(data_dir)               -   remove_data

# install -special backup: a dated copy of the notes, unfinished uploads left out
[backup]
MkDir     $(backup_dir)/notes-$(backup_stamp)
CopyDir   $(data_dir)/*   *.tmp   $(backup_dir)/notes-$(backup_stamp)
