# torv_precompile(TARGET NAME HEADER..)  The headers that every unit of TARGET includes anyhow, compiled once: half of a
#                                        unit's time goes into them. Targets of one NAME share one compilation, so their
#                                        options and definitions must be equal.
function(torv_precompile target name)
  set(owner precompiled_${name})
  if(NOT TARGET ${owner})
    file(CONFIGURE OUTPUT ${owner}.cpp CONTENT "// holds nothing: its options make the precompiled header\n")
    add_library(${owner} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${owner}.cpp)
    target_include_directories(${owner} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/companions/include)
    target_link_libraries(${owner} PRIVATE torv_host_headers)
    target_compile_definitions(${owner} PRIVATE $<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>)
    target_compile_options(${owner} PRIVATE $<TARGET_PROPERTY:${target},COMPILE_OPTIONS>)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE AND NOT WIN32) # whose code is as movable as a program's
      set_target_properties(${owner} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
      target_compile_options(${owner} PRIVATE -fPIE)
    endif()
    target_precompile_headers(${owner} PRIVATE ${ARGN})
  endif()
  target_precompile_headers(${target} REUSE_FROM ${owner})
endfunction()
