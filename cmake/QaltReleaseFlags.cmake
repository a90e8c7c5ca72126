# The release flags where neither toolchain nor user names any, read by CMake between its own defaults
# and what they say. Speed comes from structure; -O3 only makes a library of this kind larger. Flags
# that hold a level of optimisation already, as Buildroot's do, get none behind it.
foreach(language C CXX)  # and the variables CFLAGS and CXXFLAGS
  set(flags CMAKE_${language}_FLAGS)
  if(${flags}_RELEASE_INIT MATCHES "^(.*) -O3 -DNDEBUG$")
    set(named "${CMAKE_MATCH_1}")
    set(level " -O2")
    if(" $ENV{${language}FLAGS} ${${flags}} ${${flags}_INIT} ${named}" MATCHES " -O")
      set(level "")
    endif()
    set(${flags}_RELEASE_INIT "${named}${level} -DNDEBUG")
  endif()
endforeach()
