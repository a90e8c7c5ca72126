# What a firmware project takes in: the shared library, the static one, the headers, and the two
# descriptions of them, for pkg-config and for find_package; and what users of the programs get.
include(CMakePackageConfigHelpers)

# qalt_install_folders(component folder...), before what is installed to them
function(qalt_install_folders component)
  install(CODE "set(folders \"${ARGN}\")" COMPONENT ${component})
  install(SCRIPT cmake/QaltInstallFolders.cmake COMPONENT ${component})
endfunction()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/qalt_at)
qalt_install_folders(library ${CMAKE_INSTALL_LIBDIR})
qalt_install_folders(development ${package_folder} ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  ${CMAKE_INSTALL_INCLUDEDIR} ${CMAKE_INSTALL_MANDIR}/man3)

set(targets qalt_at)
if(TARGET qalt_at_static)
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

install(EXPORT qalt_at FILE qalt_at-targets.cmake NAMESPACE qalt_at:: DESTINATION ${package_folder}
  COMPONENT development)
configure_package_config_file(cmake/qalt_at-config.cmake.in qalt_at-config.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(qalt_at-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qalt_at-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/qalt_at-config-version.cmake
  DESTINATION ${package_folder} COMPONENT development)

# Its prefix is known when it is installed: cmake --install may name another one. It is written out, not
# found from the file's own place, in front of which pkg-config would set a sysroot twice.
foreach(folder LIBDIR INCLUDEDIR)
  set(QALT_PC_${folder} "${CMAKE_INSTALL_${folder}}")
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
    string(PREPEND QALT_PC_${folder} "\${prefix}/")
  endif()
endforeach()
set(QALT_PC_PREFIX "@CMAKE_INSTALL_PREFIX@")
configure_file(cmake/qalt_at.pc.in qalt_at.pc.in @ONLY)
install(CODE "configure_file(\"${CMAKE_CURRENT_BINARY_DIR}/qalt_at.pc.in\"
  \"${CMAKE_CURRENT_BINARY_DIR}/qalt_at.pc\" @ONLY)" COMPONENT development)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qalt_at.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
install(FILES packaging/man/qalt_at.3 packaging/man/qalt_at_phonebook.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
  COMPONENT development)

if(QALT_BUILD_PROGRAMS)
  set(completions_folder ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
  qalt_install_folders(tools ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_SBINDIR} ${CMAKE_INSTALL_MANDIR}/man1
    ${CMAKE_INSTALL_MANDIR}/man8 ${completions_folder})
  install(TARGETS qalt-pb qalt-simmodem DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS qalt-atd DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT tools)
  install(FILES packaging/man/qalt-pb.1 packaging/man/qalt-simmodem.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES packaging/man/qalt-atd.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT tools)
  install(FILES packaging/completion/qalt-pb.bash RENAME qalt-pb DESTINATION ${completions_folder}
    COMPONENT tools)
endif()
