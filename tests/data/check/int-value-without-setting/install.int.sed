6c\
Copy       action       upgrade        -              true
