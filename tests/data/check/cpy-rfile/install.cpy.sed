$a\
RFile     $(web_root)/$(app_dir)/VERSION   version
