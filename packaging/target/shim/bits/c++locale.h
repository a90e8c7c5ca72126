/* Stands for libstdc++'s model of glibc's locales: <string> and <system_error> include it, the
 * library uses nothing of it. */
#ifndef QALT_SHIM_CXX_LOCALE_H
#define QALT_SHIM_CXX_LOCALE_H
#pragma GCC system_header
#include <clocale>
#define _GLIBCXX_NUM_CATEGORIES 0
// clang-format off
namespace std _GLIBCXX_VISIBILITY(default) {
  _GLIBCXX_BEGIN_NAMESPACE_VERSION
  typedef int* __c_locale;
  _GLIBCXX_END_NAMESPACE_VERSION
}
// clang-format on
#endif
