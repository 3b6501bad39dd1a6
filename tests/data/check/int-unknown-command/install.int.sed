6c\
copy       action       upgrade        installed      true
