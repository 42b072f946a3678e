# Header-only packages of the build machine (doctest, CLI11, nlohmann-json, rapidxml) for both targets. A cross compiler must not
# see /usr/include as a whole, so the packages it may use are linked into a folder of their own.
set(TORV_HOST_HEADERS ${CMAKE_BINARY_DIR}/host_headers)
file(MAKE_DIRECTORY ${TORV_HOST_HEADERS})
foreach(package doctest CLI nlohmann rapidxml)
  if(EXISTS /usr/include/${package})
    file(CREATE_LINK /usr/include/${package} ${TORV_HOST_HEADERS}/${package} SYMBOLIC)
  else()
    message(FATAL_ERROR "Missing header package '${package}': run scripts/setup, which installs what the build needs")
  endif()
endforeach()
add_library(torv_host_headers INTERFACE)
target_include_directories(torv_host_headers SYSTEM INTERFACE ${TORV_HOST_HEADERS})
