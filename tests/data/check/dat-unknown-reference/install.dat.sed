4c\
title          Widget on $(hostname)
