// The simulated modem as a terminal sees it: commands in, bytes out.
#include "tests/sim/terminal.h"

namespace qalt::sim {
namespace {

using test::Terminal;

Config small(Profile profile = Profile::kStandard) {
  Config config;
  config.profile = profile;
  config.size = 5;
  config.sim_contacts = {{0, {"+491", 145, u"Zoë", "22", "+33", "z@x.org", u"П"}},
                         {2, {"555", 129, u"a\"b,c;d", "", "", "", u""}}};
  config.device_contacts = {};
  return config;
}

TEST(Modem, Framing) {
  Terminal terminal({}, "");
  const struct {
    std::string bytes;
    const char* answer;
  } rows[] = {
      {"AT\r", "AT\r/OK/"},
      {"ATE0\r", "ATE0\r/OK/"},
      {"A", ""},
      {"T+CSQ", ""},
      {"\r", "/+CSQ: 20,99//OK/"},
      {"\r\n\r\n", ""},
      {"noise\377AT\r", "/OK/"},
      {"AT\r\nAT\r\n", "/OK//OK/"},
      {"AT+CSQ;+CPAS\r", "/+CSQ: 20,99//+CPAS: 0//OK/"},
      {"AT+CSQ;+NONE;+CPAS\r", "/+CSQ: 20,99//ERROR/"},
      {"AT" + std::string(3000, 'E') + "\r", "/ERROR/"},
      {"AT+CMGS=\"1\"\r", "/> "},
      {"AT\r\x1B", "/OK/"},
      {"AT\r", "/OK/"},
  };
  for (const auto& row : rows) {
    const std::string answer = row.answer;
    const size_t echo = std::min(answer.find('/'), answer.size());
    EXPECT_EQ(terminal.send(row.bytes), answer.substr(0, echo) + test::bytes_of(&row.answer[echo]));
  }
  terminal.modem.receive("AT+C");
  terminal.modem.reopened();
  terminal.expect({{"AT", "OK"}});
}

TEST(Modem, StandardPhonebook) {
  Terminal terminal(small());
  terminal.expect({
      {"AT+CPBS=?", "+CPBS: (\"SM\",\"ME\")"},
      {"AT+CPBS=\"FD\"", "3"},
      {"AT+CPBR=?", "+CPBR: (1-5),40,18"},
      {"AT+CPBR=1,5", "+CPBR: 1,\"+491\",145,\"Zo?\"/+CPBR: 3,\"555\",129,\"a\"b,c;d\""},
      {"AT+CPBR=2", "OK"},
      {"AT+CPBR=2,1", "21"},
      {"AT+CPBR=0", "21"},
      {"AT+CPBR=1,6", "21"},
      {"AT+CPBR=x", "ERROR"},
      {"AT+CPBR", "ERROR"},
      {"AT+CPBW=2,\"12\",129,\"Bo\"", "OK"},
      {"AT+CPBR=2", "+CPBR: 2,\"12\",129,\"Bo\""},
      {"AT+CPBW=,\"+99\",,\"first free\"", "OK"},
      {"AT+CPBR=4", "+CPBR: 4,\"+99\",145,\"first free\""},
      {"AT+CPBW=,\"1\"", "OK"},
      {"AT+CPBW=,\"1\"", "20"},
      {"AT+CPBS?", "+CPBS: \"SM\",5,5"},
      {"AT+CPBW=5", "OK"},
      {"AT+CPBW=5", "OK"},
      {"AT+CPBR=5", "OK"},
      {"AT+CPBW=6", "21"},
      {"AT+CPBW=6,\"1\"", "21"},
      {"AT+CPBW=5,\"12a\"", "27"},
      {"AT+CPBW=5,\"1+2\"", "27"},
      {"AT+CPBW=5,\"1\",129,\"nineteen characters\"", "24"},
      {"AT+CPBW=5,\"1\",129,\"\xC3\xA9\"", "25"},
      {"AT+CPBW=5,\"1\",129,\"a\"b\"", "ERROR"},
      {"AT+CPBW=5,\"" + std::string(41, '1') + "\"", "26"},
      {"AT+CPBW=5,\"+" + std::string(40, '1') + "\"", "OK"},
      {"AT+CPBS=\"ME\"", "OK"},
      {"AT+CPBS?", "+CPBS: \"ME\",0,100"},
      {"AT+JCPBR=?", "not support"},
      {"AT^CARDMODE=?", "not support"},
      {"AT+CMEE=2", "OK"},
      {"AT+CPBR=101", "/+CME ERROR: invalid index/"},
      {"AT+CMEE=0", "OK"},
      {"AT+CPBR=101", "ERROR"},
      {"AT+CMEE=3", "ERROR"},
      {"AT+CMEE?", "+CMEE: 0"},
      {"ATZ", "OK"},
  });
  EXPECT_EQ(terminal.send("AT+CMEE?\r"), "AT+CMEE?\r" + test::bytes_of("+CMEE: 1"));
}

TEST(Modem, TextsInTheSelectedSet) {
  Terminal terminal(small());
  terminal.expect({
      {"AT+CSCS=?", "+CSCS: (\"IRA\",\"GSM\",\"UCS2\",\"UCS2_0X81\")"},
      {"AT+CSCS=\"HEX\"", "ERROR"},
      {"AT+CSCS=\"UCS2\"", "OK"},
      {"AT+CPBR=1", "+CPBR: 1,\"+491\",145,\"005A006F00EB\""},
      {"AT+CPBW=2,\"1\",129,\"4E2D\"", "OK"},
      {"AT+CPBW=2,\"1\",129,\"4E2\"", "25"},
      // In UCS2 a client may name sets and storages in UCS2 as well.
      {"AT+CPBS=\"0053004D\"", "OK"},
      {"AT+CSCS=\"00470053004D\"", "OK"},
      {"AT+CSCS?", "+CSCS: \"GSM\""},
      {"AT+CPBR=2", "+CPBR: 2,\"1\",129,\"?\""},
      {"AT+CPBW=4,\"1\",129,\"J~rg\x1B\x65\"", "OK"},
      {"AT+CSCS=\"UCS2_0X81\"", "OK"},
      {"AT+CPBR=2", "+CPBR: 2,\"1\",129,\"81019CAD\""},
      {"AT+CPBR=4", "+CPBR: 4,\"1\",129,\"004A00FC0072006720AC\""},
  });
}

TEST(Modem, VendorFamily) {
  Terminal terminal(small(Profile::kVendorUsim));
  terminal.expect({
      {"AT+JUSIM=?", "+JUSIM: 1"},
      {"AT+EUSIM?", "+EUSIM: 1"},
      {"AT+JCPBR=?", "+JCPBR: (1-5),40,30,40,40,64,30"},
      {"AT+JCPBR=1,2", "+JCPBR: 1,\"+491\",\"8103015A6FEB\",\"22\",\"+33\",\"z@x.org\",\"80041F\""},
      {"AT+JCPBW=2,\"9\",129,\"804E2D\",\"8\",\"7\",\"a@b\",\"41\"", "OK"},
      {"AT+JCPBR=2", "+JCPBR: 2,\"9\",\"804E2D\",\"8\",\"7\",\"a@b\",\"41\""},
      {"AT+JCPBW=,\"5\",,\"\",\"\",\"\",\"\",\"\"", "OK"},
      {"AT+JCPBR=4", "+JCPBR: 4,\"5\",\"\",\"\",\"\",\"\",\"\""},
      {"AT+JCPBW=2,\"9\",129,\"4\"", "25"},
      {"AT+JCPBW=2,\"9\",129,\"" + std::string(62, '4') + "\"", "24"},
      {"AT+JCPBW=2", "OK"},
      {"AT+JCPBR=2", "OK"},
      {"AT^SCPBR=1,2", "not support"},
  });
  Terminal(small(Profile::kVendor)).expect({{"AT+JUSIM=?", "+JUSIM: 0"}});
}

TEST(Modem, ScpbrFamily) {
  Config config = small(Profile::kScpbr);
  config.number_scheme = 2;
  config.card_mode = 1;
  config.foreign_is_error = true;
  const std::string fields = "\"+111\",145,\"+333\",145,\"222\",129,\"";
  Terminal(config).expect({
      {"AT+CPBR=?", "+CPBR: (1-5),40,18,40,64"},
      {"AT+CPBR=1", "+CPBR: 1,1,2"},
      {"AT^CARDMODE=?", "^CARDMODE: 1"},
      // The contact's third number is the line's second.
      {"AT^SCPBR=1",
       "^SCPBR: 1,\"+491\",145,\"+33\",145,\"22\",129,\"\",0,\"8103015A6FEB\",1,\"z@x.org\""},
      {"AT^SCPBW=2," + fields + "222\",129,\"4C6565\",1,\"l@m\"", "OK"},
      {"AT^SCPBR=2", "^SCPBR: 2," + fields + "\",0,\"4C6565\",0,\"l@m\""},
      {"AT^SCPBW=2", "OK"},
      {"AT^SCPBR=2", "OK"},
      {"AT+JCPBR=?", "ERROR"},
  });
}

TEST(Modem, Peculiarities) {
  Config config = small();
  config.first_index = 0;
  config.send_lengths = false;
  config.plain_numbers = true;
  config.empty = EmptyAnswer::kNotFound;
  config.faults.no_ucs2 = true;
  config.faults.odd_quote = true;
  Terminal(config).expect({
      {"AT+CPBR=?", "+CPBR: (0-4)"},
      {"AT+CPBR=0", "+CPBR: 0,\"491\",145,\"Zo?\""},
      {"AT+CPBR=1", "+CPBR: 1,\"5550199\",129,\"Screen 5\" wide\""},
      {"AT+CPBR=3", "22"},
      {"AT+CPBR=3,4", "OK"},
      {"AT+CSCS=\"UCS2\"", "ERROR"},
      {"AT+CSCS?", "+CSCS: \"IRA\""},
  });
  config.empty = EmptyAnswer::kError;
  Terminal(config).expect({{"AT+CPBR=3", "ERROR"}});
}

}  // namespace
}  // namespace qalt::sim
