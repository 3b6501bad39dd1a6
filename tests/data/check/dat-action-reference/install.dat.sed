$a\
greeting       Welcome to the $(action)
