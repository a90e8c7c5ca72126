# Debian packages: the library, what is needed to build against it, and the programs, each with its
# debugging information apart. scripts/deb.sh gives them what CPack does not know.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "the qalt_at developers")
set(CPACK_PACKAGE_CONTACT "the qalt_at developers <qalt@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "SIM phonebook, reports and texts of a cellular modem")
# With the prefix that is configured, and a staging folder in front of it: qalt_at.pc names it.
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_SET_DESTDIR ON)
set(CPACK_COMPONENTS_ALL library development)
if(QALT_BUILD_PROGRAMS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# A client needs this version or a later one.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libqalt-at${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqalt-at-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qalt-at-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION comm)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_TOOLS_DEPENDS library)
set(purpose "libqalt_at reaches a cellular modem through an AT server, parses its answers,
manages the SIM phonebook, receives pushed reports and converts GSM and SIM
texts. It needs the C library and nothing else.

This package holds ")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "${purpose}the shared library.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${purpose}headers, archive and manual pages.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "${purpose}the AT server, the simulated modem and the phonebook tool.")
include(CPack)
