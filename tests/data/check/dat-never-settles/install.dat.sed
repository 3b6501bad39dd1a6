4c\
title          $(title) on $(host)
