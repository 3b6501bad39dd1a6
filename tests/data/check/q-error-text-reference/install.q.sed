$a\
Exist     $(backup_dir)  have_backups\
Error     have_backups  31  No folder $(backup_dir)
