/* Prints the library's version and a name in the modem's coding. */
#include <qalt_at/qalt_at.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  char version[32], digits[64];
  int pure = 0;
  snprintf(version, sizeof version, "%d.%d.%d", QALT_AT_VERSION_MAJOR, QALT_AT_VERSION_MINOR,
           QALT_AT_VERSION_PATCH);
  if (strcmp(version, QALT_AT_Version()) != 0) return 1;
  if (QL_encodePBItem(L"Anna", digits, sizeof digits, &pure, 1) != 0) return 2;
  printf("%s %s\n", version, digits);
  return PBB_CAPACITY == QALT_PBB_CAPACITY ? 0 : 3;
}
