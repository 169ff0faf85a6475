# Where the programs go when they are installed on Debian and its like, and what the packages say.
include(GNUInstallDirs)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
set(documentation ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package})

install(TARGETS VORAII_Tool k7 k7-simulator RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${package}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
# Software centres look for a file named after the ID in it.
install(FILES ${package}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
  RENAME local.voraii.tool.metainfo.xml)
# voraii-tool.png was made once: rsvg-convert -w 128 -h 128 voraii-tool.svg -o voraii-tool.png
install(FILES ${package}.svg DESTINATION ${icons}/scalable/apps)
install(FILES ${package}.png DESTINATION ${icons}/128x128/apps)
install(FILES VORAII_Tool.1 k7.1 k7-simulator.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES
  ${PROJECT_SOURCE_DIR}/ARCHITECTURE.md
  ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  ${PROJECT_SOURCE_DIR}/LICENSE
  ${PROJECT_SOURCE_DIR}/README.md
  DESTINATION ${documentation})
# The program knows its own grammar.
set(completion ${CMAKE_CURRENT_BINARY_DIR}/completion)
foreach(shell_file bash/k7 zsh/_k7 fish/k7.fish)
  get_filename_component(shell ${shell_file} DIRECTORY)
  file(MAKE_DIRECTORY ${completion}/${shell})
  add_custom_command(OUTPUT ${completion}/${shell_file}
    COMMAND k7 completion ${shell} > ${completion}/${shell_file} DEPENDS k7 VERBATIM)
  list(APPEND completions ${completion}/${shell_file})
endforeach()
add_custom_target(k7_completion ALL DEPENDS ${completions})
install(FILES ${completion}/bash/k7
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${completion}/zsh/_k7 DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${completion}/fish/k7.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
# README.md shows the pictures in docs/ by that path.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${documentation})
# Debian looks for the licence under this name.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${documentation} RENAME copyright)

set(CPACK_GENERATOR DEB TGZ)
string(APPEND CPACK_PACKAGE_DESCRIPTION "

Users of the tool must be in the group dialout to use serial ports:
sudo usermod -aG dialout USER")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/folder-permissions.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The window also speaks Chinese, and so do Qt's own dialogs in it.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-wqy-zenhei | fonts-noto-cjk, qttranslations5-l10n")
