4,5c\
Copy       web_root     scratch_root   no_httpd_root\
Exist      $(web_root)/$(app_dir)/index.html  installed  -  true
