# What must stand before project(): where this is configured, the version, the release flags.
get_filename_component(source ${CMAKE_CURRENT_SOURCE_DIR} REALPATH)
get_filename_component(binary ${CMAKE_CURRENT_BINARY_DIR} REALPATH)
if(source STREQUAL binary)
  # CMake's Makefile would take the place of the project's own. (Behind a blank the line stays whole.)
  message(FATAL_ERROR
    " The sources are no build folder: rm -rf CMakeCache.txt CMakeFiles; cmake -S . -B build/mine")
endif()
include(${CMAKE_CURRENT_LIST_DIR}/QaltVersion.cmake)

# Part of another project, this one adds a library and leaves everything else as it is.
string(COMPARE EQUAL "${CMAKE_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}" QALT_TOP_LEVEL)
if(QALT_TOP_LEVEL)
  set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/QaltReleaseFlags.cmake)
endif()
