12c\
Chown     $(web_root)/$(app_dir)         -   nosuchuser-check
