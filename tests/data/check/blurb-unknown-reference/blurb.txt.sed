2c\
Open http://$(host)/$(app_dri)/ to see it.
