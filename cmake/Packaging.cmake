# What "cmake --install" puts where, and the packages that "cpack -G DEB" makes of it. Two components, and a package
# of each: quorvex, the command for terminals, with all documents; vantaro, what belongs to the desktop.

set(packaging "${PROJECT_SOURCE_DIR}/packaging")

install(TARGETS quorvex RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT quorvex)
install(FILES "${packaging}/man/quorvex.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT quorvex)
# One file for both commands; bash looks for it by the name of the command.
install(FILES "${packaging}/completion/quorvex.bash"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME quorvex COMPONENT quorvex)
install(FILES "${packaging}/completion/_quorvex"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" COMPONENT quorvex)
install(
    FILES
        LICENSE
        docs/run-journal.md
        docs/script-format.md
        docs/script-text.md
        docs/title-formatting.md
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/quorvex" COMPONENT quorvex)
install(FILES samples/scripts/first-steps.qvx
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/quorvex/examples" COMPONENT quorvex)

install(TARGETS vantaro RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT vantaro)
install(TARGETS vnt_quorvex LIBRARY DESTINATION "${QUORVEX_COMPONENT_INSTALL_DIR}" COMPONENT vantaro)
install(FILES "${packaging}/man/vantaro.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT vantaro)
install(FILES "${packaging}/completion/quorvex.bash"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME vantaro COMPONENT vantaro)
install(FILES "${packaging}/desktop/org.vantaro.Vantaro.desktop"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/applications" COMPONENT vantaro)
install(FILES "${packaging}/desktop/org.vantaro.Vantaro.metainfo.xml"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo" COMPONENT vantaro)
install(FILES "${packaging}/desktop/org.vantaro.Vantaro.svg"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps" COMPONENT vantaro)

install(DIRECTORY "${CMAKE_BINARY_DIR}/share/doc/vantaro/help"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/vantaro" COMPONENT vantaro)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvex)
set(CPACK_PACKAGE_CONTACT "The Quorvex maintainers")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL quorvex vantaro)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_QUORVEX_PACKAGE_NAME quorvex)
set(CPACK_DEBIAN_QUORVEX_DESCRIPTION "batch tag editor for music files, for terminals
Edits the tags of many music files at once with scripts of actions: set this
field, split that one, number the tracks of each album, guess the rest from
the names of the files. What a script would do can be seen first, and what
it did can be taken back afterwards. A crash in the middle costs no file.")
set(CPACK_DEBIAN_VANTARO_PACKAGE_NAME vantaro)
# Undo, the documents, and zsh's completion.
set(CPACK_DEBIAN_VANTARO_PACKAGE_DEPENDS "quorvex (= ${PROJECT_VERSION})")
# Icons, and the other kind of display.
set(CPACK_DEBIAN_VANTARO_PACKAGE_RECOMMENDS "libqt6svg6, qt6-wayland")
set(CPACK_DEBIAN_VANTARO_DESCRIPTION "batch tag editor for music files
Edits the tags of music files, of one album or of a whole collection, with
scripts of actions that are built once, tried without writing, run, and kept
for next time.

This package has the program for the desktop and its component Quorvex.")
# Where Debian wants things otherwise than other systems.
set(CPACK_PRE_BUILD_SCRIPTS "${packaging}/debian/finish.cmake")
include(CPack)
