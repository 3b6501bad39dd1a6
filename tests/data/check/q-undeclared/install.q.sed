9c\
YN        use_log     -           -      5  Keep a log
