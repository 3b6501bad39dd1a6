8c\
Text      app_dir     use_cache
