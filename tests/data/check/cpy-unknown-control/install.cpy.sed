6c\
MkDir     $(web_root)/$(app_dir)/cache   usecache
