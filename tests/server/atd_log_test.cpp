// The record of the modem line: kept at both ends of it, and begun anew when it is moved away.
#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>
#include <thread>

#include "server/transcript.h"
#include "tests/server/program.h"

namespace {

using qalt::server::TranscriptEntry;
using test::contents;

TEST(AtdLog, HangUpSignalBeginsANewOne) {
  const test::Folder folder;
  const std::string socket = folder / "at", log = folder / "log", old = folder / "old";
  test::Program atd(ATD_PROGRAM, {"--socket", socket, "--log", log});
  ASSERT_TRUE(atd.ready());
  test::ask(socket, "AT+CSQ");
  ASSERT_EQ(::rename(log.c_str(), old.c_str()), 0);
  const std::string before = contents(old);
  EXPECT_NE(before.find(" > AT+CSQ"), before.npos);
  atd.signal(SIGHUP);
  while (::access(log.c_str(), F_OK) != 0) std::this_thread::yield();
  test::ask(socket, "AT+CPAS");
  EXPECT_NE(contents(log).find(" > AT+CPAS"), before.npos);
  EXPECT_EQ(contents(old), before);
}

// Everything that went one way, however it was cut into pieces.
std::string bytes_of(const std::string& path, TranscriptEntry::Kind kind) {
  std::istringstream lines(contents(path));
  std::string bytes;
  for (std::string line; std::getline(lines, line);) {
    const auto entry = qalt::server::parse_transcript_line(line);
    if (entry && entry->kind == kind) bytes += entry->bytes;
  }
  return bytes;
}

TEST(AtdLog, BothEndsRecordTheSame) {
  const test::Folder folder;
  const std::string socket = folder / "at", tty = folder / "tty";
  test::Program modem(SIMMODEM_PROGRAM, {"--pty", tty, "--log", folder / "modem"});
  test::Program atd(ATD_PROGRAM,
                    {"--socket", socket, "--modem", "tty:" + tty, "--log", folder / "atd"});
  ASSERT_TRUE(atd.ready());
  EXPECT_NE(test::ask(socket, "AT+CPBR=1,10"), "");
  EXPECT_EQ(atd.end(), 0);
  for (const auto kind : {TranscriptEntry::Kind::kToModem, TranscriptEntry::Kind::kFromModem}) {
    const std::string bytes = bytes_of(folder / "modem", kind);
    EXPECT_NE(bytes.find("+CPBR"), bytes.npos);
    EXPECT_EQ(bytes, bytes_of(folder / "atd", kind));
  }
}

}  // namespace
