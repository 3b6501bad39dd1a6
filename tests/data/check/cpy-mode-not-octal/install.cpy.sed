11c\
Chmod     $(web_root)/$(app_dir)/*.cgi   -   785
