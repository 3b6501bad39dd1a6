$a\
\
[restore]\
CopyDir   $(backup_dir)/widget   -   $(web_root)/$(app_dir)
