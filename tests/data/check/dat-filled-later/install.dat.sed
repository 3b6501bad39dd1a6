$a\
site_dir       $(web_root)/widget
