9c\
Text      host        -           -      5  Name of this host
