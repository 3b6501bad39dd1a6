14c\
no_httpd_root  true
