$a\
have_backups   false
