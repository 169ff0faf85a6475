# What stands in one folder on Windows: an installer puts it there, and a zip holds it.
set(runtime ${PROJECT_SOURCE_DIR}/build/windows-libraries/runtime)
install(TARGETS VORAII_Tool k7 k7-simulator RUNTIME DESTINATION .)
install(DIRECTORY ${runtime}/ DESTINATION .)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION . RENAME LICENSE.txt)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  ${PROJECT_SOURCE_DIR}/ARCHITECTURE.md DESTINATION doc)
# README.md shows the pictures in docs/ by that path.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION doc)

set(CPACK_GENERATOR NSIS ZIP)
set(CPACK_PACKAGE_FILE_NAME ${package}-${PROJECT_VERSION}-windows-x86_64)
set(CPACK_NSIS_MUI_ICON ${CMAKE_CURRENT_LIST_DIR}/voraii-tool.ico)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
# CPack's own template installs for all users, as an administrator.
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
