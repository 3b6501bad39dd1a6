21c\
RmDir     $(web_root)/$(app_dir)/  -
