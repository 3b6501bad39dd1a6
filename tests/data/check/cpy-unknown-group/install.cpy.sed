12c\
Chown     $(web_root)/$(app_dir)         -   root:nosuchgroup-check
