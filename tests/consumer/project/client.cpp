// The same from C++, in its own words.
#include <qalt_at/qalt_at.h>

#include <iostream>
#include <string>

int main() {
  int pure = 0;
  std::string digits(64, '\0');
  if (QL_encodePBItem(L"Anna", digits.data(), 64, &pure, 1) != 0) return 1;
  std::cout << QALT_AT_Version() << ' ' << digits.c_str() << '\n';
}
