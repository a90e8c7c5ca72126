# The project's settings. In another project they ask for the library alone, and what is set here ends
# with this folder: nothing of it reaches the targets of that project.
if(QALT_TOP_LEVEL)
  option(BUILD_SHARED_LIBS "Build the shared library" ON)
  include(CTest)  # BUILD_TESTING
endif()
option(QALT_BUILD_STATIC "Build the archive beside the shared library" ${QALT_TOP_LEVEL})
option(QALT_BUILD_PROGRAMS "Build qalt-atd, qalt-simmodem, qalt-pb and the demo client" ${QALT_TOP_LEVEL})
option(QALT_BUILD_TARGET_TEST "Build the C test program alone, without GoogleTest" OFF)
option(QALT_BUILD_BENCH "Build the benchmarks" OFF)
option(QALT_BUILD_SOAK "Build the soak run of clients, server and modem" OFF)
option(QALT_BUILD_FUZZ "Build the fuzzers, with clang" OFF)
option(QALT_INSTALL "Install what is built" ${QALT_TOP_LEVEL})
option(QALT_WERROR "Treat warnings as errors" OFF)
set(QALT_SANITIZE "" CACHE STRING "Sanitizers for everything, such as address,undefined or thread")

# The tests are this project's own business: another one's BUILD_TESTING does not mean them.
set(QALT_BUILD_TESTS OFF)
if(QALT_TOP_LEVEL AND BUILD_TESTING)
  set(QALT_BUILD_TESTS ON)
endif()
if(QALT_BUILD_TARGET_TEST)
  enable_testing()
endif()

get_property(several_builds GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(QALT_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT several_builds)
  set(CMAKE_BUILD_TYPE Release)
endif()
# C++20 is the least.
if(NOT CMAKE_CXX_STANDARD MATCHES "^2[0-9]$")
  set(CMAKE_CXX_STANDARD 20)
endif()
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
if("${CMAKE_EXPORT_COMPILE_COMMANDS}" STREQUAL "")
  set(CMAKE_EXPORT_COMPILE_COMMANDS ${QALT_TOP_LEVEL})
endif()

include(GNUInstallDirs)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME tools)
