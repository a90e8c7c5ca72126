// Two processes at one modem: each finds the character set and storage as it left them.
#include <gtest/gtest.h>

#include "server/client_settings.h"

namespace qalt::server {
namespace {

const Peer kAnna{1, 10};
const Peer kBob{2, 20};

class Settings : public ::testing::Test {
 protected:
  // The lines that go to the modem for a client's line, its own last; the modem carries all out.
  std::string send(const Peer& peer, const std::string& line, bool ok = true) {
    std::string sent;
    while (const auto before = settings.before(peer, line)) {
      sent += *before + " ";
      settings.prepared(*before, *before == "AT+CSCS?" ? charset : storage, true);
    }
    settings.carried_out(peer, line, ok);
    return sent;
  }

  ClientSettings settings;
  std::string charset = "\r\n+CSCS: \"IRA\"\r\n\r\nOK\r\n";
  std::string storage = "\r\n+CPBS: \"ME\",1,2\r\n\r\nOK\r\n";
};

TEST_F(Settings, EachProcessFindsItsOwn) {
  EXPECT_EQ(send(kBob, "AT+CPBR=1"), "");
  EXPECT_EQ(send(kAnna, "AT+CPBS=\"SM\""), "AT+CPBS? ");
  EXPECT_EQ(send(kAnna, "AT+CSCS=\"UCS2\""), "AT+CSCS? ");
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "");
  EXPECT_EQ(send(kBob, "AT+CSQ"), "");
  // Bob selected nothing: he gets what stood before Anna came.
  EXPECT_EQ(send(kBob, "AT+CPBR=1"), "AT+CSCS=\"IRA\" AT+CPBS=\"ME\" ");
  EXPECT_EQ(send(kBob, "AT+CPBR=2"), "");
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "AT+CSCS=\"UCS2\" AT+CPBS=\"SM\" ");
  // A query of a setting is about the process's own; texts outside the phonebook need the set only.
  EXPECT_EQ(send(kBob, "AT+CSCS?"), "AT+CSCS=\"IRA\" ");
  EXPECT_EQ(send(kBob, "AT+CPBS?"), "AT+CPBS=\"ME\" ");
  EXPECT_EQ(send(kAnna, "AT+COPS?"), "AT+CSCS=\"UCS2\" ");
  // A later process with the same number is another one.
  EXPECT_EQ(send(Peer{1, 11}, "AT+COPS?"), "AT+CSCS=\"IRA\" ");
}

TEST_F(Settings, LinesOfSeveralCommands) {
  send(kAnna, "AT+CSCS=\"UCS2\"");
  EXPECT_EQ(send(kBob, "AT+CSCS=\"GSM\";+CPBR=1"), "");
  EXPECT_EQ(send(kAnna, "AT+CPBR=1;+CSCS=\"IRA\""), "AT+CSCS=\"UCS2\" ");
  // After a failed line nobody knows which of its commands were carried out.
  send(kAnna, "AT+CSCS=\"GSM\";+CPBR=1", false);
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "AT+CSCS=\"IRA\" ");
}

TEST_F(Settings, RefusalsResetsAndTimeouts) {
  send(kAnna, "AT+CSCS=\"UCS2\"");
  send(kAnna, "AT+CSCS=\"FOO\"", false);
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "");
  settings.lost();
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "AT+CSCS=\"UCS2\" ");
  send(kAnna, "ATZ");
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "AT+CSCS=\"IRA\" ");
  // A name sent in UCS2 is put back in plain characters.
  send(kBob, "AT+CSCS=\"00470053004D\"");
  send(kAnna, "AT+CPBR=1");
  EXPECT_EQ(send(kBob, "AT+CPBR=1"), "AT+CSCS=\"GSM\" ");
}

TEST_F(Settings, SelectionsWithoutAnAnswerAreWanted) {
  send(kAnna, "AT+CSCS=\"UCS2\"");
  send(kAnna, "AT+CSCS=\"IRA\"");
  settings.unanswered(kAnna, "AT+CSCS=\"UCS2\"");
  settings.unanswered(kAnna, "AT+CPBR=1");
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "AT+CSCS=\"UCS2\" ");
  EXPECT_EQ(send(kBob, "AT+CPBR=1"), "AT+CSCS=\"IRA\" ");
}

TEST_F(Settings, WhatOnlyAFormerServerKnewIsMissedOnce) {
  for (const char* line : {"AT+CSQ", "AT+CPBR=?", "AT+JCPBR=1,2", "AT+CSCS=\"UCS2\";+CPBR=1"}) {
    EXPECT_FALSE(settings.forgotten(kAnna, line)) << line;
  }
  EXPECT_TRUE(settings.forgotten(kAnna, "AT+CPBW=1"));
  EXPECT_FALSE(settings.forgotten(kAnna, "AT+CPBW=1"));
  send(kBob, "AT+CSCS=\"UCS2\"");
  EXPECT_FALSE(settings.forgotten(kBob, "AT+CPBR=1"));
}

TEST_F(Settings, StartLinesAreForEverybody) {
  settings.initialised("ATE0;+CSCS=\"GSM\"", true);
  EXPECT_EQ(send(kAnna, "AT+CSCS=\"UCS2\""), "");
  EXPECT_EQ(send(kBob, "AT+CPBR=1"), "AT+CSCS=\"GSM\" ");
}

TEST_F(Settings, AModemThatTellsNothingIsLeftAlone) {
  charset = storage = "\r\nERROR\r\n";
  EXPECT_EQ(send(kAnna, "AT+CSCS=\"UCS2\""), "AT+CSCS? ");
  EXPECT_EQ(send(kBob, "AT+CPBR=1"), "");
}

TEST_F(Settings, ManyProcessesDoNotFillTheMemory) {
  send(kAnna, "AT+CSCS=\"UCS2\"");
  for (int64_t process = 100; process < 2000; ++process) send({process, 1}, "AT+CSCS=\"GSM\"");
  // Anna was forgotten; she is served as one who selected nothing.
  EXPECT_EQ(send(kAnna, "AT+CPBR=1"), "AT+CSCS=\"IRA\" ");
}

}  // namespace
}  // namespace qalt::server
