$a\
action         upgrade
