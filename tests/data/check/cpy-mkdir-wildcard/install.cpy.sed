24c\
MkDir     $(backup_dir)/widget-*
