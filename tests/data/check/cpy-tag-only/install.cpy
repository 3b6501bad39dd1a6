# Widget: file work
[install]
Exist     $(current_dir)/htdocs/index.html  kit_ok
Error     kit_ok  The product folder is incomplete, unpack it again
MkDir     $(web_root)/$(app_dir)
MkDir     $(web_root)/$(app_dir)/cache   use_cache
CopyFile  $(current_dir)/htdocs/*        *.bak   $(web_root)/$(app_dir)
CopyDir   $(current_dir)/htdocs/images   -       $(web_root)/$(app_dir)
Ini       $(current_dir)/site.ini.in     $(web_root)/$(app_dir)/site.ini
WFile     $(web_root)/$(app_dir)/VERSION  version
Chmod     $(web_root)/$(app_dir)/*.cgi   -   755
Chown     $(web_root)/$(app_dir)         -   $(web_user):$(web_group)

[upgrade]
Exist     $(web_root)/$(app_dir)/site.ini   have_conf
Rename    $(web_root)/$(app_dir)/site.ini   $(web_root)/$(app_dir)/site.ini.old   have_conf
CopyFile  $(current_dir)/htdocs/*        *.bak   $(web_root)/$(app_dir)
Ini       $(current_dir)/site.ini.in     $(web_root)/$(app_dir)/site.ini

[remove]
RmDir     $(web_root)/$(app_dir)   -

[backup]
MkDir     $(backup_dir)/widget
CopyDir   $(web_root)/$(app_dir)   -   $(backup_dir)/widget

[restore]
CopyDir   $(backup_dir)/widget   -   $(web_root)/$(app_dir)
