9c\
YN        use_cache   -           -      5
