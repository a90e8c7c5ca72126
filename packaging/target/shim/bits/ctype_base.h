/* Stands for libstdc++'s header of the same name, which needs glibc's <ctype.h>: only the names. */
#pragma GCC system_header
// clang-format off
namespace std _GLIBCXX_VISIBILITY(default) {
  struct ctype_base {
    typedef const int* __to_type;
    typedef unsigned short mask;
  };
}
// clang-format on
