8c\
CopyDir   $(web_root)/$(app_dir)/images   -      $(web_root)/$(app_dir)
