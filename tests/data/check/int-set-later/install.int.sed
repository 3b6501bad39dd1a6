$a\
Exist      $(previous)/index.html  installed  -  -\
Copy       previous     web_root       -              -
