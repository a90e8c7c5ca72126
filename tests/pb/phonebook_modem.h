// phonebook_modem.h - a scripted modem for the phonebook engine, and the discoveries that put the
// engine, whose state lives as long as the process, into a known configuration.
#ifndef QALT_TESTS_PB_PHONEBOOK_MODEM_H_
#define QALT_TESTS_PB_PHONEBOOK_MODEM_H_

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "qalt_at/phonebook.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace test {

using Lines = std::vector<std::string>;

class PhonebookModem : public ScriptedModem {
 public:
  PhonebookModem() {
    on("AT+CPBS=", kOk);
    on("AT+CSCS=", kOk);
    on("AT+CPBS?", information({"+CPBS: \"SM\",12,250"}));
    on("AT+CPBR=?", information({"+CPBR: (1-250),40,18"}));
    on("AT+JCPBR=?", kNotSupport);
  }

  void offer_vendor(bool usim) {
    on("AT+JCPBR=?", information({"+JCPBR: (1-250),40,60,41,42,128,61"}));
    on("AT+JUSIM=?", information({usim ? "1" : "0"}));
  }

  // Discovers on `platform`; the commands of it are forgotten.
  PbParam discover(int platform) {
    QL_setCurrentPlatform(platform);
    PbParam param = {};
    EXPECT_EQ(0, QL_getPhonebookInfo(0, &param));
    forget();
    clear_records();
    return param;
  }
};

// A contact for a write, or room for one of a read.
struct Contact {
  Contact() = default;
  Contact(int32_t index, const std::vector<std::pair<int32_t, std::string>>& texts) {
    entry.storageIndex = index;
    entry.FieldCount = static_cast<int32_t>(texts.size());
    for (size_t k = 0; k != texts.size(); ++k) {
      fields[k].fieldType = texts[k].first;
      texts[k].second.copy(fields[k].pField, sizeof fields[k].pField);
    }
  }
  Contact(const Contact&) = delete;
  Contact& operator=(const Contact&) = delete;

  PbField fields[PB_FIELD_TYPES] = {};
  PhonebookEntry entry = {0, 0, fields, 0};
};

}  // namespace test

#endif  // QALT_TESTS_PB_PHONEBOOK_MODEM_H_
