15,16c\
Exist     $(web_root)/$(app_dir)/site.ini   have_config\
Rename    $(web_root)/$(app_dir)/site.ini   $(web_root)/$(app_dir)/site.ini.old   have_config
