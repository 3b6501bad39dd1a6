7c\
TimeDate   date_fmt     install_date   -              -
