5d
