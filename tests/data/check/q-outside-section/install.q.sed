2i\
Text      title       -           -      0  Title
