# What a firmware project takes in: the shared library, the static one, the headers, and the two
# descriptions of them, for pkg-config and for find_package.
include(CMakePackageConfigHelpers)

set(targets qalt_at)
# A shared library's objects are position independent: they serve the archive as well, and the
# archive may then be linked into another shared library.
option(QALT_BUILD_STATIC "Build the archive beside the shared library" ON)
if(BUILD_SHARED_LIBS AND QALT_BUILD_STATIC)
  add_library(qalt_at_static STATIC $<TARGET_OBJECTS:qalt_at>)
  target_include_directories(qalt_at_static INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(qalt_at_static INTERFACE Threads::Threads)
  set_target_properties(qalt_at_static PROPERTIES OUTPUT_NAME qalt_at LINKER_LANGUAGE C)
  list(APPEND targets qalt_at_static)
endif()

install(TARGETS ${targets} EXPORT qalt_at
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY include/qalt_at DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
if(QALT_GENERATED_INCLUDE)
  install(DIRECTORY ${QALT_GENERATED_INCLUDE}/qalt_at DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development)
endif()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/qalt_at)
install(EXPORT qalt_at FILE qalt_at-targets.cmake NAMESPACE qalt_at:: DESTINATION ${package_folder}
  COMPONENT development)
configure_package_config_file(cmake/qalt_at-config.cmake.in qalt_at-config.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(qalt_at-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qalt_at-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/qalt_at-config-version.cmake
  DESTINATION ${package_folder} COMPONENT development)

# The prefix is found from the file's own place, so that an installed tree may be moved, unless the
# library's folder was given as an absolute path.
set(QALT_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
set(QALT_PC_LIBDIR ${CMAKE_INSTALL_FULL_LIBDIR})
set(QALT_PC_INCLUDEDIR ${CMAKE_INSTALL_FULL_INCLUDEDIR})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  string(REGEX REPLACE "[^/]+" ".." up "${CMAKE_INSTALL_LIBDIR}")
  set(QALT_PC_PREFIX "\${pcfiledir}/${up}/..")
  set(QALT_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(QALT_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(cmake/qalt_at.pc.in qalt_at.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qalt_at.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
install(FILES packaging/man/qalt_at.3 packaging/man/qalt_at_phonebook.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
  COMPONENT development)
