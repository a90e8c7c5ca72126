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
      {"AT+CSQ;+CPAS\r", "/+CSQ: 20,99//+CPAS: 0//OK/"},
      {"ATE0S0=3+csq\r", "/+CSQ: 20,99//OK/"},
      {"AT+CPBW=4,\"5\",129,\"a;b\";+CSQ\r", "/+CSQ: 20,99//OK/"},
      {"AT+CPBW=4,\"5\",129,\"a;+CSQ\r", "/ERROR/"},
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
}

TEST(Modem, StandardPhonebook) {
  Terminal terminal(small());
  terminal.expect({
      {"AT+CPBR=?", "+CPBR: (1-5),40,18"},
      {"AT+CPBR=1,5", "+CPBR: 1,\"+491\",145,\"Zo?\"/+CPBR: 3,\"555\",129,\"a\"b,c;d\""},
      {"AT+CPBR=2", "OK"},
      {"AT+CPBR=0", "21"},
      {"AT+CPBW=2,\"12\",129,\"Bo\"", "OK"},
      {"AT+CPBR=2", "+CPBR: 2,\"12\",129,\"Bo\""},
      {"AT+CPBW=,\"+99\",,\"first free\"", "OK"},
      {"AT+CPBR=4", "+CPBR: 4,\"+99\",145,\"first free\""},
      {"AT+CPBW=,\"1\"", "OK"},
      {"AT+CPBW=,\"1\"", "20"},
      {"AT+CPBW=5", "OK"},
      {"AT+CPBW=5", "OK"},
      {"AT+CPBR=5", "OK"},
      {"AT+CPBW=6", "21"},
      {"AT+CPBW=5,\"12a\"", "27"},
      {"AT+CPBW=5,\"1\",129,\"nineteen characters\"", "24"},
      {"AT+CPBW=5,\"1\",129,\"\xC3\xA9\"", "25"},
      {"AT+CPBW=5,\"1\",129,\"a\"b\"", "ERROR"},
      {"AT+CPBW=5,\"" + std::string(41, '1') + "\"", "26"},
      {"AT+CPBW=5,\"+" + std::string(40, '1') + "\"", "OK"},
      {"AT+CPBS=\"ME\"", "OK"},
      {"AT+CPBS?", "+CPBS: \"ME\",0,100"},
      {"AT+CMEE=2", "OK"},
      {"AT+CPBR=101", "/+CME ERROR: invalid index/"},
  });
}

TEST(Modem, TextsInTheSelectedSet) {
  Terminal terminal(small());
  terminal.expect({
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
      {"AT+JCPBR=?", "+JCPBR: (1-5),40,30,40,40,64,30"},
      {"AT+JCPBR=1,2", "+JCPBR: 1,\"+491\",\"8103015A6FEB\",\"22\",\"+33\",\"z@x.org\",\"80041F\""},
      {"AT+JCPBW=2,\"9\",129,\"804E2D\",\"8\",\"7\",\"a@b\",\"41\"", "OK"},
      {"AT+JCPBR=2", "+JCPBR: 2,\"9\",\"804E2D\",\"8\",\"7\",\"a@b\",\"41\""},
      {"AT+JCPBW=,\"5\",,\"\",\"\",\"\",\"\",\"\"", "OK"},
      {"AT+JCPBR=4", "+JCPBR: 4,\"5\",\"\",\"\",\"\",\"\",\"\""},
      {"AT+JCPBW=2,\"9\",129,\"4\"", "25"},
      {"AT+JCPBW=2,\"9\",129,\"" + std::string(62, '4') + "\"", "24"},
  });
}

}  // namespace
}  // namespace qalt::sim
