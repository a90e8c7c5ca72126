// What of an AT line may be written down.
#include "at/secrets.h"

#include <gtest/gtest.h>

namespace {

// In the table 8, 9 and x are what nobody is to see.
TEST(Secrets, DigitsOfPinsAreMasked) {
  const std::string lines[] = {
      "AT+CPIN=\"9988\"\r",
      "at + cpin2 = 9999,\"88;99\";+CSQ=12\r",
      "AT+CLCK=\"SC\",9,\"8989\";+CPWD=\"P8\",\"99\",\"88\"",
      "AT+CPIN=9\r\nAT+CSQ=12",
      "AT^CPIN=\"99998888\",\"9999\"",
      "AT^CARDLOCK=\"99998888\"",
      "no answer in time to AT+CPIN=9999",
      "ATD**04*9898*8989*8989#;\r",
      "ATE0DT **052*98989898*9999*9999#",
      "atd*330*8888#",
      "AT+CUSD=1,\"**042*9898*8888*8888#\",89",
      "AT+CSIM=26,\"00200001049898989\"",
      "AT+CGLA=1,26,\"012c0001109898\"",
      "AT+CUSD=1,\"002A9999\"",
      // Coded, letters are digits: of "*", "**", "*3" and "##" in septets.
      "AT+CUSD=1,\"2A9x9889x9989889\",99",
      "AT+CUSD=1,\"aa9x98x8\",9",
      "AT+CUSD=1,\"A39x98\"",
      "AT^CSIM=26,\"00210001049898989\"",
      "AT+CRSIM.PIN=9898",
      "AT&PIN=9898",
      "AT+CHV1=9898",
      "AT^PASSWORD=\"xx89x\"",
      "AT+CSTF=\"**04*9898#\"",
      "ATD,**04*9898*8989*8989#;",
      "ATDW**04*9898#",
      "ATD!**04*9898#;+CPIN=\"9898\"",
      "ATD\"**04*9898#\";+CPIN=\"98;98\"",
      "ATD\"*100#\";+CPIN=\"9898\"",
      "ATDT(**05*98989898*9999*9999#)",
      "ATDL**04*9898*9#",
      "and!CPIN=9898",
      "AT@PIN=\"9898\"",
      "AT_PIN=9898",
      "AT+CPBS=\"FD\",\"9898\";+CPBR=12",
      "AT+CMAR=9898",
      "AT+CKPD=\"**99*9898*8989*8989#\"",
      "AT^CUSD=1,\"**04*9898*8989*8989#\"",
      "AT*USSD=1,\"2A9x9889x9989889\"",
      "AT+CSTT=\"net\",\"xx\",\"x89\"",
      "\r\n+QICSGP: 1,\"net\",\"xx\",\"x89\",9",
      "AT$QCPDPP=1,1,x98,xx;+UPSD=0,3,\"x9\"",
      "AT+CGAUTH=1,1,\"x\",\"89xxx\";+CSQ=12",
      "AT^AUTHDATA=1,1,,xx88,x9",
      "\r\n+CGAUTH: 1,1,\"x\",\"98x\"\r\n+CSQ: 12,7",
      // Nothing secret.
      "AT+CPBW=1,\"+4417012\",145,\"PIN 5\"\r",
      "ATD*100#;",
      "ATD0301234;",
      "ATD\"*100#\";+CSQ=12",
      "AT+CGAUTH=?",
      "\r\n+CPBS: \"SM\",17,250\r\n",
      "AT+CUSD=1,\"*100#\",15",
      "AT+CUSD=1,\"D1234567\"",
      "AT+CSIM=14,\"00A40004023F00\"",
      "AT+CPING=\"10.0.0.1\"",
      "\r\n+CPIN: READY\r\n+CLCK: 1,7\r\n",
  };
  for (const std::string& line : lines) {
    std::string expected = line;
    for (char& c : expected) c = c == '8' || c == '9' || c == 'x' ? '*' : c;
    EXPECT_EQ(qalt::at::without_secrets(line), expected);
    qalt::at::SecretMask mask;
    std::string in_pieces;
    for (const char& byte : line) in_pieces += mask.masked({&byte, 1});
    EXPECT_EQ(in_pieces, expected);
  }
}

// What the modem says to a secret, in whatever pieces and however much of it is lost: an echo whose
// beginning did not come, a complaint. Errors say their number.
TEST(Secrets, DoNotComeBack) {
  qalt::at::LineMask line;
  EXPECT_EQ(line.to_modem("AT+CPIN=\"9898\"\r"), "AT+CPIN=\"****\"\r");
  std::string said;
  for (const char c : std::string("IN=\"9898\"\r\r\n9 is short\r\n\r\n+CME ERROR: 16\r\n\r\n98")) {
    said += line.from_modem({&c, 1});
  }
  EXPECT_EQ(said, "IN=\"****\"\r\r\n* is short\r\n\r\n+CME ERROR: 16\r\n\r\n**");
  EXPECT_EQ(line.to_modem("AT+CPIN2=9898\r"), "AT+CPIN2=****\r");
  EXPECT_EQ(line.from_modem("\nAT+CPIN2=9898\r\r\n2"), "\nAT+CPIN2=****\r\r\n*");
  EXPECT_EQ(line.from_modem("98\r\nOK\r\n2"), "**\r\nOK\r\n*");
  EXPECT_EQ(line.to_modem("AT+CSQ\r"), "AT+CSQ\r");
  EXPECT_EQ(line.from_modem("98\r\n+CSQ: 20,99\r\n"), "**\r\n+CSQ: 20,99\r\n");
  // Late, behind a command that did not wait for it.
  EXPECT_EQ(line.to_modem("AT+CPIN=9898\r"), "AT+CPIN=****\r");
  for (const char* next : {"ATE0Q0V1\r", "AT+CSQ\r"}) line.to_modem(next);
  EXPECT_EQ(line.from_modem("\r\n\r\nPIN=9898\r\nERROR\r\n98\r\nOK\r\n+CSQ: 20,99\r\n"),
            "\r\n\r\nPIN=****\r\nERROR\r\n**\r\nOK\r\n+CSQ: 20,99\r\n");
}

}  // namespace
