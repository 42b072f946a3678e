# Run when the library is installed: torv.h and every header that it reaches, as a host needs them; the others are the
# library's own affair. SOURCE is the include folder, SKIP a pattern of what the other system has, DESTINATION where to.
cmake_policy(VERSION 3.25) # an install script begins with none
set(found)
set(next torv/torv.h)
while(next)
  list(POP_FRONT next header)
  if(header IN_LIST found OR header MATCHES "${SKIP}" OR NOT EXISTS ${SOURCE}/${header})
    continue()
  endif()
  list(APPEND found ${header})
  file(STRINGS ${SOURCE}/${header} includes REGEX "^#include \"torv/")
  list(TRANSFORM includes REPLACE "^#include \"([^\"]+)\".*" "\\1")
  list(APPEND next ${includes})
endwhile()
foreach(header ${found})
  get_filename_component(folder ${header} DIRECTORY)
  file(INSTALL ${SOURCE}/${header} DESTINATION ${DESTINATION}/${folder})
endforeach()
