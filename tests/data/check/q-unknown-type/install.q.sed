8c\
Textual   app_dir     -           -      4  Folder under $(web_root)
