7c\
Loop      make_root   6
