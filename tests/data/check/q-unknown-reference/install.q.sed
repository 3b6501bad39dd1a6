8c\
Text      app_dir     -           -      4  Folder under $(webroot)
