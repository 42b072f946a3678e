# torv_add_folder(NAME)               one object library a subsystem folder of src/torv/: torv_<name>
# torv_install_library(NAME)          a library that hosts link: its version, and its parts in their packages
# torv_add_companion(NAME SOURCES..)  one external-style library, named exactly NAME, with undecorated C entry points;
#                                     installed, unless it is FOR_TESTS
# torv_add_test(NAME FOLDERS ..)      tests/<name>/*.cpp as one doctest program over just these subsystem folders; without
#                                     any it is a host that links what LIBRARIES names

function(torv_add_folder name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/torv/${name}/*.cpp)
  if(name STREQUAL "platform")
    file(GLOB afx CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/torv/platform/afx/*.cpp)
    if(WIN32)
      file(GLOB system CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/torv/platform/windows/*.cpp)
    else()
      file(GLOB system CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/torv/platform/posix/*.cpp)
    endif()
    list(APPEND sources ${afx} ${system})
  endif()
  if(NOT sources)
    add_library(torv_${name} INTERFACE)
    return()
  endif()
  add_library(torv_${name} OBJECT ${sources})
  target_compile_definitions(torv_${name} PRIVATE TORV_BUILDING)
  target_include_directories(torv_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/companions/include)
  if(NOT name STREQUAL "platform") # the door itself is built without having passed it
    torv_precompile(torv_${name} library <torv/platform/platform.h>)
  endif()
endfunction()

function(torv_install_library name)
  if(WIN32)
    set_target_properties(${name} PROPERTIES PREFIX "")
  else()
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0)
  endif()
  install(TARGETS ${name} EXPORT torvTargets
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT development
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endfunction()

function(torv_add_companion name)
  cmake_parse_arguments(ARG "FOR_TESTS" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES PREFIX "")
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/companions/include ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
  # Where the library looks for companions: beside itself on Windows, in the folder torv there elsewhere. They need
  # nothing from its place: what they link is the system's.
  if(ARG_FOR_TESTS)
    return()
  elseif(WIN32)
    install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR} OPTIONAL)
  else()
    install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/torv OPTIONAL)
  endif()
endfunction()

function(torv_add_test name)
  cmake_parse_arguments(ARG "" "" "FOLDERS;LIBRARIES;DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp)
  if(NOT sources)
    return()
  endif()
  string(REPLACE "/" "_" id ${name})
  add_executable(test_${id} ${sources})
  set(precompiled host_tests)
  if(ARG_FOLDERS) # they stand in the program itself
    target_compile_definitions(test_${id} PRIVATE TORV_STATIC)
    set(precompiled tests)
  endif()
  target_include_directories(test_${id} PRIVATE ${CMAKE_SOURCE_DIR}/tests ${CMAKE_SOURCE_DIR}/src
                                                ${CMAKE_SOURCE_DIR}/companions/include)
  foreach(folder ${ARG_FOLDERS})
    target_link_libraries(test_${id} PRIVATE torv_${folder})
  endforeach()
  target_link_libraries(test_${id} PRIVATE test_main torv_host_headers torv_system ${ARG_LIBRARIES})
  # What is tested is optimized as it ships; the tests' own code is compiled for the compiler's sake.
  target_compile_options(test_${id} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O0>)
  torv_precompile(test_${id} ${precompiled} <torv/platform/platform.h> <doctest/doctest.h> <filesystem> <fstream> <functional>
                  <memory> <string> <vector>)
  foreach(dependency ${ARG_DEPENDS})
    if(TARGET ${dependency})
      add_dependencies(test_${id} ${dependency})
    endif()
  endforeach()
  add_test(NAME ${id} COMMAND test_${id} WORKING_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
endfunction()
