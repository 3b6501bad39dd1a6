# Widget: questions
[install]
Dir       web_root    -           -      1  Document root
Exist     $(web_root)  found_root
Copy      make_root   -           -      2  create_dirs
YN        make_root   found_root  false  3  $(web_root) does not exist yet. Create it
Loop      make_root   0
Text      app_dir     -           -      4  Folder under $(web_root)
YN        use_cache   -           -      5  Keep a cache

[upgrade]
DirExist  web_root    -           -      10  Document root
Text      app_dir     -           -      11  Folder of the widget
Exist     $(web_root)/$(app_dir)  installed
Error     installed   12  No widget in $(web_root)/$(app_dir)

[remove]
DirExist  web_root    -           -      20  Document root
Text      app_dir     -           -      21  Folder of the widget

[backup]
Dir       backup_dir  -           -      30  Folder for backups

[restore]
Dir       backup_dir  -           -      40  Folder of the backups
