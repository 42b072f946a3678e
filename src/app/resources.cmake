# Included after the folders: the string table and the default bitmap as the module's resources. Elsewhere the string
# table is compiled in.
if(WIN32)
  target_sources(torv_app PRIVATE ${CMAKE_CURRENT_LIST_DIR}/torv.rc)
  set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/torv.rc TARGET_DIRECTORY torv_app PROPERTIES
    OBJECT_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/string_table.inc;${CMAKE_CURRENT_LIST_DIR}/default_button.bmp")
endif()
