# The library's build-time settings. The headers in the source tree hold the defaults; a build with
# other values has a header of its own in front of them, and installs that one.
set(QALT_PBB_CAPACITY 1024 CACHE STRING "Phonebook indices that the index buffer holds, 1 to 1024")
if(NOT QALT_PBB_CAPACITY MATCHES "^[0-9]+$" OR QALT_PBB_CAPACITY LESS 1 OR QALT_PBB_CAPACITY GREATER 1024)
  message(FATAL_ERROR "QALT_PBB_CAPACITY is ${QALT_PBB_CAPACITY}, not a number from 1 to 1024")
endif()
set(QALT_GENERATED_INCLUDE "")
if(NOT QALT_PBB_CAPACITY EQUAL 1024)
  set(QALT_GENERATED_INCLUDE ${CMAKE_CURRENT_BINARY_DIR}/generated)
  file(READ include/qalt_at/config.h header)
  string(REPLACE "QALT_PBB_CAPACITY 1024" "QALT_PBB_CAPACITY ${QALT_PBB_CAPACITY}" header "${header}")
  file(CONFIGURE OUTPUT generated/qalt_at/config.h CONTENT "${header}" @ONLY)
  target_include_directories(qalt_at BEFORE PUBLIC $<BUILD_INTERFACE:${QALT_GENERATED_INCLUDE}>)
endif()
