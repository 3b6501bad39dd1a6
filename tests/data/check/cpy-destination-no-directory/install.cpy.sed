8c\
CopyDir   $(current_dir)/htdocs/images   -       images
