7c\
TimeDate   date_format  install_date
