// The simulated modem as a terminal sees it: commands in, bytes out.
#include <gtest/gtest.h>

#include "tests/sim/terminal.h"

namespace qalt::sim {
namespace {

using test::cme;
using test::info;
using test::kError;
using test::kOk;
using test::Terminal;

struct Row {
  const char* command;
  std::string answer;
};

void expect_rows(Terminal& terminal, const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(terminal.send(row.command), row.answer) << row.command;
}

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
  Modem modem{Config()};
  const auto send = [&](std::string_view bytes) {
    modem.receive(bytes);
    std::string text;
    for (const Output& output : modem.take()) text += output.bytes;
    return text;
  };
  EXPECT_EQ(send("AT\r"), "AT\r\r\nOK\r\n");
  EXPECT_EQ(send("ATE0\r"), "ATE0\r\r\nOK\r\n");
  EXPECT_EQ(send("A"), "");
  EXPECT_EQ(send("T+CSQ"), "");
  EXPECT_EQ(send("\r"), info("+CSQ: 20,99"));
  EXPECT_EQ(send("\r\n\r\n"), "");
  EXPECT_EQ(send("noise\xFF"
                 "AT\r"),
            kOk);
  EXPECT_EQ(send("AT\r\nAT\r\n"), kOk + kOk);
  EXPECT_EQ(send("AT+CSQ;+CPAS\r"), "\r\n+CSQ: 20,99\r\n\r\n+CPAS: 0\r\n" + kOk);
  EXPECT_EQ(send("AT+CSQ;+NONE;+CPAS\r"), "\r\n+CSQ: 20,99\r\n" + kError);
  EXPECT_EQ(send("AT" + std::string(3000, 'E') + "\r"), kError);
  EXPECT_EQ(send("AT+CMGS=\"1\"\r"), "\r\n> ");
  EXPECT_EQ(send("AT\r\x1B"), kOk);
  EXPECT_EQ(send("AT\r"), kOk);
  modem.receive("AT+C");
  modem.reopened();
  EXPECT_EQ(send("AT\r"), kOk);
}

TEST(Modem, ErrorsInEachForm) {
  Terminal terminal(small());
  expect_rows(terminal, {{"AT+CPBR=9", cme(21)},
                         {"AT+CMEE=2", kOk},
                         {"AT+CPBR=9", "\r\n+CME ERROR: invalid index\r\n"},
                         {"AT+CMEE=0", kOk},
                         {"AT+CPBR=9", kError},
                         {"AT+CMEE?", info("+CMEE: 0")},
                         {"AT+CMEE=3", kError},
                         {"ATZ", "\r\nOK\r\n"},
                         {"AT+CMEE?", "AT+CMEE?\r" + info("+CMEE: 1")}});
}

TEST(Modem, StandardPhonebook) {
  Terminal terminal(small());
  expect_rows(
      terminal,
      {
          {"AT+CPBS=?", info("+CPBS: (\"SM\",\"ME\")")},
          {"AT+CPBS?", info("+CPBS: \"SM\",2,5")},
          {"AT+CPBS=\"FD\"", cme(3)},
          {"AT+CPBR=?", info("+CPBR: (1-5),40,18")},
          {"AT+CPBR=1,5",
           "\r\n+CPBR: 1,\"+491\",145,\"Zo?\"\r\n+CPBR: 3,\"555\",129,\"a\"b,c;d\"\r\n" + kOk},
          {"AT+CPBR=2", kOk},
          {"AT+CPBR=2,1", cme(21)},
          {"AT+CPBR=0", cme(21)},
          {"AT+CPBR=1,6", cme(21)},
          {"AT+CPBR=x", kError},
          {"AT+CPBR", kError},
          {"AT+CPBW=2,\"12\",129,\"Bo\"", kOk},
          {"AT+CPBR=2", info("+CPBR: 2,\"12\",129,\"Bo\"")},
          {"AT+CPBW=,\"+99\",,\"first free\"", kOk},
          {"AT+CPBR=4", info("+CPBR: 4,\"+99\",145,\"first free\"")},
          {"AT+CPBW=,\"1\"", kOk},
          {"AT+CPBW=,\"1\"", cme(20)},
          {"AT+CPBS?", info("+CPBS: \"SM\",5,5")},
          {"AT+CPBW=5", kOk},
          {"AT+CPBW=5", kOk},
          {"AT+CPBR=5", kOk},
          {"AT+CPBW=6", cme(21)},
          {"AT+CPBW=6,\"1\"", cme(21)},
          {"AT+CPBW=5,\"12a\"", cme(27)},
          {"AT+CPBW=5,\"1+2\"", cme(27)},
          {"AT+CPBW=5,\"1\",129,\"nineteen characters\"", cme(24)},
          {"AT+CPBW=5,\"1\",129,\"\xC3\xA9\"", cme(25)},
          {"AT+CPBW=5,\"1\",129,\"a\"b\"", kError},
          {"AT+CPBS=\"ME\"", kOk},
          {"AT+CPBS?", info("+CPBS: \"ME\",0,100")},
          {"AT+JCPBR=?", "\r\nnot support\r\n"},
          {"AT^CARDMODE=?", "\r\nnot support\r\n"},
          {"AT+NONE", kError},
      });
  EXPECT_EQ(terminal.send("AT+CPBW=1,\"" + std::string(41, '1') + "\""), cme(26));
  EXPECT_EQ(terminal.send("AT+CPBW=1,\"+" + std::string(40, '1') + "\""), kOk);
}

TEST(Modem, TextsInTheSelectedSet) {
  Terminal terminal(small());
  expect_rows(terminal, {
                            {"AT+CSCS?", info("+CSCS: \"IRA\"")},
                            {"AT+CSCS=?", info("+CSCS: (\"IRA\",\"GSM\",\"UCS2\",\"UCS2_0X81\")")},
                            {"AT+CSCS=\"HEX\"", kError},
                            {"AT+CSCS=\"UCS2\"", kOk},
                            {"AT+CPBR=1", info("+CPBR: 1,\"+491\",145,\"005A006F00EB\"")},
                            {"AT+CPBW=2,\"1\",129,\"4E2D\"", kOk},
                            {"AT+CPBW=2,\"1\",129,\"4E2\"", cme(25)},
                            // In UCS2 a client may name sets and storages in UCS2 as well.
                            {"AT+CPBS=\"0053004D\"", kOk},
                            {"AT+CSCS=\"00470053004D\"", kOk},
                            {"AT+CSCS?", info("+CSCS: \"GSM\"")},
                            {"AT+CPBR=2", info("+CPBR: 2,\"1\",129,\"?\"")},
                            {"AT+CPBW=4,\"1\",129,\"J~rg\x1B\x65\"", kOk},
                            {"AT+CSCS=\"UCS2_0X81\"", kOk},
                            {"AT+CPBR=2,4",
                             "\r\n+CPBR: 2,\"1\",129,\"81019CAD\"\r\n"
                             "+CPBR: 3,\"555\",129,\"006100220062002C00630"
                             "03B0064\"\r\n"
                             "+CPBR: 4,\"1\",129,\"004A00FC00720067"
                             "20AC\"\r\n" +
                                 kOk},
                        });
}

TEST(Modem, VendorFamily) {
  Terminal terminal(small(Profile::kVendorUsim));
  expect_rows(
      terminal,
      {
          {"AT+JUSIM=?", info("+JUSIM: 1")},
          {"AT+EUSIM?", info("+EUSIM: 1")},
          {"AT+JCPBR=?", info("+JCPBR: (1-5),40,30,40,40,64,30")},
          {"AT+JCPBR=1,2",
           info("+JCPBR: 1,\"+491\",\"8103015A6FEB\",\"22\",\"+33\",\"z@x.org\",\"80041F\"")},
          {"AT+JCPBW=2,\"9\",129,\"804E2D\",\"8\",\"7\",\"a@b\",\"41\"", kOk},
          {"AT+JCPBR=2", info("+JCPBR: 2,\"9\",\"804E2D\",\"8\",\"7\",\"a@b\",\"41\"")},
          {"AT+JCPBW=,\"5\",,\"\",\"\",\"\",\"\",\"\"", kOk},
          {"AT+JCPBR=4", info("+JCPBR: 4,\"5\",\"\",\"\",\"\",\"\",\"\"")},
          {"AT+JCPBW=2,\"9\",129,\"4\"", cme(25)},
          {"AT+JCPBW=2", kOk},
          {"AT+JCPBR=2", kOk},
          {"AT^SCPBR=1,2", "\r\nnot support\r\n"},
      });
  EXPECT_EQ(terminal.send("AT+JCPBW=2,\"9\",129,\"" + std::string(62, '4') + "\""), cme(24));

  Terminal no_usim(small(Profile::kVendor));
  EXPECT_EQ(no_usim.send("AT+JUSIM=?"), info("+JUSIM: 0"));
}

TEST(Modem, ScpbrFamily) {
  Config config = small(Profile::kScpbr);
  config.number_scheme = 2;
  config.card_mode = 1;
  config.foreign_is_error = true;
  Terminal terminal(config);
  expect_rows(
      terminal,
      {
          {"AT+CPBR=?", info("+CPBR: (1-5),40,18,40,64")},
          {"AT+CPBR=1", info("+CPBR: 1,1,2")},
          {"AT^CARDMODE=?", info("^CARDMODE: 1")},
          // The contact's third number is the line's second.
          {"AT^SCPBR=1",
           info("^SCPBR: "
                "1,\"+491\",145,\"+33\",145,\"22\",129,\"\",0,\"8103015A6FEB\",1,\"z@x.org\"")},
          {"AT^SCPBW=2,\"+111\",145,\"+333\",145,\"222\",129,\"222\",129,\"4C6565\",1,\"l@m\"",
           kOk},
          {"AT^SCPBR=2",
           info("^SCPBR: 2,\"+111\",145,\"+333\",145,\"222\",129,\"\",0,\"4C6565\",0,\"l@m\"")},
          {"AT^SCPBW=2", kOk},
          {"AT^SCPBR=2", kOk},
          {"AT+JCPBR=?", kError},
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
  Terminal terminal(config);
  expect_rows(terminal, {{"AT+CPBR=?", info("+CPBR: (0-4)")},
                         {"AT+CPBR=0", info("+CPBR: 0,\"491\",145,\"Zo?\"")},
                         {"AT+CPBR=1", info("+CPBR: 1,\"5550199\",129,\"Screen 5\" wide\"")},
                         {"AT+CPBR=3", cme(22)},
                         {"AT+CPBR=3,4", kOk},
                         {"AT+CSCS=\"UCS2\"", kError},
                         {"AT+CSCS?", info("+CSCS: \"IRA\"")}});
  config.empty = EmptyAnswer::kError;
  EXPECT_EQ(Terminal(config).send("AT+CPBR=3"), kError);
}

TEST(Modem, BuiltInContactsFitAndReadBack) {
  Terminal terminal;
  terminal.send("AT+CSCS=\"UCS2\"");
  const Storage& storage = terminal.modem.state().sim;
  for (int index = storage.first(); index <= storage.last(); ++index) {
    const Contact* contact = storage.find(index);
    if (contact == nullptr) continue;
    EXPECT_LE(contact->name.size(), 18u);
    EXPECT_LE(encode_item(contact->name).size(), size_t(kItemDigits));
    const std::string line = encode(Charset::kUcs2, contact->name);
    EXPECT_NE(terminal.send("AT+CPBR=" + std::to_string(index)).find(line), std::string::npos);
  }
  EXPECT_EQ(storage.used(), 15);
  EXPECT_EQ(terminal.modem.state().device.used(), 3);
}

}  // namespace
}  // namespace qalt::sim
