4,5c\
Copy       web_root     scratch_root\
exist      $(web_root)/$(app_dir)/index.html  installed  -  -
