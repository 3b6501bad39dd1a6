7c\
Loop      make_root   5
