5c\
MkDir     $(web_root)/$(appdir)
