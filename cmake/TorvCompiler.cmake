# Warnings, sanitizers and floating-point rules, the same for every target of the tree.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
if(TORV_WERROR)
  add_compile_options(-Werror)
endif()
if(TORV_SANITIZE)
  add_compile_options(-fsanitize=${TORV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TORV_SANITIZE})
endif()
if(TORV_FUZZ) # a fuzzer goes by what it sees of the libraries that it links
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
# What ships is the same bytes wherever it is built: paths are told from the build's folder, as a compiler's cache gives
# them too. The last map that fits counts.
file(RELATIVE_PATH up ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
file(RELATIVE_PATH down ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR})
foreach(map ${CMAKE_SOURCE_DIR}/=${up} ${CMAKE_BINARY_DIR}=./${down} ${CMAKE_BINARY_DIR}/=)
  add_compile_options($<$<CONFIG:RelWithDebInfo>:-ffile-prefix-map=${map}>)
  if(CMAKE_INTERPROCEDURAL_OPTIMIZATION) # code is made by the linker's compiler
    add_link_options($<$<CONFIG:RelWithDebInfo>:-ffile-prefix-map=${map}>)
  endif()
endforeach()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # Out of a precompiled header GCC tells one of several places of a variable, and which depends on the folder.
  add_compile_options($<$<CONFIG:RelWithDebInfo>:-fno-var-tracking-assignments>)
  # It names a system header by its link or by what it links to, whichever is shorter: that depends on the folder too.
  add_compile_options($<$<CONFIG:RelWithDebInfo>:-fno-canonical-system-headers>)
endif()
if(WIN32)
  add_link_options(-Wl,--no-insert-timestamp)
endif()
if(NOT WIN32)
  # The library calls its own exported functions directly, as the other target always does.
  add_compile_options($<$<CONFIG:RelWithDebInfo>:-fno-semantic-interposition>)
endif()
# torv_optimize_loops(SOURCES ..)  files whose loops over samples the compiler shall take several of at once; the rest of
#                                  the tree gains nothing by it, or loses (docs/performance.md)
function(torv_optimize_loops)
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS $<$<CONFIG:RelWithDebInfo>:-O3>)
endfunction()
# torv_keep_loops(TARGET)          leaves such a target's code as it was compiled: put together with that of other files
#                                  when it is linked, the loops would lose
function(torv_keep_loops target)
  set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
endfunction()
if(WIN32)
  # x87 registers would round time conversions and the mixer's truncations differently from every other target.
  add_compile_options(-msse2 -mfpmath=sse -mstackrealign)
  add_compile_definitions(NOMINMAX WIN32_LEAN_AND_MEAN STRICT _WIN32_WINNT=0x0601)
  # One C++ runtime for the library and its hosts, so that a wave file's exception can be caught where it is meant to be.
  foreach(runtime libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime} OUTPUT_VARIABLE path
                    OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(COPY ${path} DESTINATION ${CMAKE_BINARY_DIR}/bin FOLLOW_SYMLINK_CHAIN)
    install(PROGRAMS ${CMAKE_BINARY_DIR}/bin/${runtime} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endforeach()
endif()
# The cache may answer for a precompiled header by its content: nothing here depends on __TIME__ or on macros of an
# including file.
find_program(CCACHE ccache)
if(CCACHE)
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # Out of a precompiled header GCC 12 warns of overlaps inside std::string that cannot happen.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess> $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
