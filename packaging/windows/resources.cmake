# Icon, version and manifest of a program.
enable_language(RC)
set(windows_resources ${CMAKE_CURRENT_LIST_DIR})

function(voraii_resources target description)
  set(PROGRAM ${target})
  set(DESCRIPTION ${description})
  string(REPLACE "." "," VERSION_WORDS ${PROJECT_VERSION})
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${windows_resources}/program.rc.in ${script} @ONLY)
  target_sources(${target} PRIVATE ${script})
  set_source_files_properties(${script} PROPERTIES
    OBJECT_DEPENDS "${windows_resources}/program.manifest;${windows_resources}/voraii-tool.ico")
endfunction()
