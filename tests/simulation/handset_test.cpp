#include "tests/simulation/handset/handset.h"

#include <gtest/gtest.h>

#include <utility>

namespace qalt::simulation {
namespace {

using Step = std::pair<std::string_view, std::string_view>;  // a line and its answer

void expect(Options options, std::initializer_list<Step> steps) {
  Handset modem(std::move(options));
  for (const auto& [line, answer] : steps) {
    modem.receive(line);
    std::string bytes;
    for (const Said& piece : modem.take()) bytes += piece.bytes;
    EXPECT_EQ(bytes, answer) << line;
  }
}

const Settings kShort = {.echo = 0, .verbose = 0, .errors = 1};  // without echo, in numbers

TEST(HandsetTest, ReadsCommandLines) {
  expect({.line_length = 30},
         {{"AT\rA/", "AT\r\r\nOK\r\nA/\r\nOK\r\n"},
          {"ATX\bE0\r", "ATX\b \bE0\r\r\nOK\r\n"},
          {"x at + c s q ; +cfun?\r", "\r\n+CSQ: 17,99\r\n\r\n+CFUN: 1\r\n\r\nOK\r\n"},
          {"ATV0S3?+CMEE=2;+CPIN=\"1\"\r", "013\r\n+CME ERROR: operation not allowed\r"},
          {"AT+CSQ;+NONE;+CSQ\r", "+CSQ: 17,99\r\n4\r"},
          {"AT+CSQ;+CSQ;+CSQ;+CSQ;+CSQ;+CSQ;+CSQ\r", "4\r"},
          {"ATQ1S3=36S4?\r", "010$\n"},
          {"AT&F$", "\r\nOK\r\n"}});
}

TEST(HandsetTest, KeepsContacts) {
  expect({.initial = kShort,
          .storages = {{.first = 5, .size = 3, .text_length = 6},
                       {.name = "FD", .contacts = {{1, {"112", u"SOS"}}}}},
          .card = Card::kNeedsPin,
          .busy_for = 1,
          .further = true,
          .empty_index = Result::kNotFound,
          .refused_in_range = {6},
          .lines_before_refusal = true},
         {{"AT+CPBS?\r", "+CME ERROR: 11\r"},
          {"AT+CPIN=1234;+CPBS?\r", "+CME ERROR: 14\r"},
          {"AT+CPBW=,\"+49\",,\"; \\\"\r", "0\r"},
          {"AT+CPBW=6,\"49\",145,\"b\",\"group\",,,,,,,1\r", "0\r"},
          {"AT+CPBW=7,\"1\",129,\"1234567\"\r", "+CME ERROR: 24\r"},
          {"AT+CPBW=7,\"1\",129,\"a\"b\"\r", "4\r"},
          {"AT+CPBR=6\r", "+CPBR: 6,\"+49\",145,\"b\",1,\"group\"\r\n0\r"},
          {"AT+CPBR=5,6\r", "+CPBR: 5,\"+49\",145,\"; \\\"\r\n4\r"},
          {"AT+CPBW=6;+CPBR=6\r", "+CME ERROR: 22\r"},
          {"AT+CPBS=\"FD\";+CPBR=?;+CPBF=\"S\";+CPBW=0\r",
           "+CPBR: (1-250),40,14\r\n+CPBF: 1,\"112\",129,\"SOS\"\r\n+CME ERROR: 21\r"}});
}

TEST(HandsetTest, SpeaksCharacterSets) {
  expect({.initial = kShort,
          .storages = {{.contacts = {{2, {"2", u"Ж"}}}}},
          .escapes = true,
          .set_named_in_itself = true},
         {{"AT+CSCS=\"GSM\";+CPBW=1,\"1\",,\"\\5C\\1Bee\";+CPBR=1\r",
           "+CPBR: 1,\"1\",129,\"\\5C\\1Bee\"\r\n0\r"},
          {"AT+CSCS=\"UCS2\";+CPBR=1\r", "+CPBR: 1,\"1\",129,\"00D620AC0065\"\r\n0\r"},
          {"AT+CSCS?;+CPBW=1,\"1\",,\"00d\"\r", "+CSCS: \"0055004300530032\"\r\n+CME ERROR: 25\r"},
          {"AT+CSCS=\"004800450058\";+CPBR=1,2\r",
           "+CPBR: 1,\"1\",129,\"5C1B6565\"\r\n+CPBR: 2,\"2\",129,\"800416\"\r\n0\r"},
          {"AT+CPBW=3,\"3\",,\"810208A741\";+CSCS=\"UCS2\";+CPBR=3\r",
           "+CPBR: 3,\"3\",129,\"04270041\"\r\n0\r"},
          {"ATV1+CMGF=1;+CSCS=\"GSM\";+CMGR=3\r",
           "\r\n+CMGR: \"REC UNREAD\",\"+4915112345678\",,\"26/11/23,18:00:00+04\"\r\n"
           "so it said\r\n+CPBR: 1\r\n\r\nOK\r\n"},
          {"ATV0+CMGF=0;+CMGR=1;+CMGR=4\r",
           "+CMGR: 0,,32\r\n00040D91945111325476F80000621132810000400D"
           "F37219947FD71B8AE7B2A100\r\n+CMS ERROR: 321\r"}});
}

}  // namespace
}  // namespace qalt::simulation
