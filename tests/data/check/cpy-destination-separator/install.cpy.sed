7c\
CopyFile  $(current_dir)/htdocs/*        *.bak   $(web_root)/$(app_dir)/
