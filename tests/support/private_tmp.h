// private_tmp.h - the library's socket path is fixed, so whoever runs real programs on it does so
// with a /tmp of its own, in a mount namespace of its own.
#ifndef QALT_TESTS_SUPPORT_PRIVATE_TMP_H_
#define QALT_TESTS_SUPPORT_PRIVATE_TMP_H_

#include <string>

namespace test {

// Once for the process; false where the system does not allow it.
bool enter_private_tmp(const std::string& build_folder);

// Where it does not: takes turns in the /tmp that there is, until this process ends. False where an
// AT server works there.
bool wait_for_tmp();

}  // namespace test

#endif  // QALT_TESTS_SUPPORT_PRIVATE_TMP_H_
