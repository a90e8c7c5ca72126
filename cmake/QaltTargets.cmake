# How the project's targets are compiled and linked; one function per kind of target.

# Whether nobody said which calls are checked: neither the flags nor a compiler that does so by itself
# whenever it optimises. Checks need an optimising compiler.
function(qalt_find_unfortified)
  if(" ${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_RELEASE} ${CMAKE_CXX_FLAGS_RELWITHDEBINFO}" MATCHES "_FORTIFY_SOURCE| -O0")
    set(QALT_UNFORTIFIED OFF PARENT_SCOPE)
    return()
  endif()
  set(CMAKE_REQUIRED_FLAGS -O2)
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
  check_cxx_source_compiles("
    #ifdef _FORTIFY_SOURCE
    #error
    #endif" QALT_UNFORTIFIED)
endfunction()
include(CheckCXXSourceCompiles)
qalt_find_unfortified()

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|i[3-6]86)$")
  set(QALT_GUARDS_STACKS ON)
endif()

# Release builds stop at an overrun that nobody foresaw. The sanitizers find more, and know only the
# plain functions; a toolchain that brings a level of its own keeps it.
function(qalt_harden target)
  if(QALT_SANITIZE)
    return()
  endif()
  set(release $<CONFIG:Release,RelWithDebInfo>)
  # Elsewhere, as on ARM, its guard is a datum of the loader, which the library would need beside the
  # C library: there it is left to the firmware's own options.
  if(QALT_GUARDS_STACKS)
    target_compile_options(${target} PRIVATE $<${release}:-fstack-protector-strong>)
  endif()
  if(QALT_UNFORTIFIED)
    target_compile_definitions(${target} PRIVATE $<${release}:_FORTIFY_SOURCE=2>)
  endif()
  target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
endfunction()

# Warnings and sanitizers, for every target.
function(qalt_configure_common target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wformat=2)
  if(QALT_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(QALT_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${QALT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${QALT_SANITIZE})
  endif()
endfunction()

# The library itself: hidden visibility, no exceptions, no RTTI, nothing of libstdc++ at run time.
# It is linked by the C driver, so that anything that would need libstdc++ fails to link.
function(qalt_configure_library target)
  qalt_configure_common(${target})
  qalt_harden(${target})
  target_include_directories(${target}
    PUBLIC
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-asynchronous-unwind-tables
      -Wconversion -Wold-style-cast>)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON
    UNITY_BUILD OFF  # kLogModule, kAlphabet: each source has its own
    LINKER_LANGUAGE C
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  set(map ${PROJECT_SOURCE_DIR}/cmake/libqalt_at.map)
  target_link_libraries(${target} PUBLIC Threads::Threads)
  if(BUILD_SHARED_LIBS)
    target_link_options(${target} PRIVATE -Wl,--version-script=${map} -Wl,--as-needed)
    # Its receiver thread runs to the end of the process: the code may not be unmapped under it. And
    # where a C library gives new threads little stack by default, 128 KB with musl, they get what the
    # largest call needs: its loader goes by the largest wish of those that it loads at the start.
    target_link_options(${target} PRIVATE -Wl,-z,nodelete -Wl,-z,stack-size=524288)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
    if(NOT QALT_SANITIZE)
      target_link_options(${target} PRIVATE -static-libgcc -Wl,-z,defs)
    endif()
  endif()
endfunction()

# A program of this project; a client of the library like any other.
function(qalt_configure_program target)
  qalt_configure_common(${target})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
endfunction()

# One that users install, or a part of it.
function(qalt_configure_installed target)
  qalt_configure_program(${target})
  qalt_harden(${target})
  # The run path that is removed at installation leaves a gap of its length: one of the same length in
  # every folder. (Not in test programs: uClibc's loader may not know $ORIGIN.)
  set_target_properties(${target} PROPERTIES BUILD_RPATH_USE_ORIGIN ON)
endfunction()

# qalt_add_test(name SOURCES a.cpp... LIBRARIES x... [THREADED] [FAST])
# A GoogleTest program, each of its tests a test of ctest. THREADED ones run under ThreadSanitizer.
# Compiling takes longer than running: optimised are only the few, FAST, that compute.
function(qalt_add_test name)
  cmake_parse_arguments(arg "THREADED;FAST" "" "SOURCES;LIBRARIES" ${ARGN})
  if(QALT_SANITIZE STREQUAL "thread" AND NOT arg_THREADED)
    return()
  endif()
  add_executable(${name} ${arg_SOURCES})
  qalt_configure_program(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} qalt_at GTest::gtest_main)
  if(NOT arg_FAST)
    qalt_configure_quick_build(${name})
    target_precompile_headers(${name} REUSE_FROM test_headers)
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 120)
endfunction()

function(qalt_configure_quick_build target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O0>)
endfunction()
