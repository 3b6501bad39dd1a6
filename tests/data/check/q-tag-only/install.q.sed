$a\
\
[restore]\
Dir       backup_dir  -           -      40  Folder of the backups
