# How a host finds the installed libraries: find_package(torv) with the targets torv::torv, torv::songs and torv::c, or pkg-config.
# Nothing in it names the place where it was installed, so the tree may be moved.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/torv)
install(EXPORT torvTargets NAMESPACE torv:: DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/torvConfig.cmake.in ${CMAKE_BINARY_DIR}/torvConfig.cmake
                              INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/torvConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/torvConfig.cmake ${CMAKE_BINARY_DIR}/torvConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

if(NOT WIN32)
  file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" up "${up}")
  foreach(package torv torvsongs torvc)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${CMAKE_BINARY_DIR}/${package}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
  endforeach()
endif()
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -DMANIFEST=${CMAKE_BINARY_DIR}/install_manifest.txt
                                     -P ${CMAKE_CURRENT_LIST_DIR}/Uninstall.cmake VERBATIM)
