4c\
Copy       web_root     $(scratch_root)  no_httpd_root  true
