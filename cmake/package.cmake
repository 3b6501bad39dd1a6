# `cmake --install`: the program, its manual page and the packager reference.
#
# The program keeps the name `install`, since its base name names the data
# files it reads beside itself; a product's maker copies it into the product's
# kit. So it goes under libexec/, where a packager copies it from, never into
# bin/, where it would shadow the system's install(1), and its manual page has
# a name of its own.
include(GNUInstallDirs)

set(INSTALL_KIT_NAME webapp-installer)

install(TARGETS installer RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/${INSTALL_KIT_NAME})
install(FILES ${INSTALL_MANUAL_PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/docs/packager-reference.md
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${INSTALL_KIT_NAME})
