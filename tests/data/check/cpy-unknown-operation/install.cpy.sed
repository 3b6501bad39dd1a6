7c\
CopyFiles $(current_dir)/htdocs/*        *.bak   $(web_root)/$(app_dir)
