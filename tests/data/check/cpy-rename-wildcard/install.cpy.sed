16c\
Rename    $(web_root)/$(app_dir)/*.ini      $(web_root)/$(app_dir)/site.ini.old   have_conf
