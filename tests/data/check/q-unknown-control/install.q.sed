9c\
YN        use_cache   use_cach         -      5  Keep a cache
