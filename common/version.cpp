#include "qalt_at/version.h"

#define QALT_TEXT_OF(number) #number
#define QALT_VERSION_TEXT(major, minor, patch) \
  QALT_TEXT_OF(major) "." QALT_TEXT_OF(minor) "." QALT_TEXT_OF(patch)

const char* QALT_AT_Version(void) {
  return QALT_VERSION_TEXT(QALT_AT_VERSION_MAJOR, QALT_AT_VERSION_MINOR, QALT_AT_VERSION_PATCH);
}
