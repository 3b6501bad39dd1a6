6c\
Copy       action       upgrade        installed      -
