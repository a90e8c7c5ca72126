# Reads the project's version from the public header, where it stands, into QALT_VERSION.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS include/qalt_at/version.h)
set(QALT_VERSION "")
foreach(part MAJOR MINOR PATCH)
  file(STRINGS ${CMAKE_CURRENT_SOURCE_DIR}/include/qalt_at/version.h line
    REGEX "^#define QALT_AT_VERSION_${part} ")
  string(REGEX REPLACE "[^0-9]" "" number "${line}")
  list(APPEND QALT_VERSION ${number})
endforeach()
list(JOIN QALT_VERSION "." QALT_VERSION)
