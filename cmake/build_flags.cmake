# install_build_flags: what every object of this project is compiled and
# linked with. Every object library, test, benchmark, fuzz target and the
# program link it; nothing is set directory-wide, so a parent project or a
# packager's own flags are left as they are.
add_library(install_build_flags INTERFACE)

# Headers are included by their folder: "foundation/logger.h".
target_include_directories(install_build_flags INTERFACE ${PROJECT_SOURCE_DIR})

target_compile_options(install_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow
  $<$<BOOL:${INSTALL_WERROR}>:-Werror>)

# Every object goes through our own snprintf/vsnprintf, so the compiler must
# neither fold nor rewrite calls to them, and fortified headers must not
# redirect them to the C library's checked variants (packagers' flags often
# define _FORTIFY_SOURCE; target options come after them and win).
target_compile_options(install_build_flags INTERFACE
  -fno-builtin-snprintf -fno-builtin-vsnprintf -fno-builtin-sprintf -U_FORTIFY_SOURCE)

if(INSTALL_FUZZ)
  target_compile_options(install_build_flags INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(install_build_flags INTERFACE -fsanitize=fuzzer,address,undefined)
elseif(INSTALL_SANITIZE)
  target_compile_options(install_build_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(install_build_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
