$a\
\
[Install]\
Text      title       -           -      6  Title
