5c\
Copy      make_root   -           -      2  create_dir
