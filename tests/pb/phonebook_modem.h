// phonebook_modem.h - a scripted modem for the phonebook engine, and the discoveries that put the
// engine, whose state lives as long as the process, into a known configuration.
#ifndef QALT_TESTS_PB_PHONEBOOK_MODEM_H_
#define QALT_TESTS_PB_PHONEBOOK_MODEM_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qalt_at/phonebook.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace test {

using Lines = std::vector<std::string>;

class Phonebook : public testing::Test {
 protected:
  Phonebook() {
    for (const char* start : {"AT+CPBS=", "AT+CSCS=", "AT+CPBW=", "AT+JCPBW=", "AT^SCPBW="}) {
      modem.on(start, kOk);
    }
    modem.on("AT+CPBS?", information({"+CPBS: \"SM\",12,250"}));
    modem.on("AT+CPBR=?", information({"+CPBR: (1-250),40,18,0,0,0,0"}));
    modem.on("AT+JCPBR=?", kNotSupport);
  }
  void offer_vendor(bool usim) {
    modem.on("AT+JCPBR=?", information({"+JCPBR: (1-300),40,60,41,42,128,61"}));
    modem.on("AT+JUSIM=?", information({usim ? "1" : "0"}));
  }
  // Discovers on `platform`; returns the commands of it, which are forgotten.
  Lines discover(int platform) {
    clear_records();
    modem.forget();
    QL_setCurrentPlatform(platform);
    EXPECT_EQ(QL_getPhonebookInfo(0, &param), 0);
    return sent();
  }
  // The lines since the last call.
  Lines sent() {
    const Lines lines = modem.lines();
    modem.forget();
    return lines;
  }

  ScriptedModem modem;
  PbParam param = {};
};

}  // namespace test

#endif  // QALT_TESTS_PB_PHONEBOOK_MODEM_H_
