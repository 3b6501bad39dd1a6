5c\
Exist      $(web_root)/$(app_name)/index.html  installed  -  -
