$a\
app_dir        gadget
