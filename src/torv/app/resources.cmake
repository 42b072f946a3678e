# Included after the folders: the string table and the default bitmap as the module's resources. Elsewhere both are
# compiled in, the bitmap as a list of its file's bytes.
set(button ${CMAKE_CURRENT_LIST_DIR}/default_button.bmp)
if(WIN32)
  target_sources(torv_app PRIVATE ${CMAKE_CURRENT_LIST_DIR}/torv.rc)
  set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/torv.rc TARGET_DIRECTORY torv_app PROPERTIES
    OBJECT_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/string_table.inc;${button}")
else()
  file(READ ${button} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/app_resources/default_button.inc CONTENT "${bytes}\n")
  target_include_directories(torv_app PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/app_resources)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${button})
endif()
