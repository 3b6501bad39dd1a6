4c\
Error     kit_ok
