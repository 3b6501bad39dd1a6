3c\
title = $(titel)
