// Request frames as clients send and mis-send them; texts for people.
#include "server/frame.h"

#include <gtest/gtest.h>

#include <cstring>

#include "server/escape.h"
#include "server/options.h"
#include "server/transcript.h"
#include "tests/link/private_server.h"

namespace qalt::server {
namespace {

AtMsg frame_with(std::string_view bytes, uint32_t timeout = 0) {
  AtMsg frame;
  std::memset(&frame, 0xA5, sizeof frame);
  std::memcpy(frame.aucDataBuf, bytes.data(), bytes.size());
  frame.ulTimeout = timeout;
  return frame;
}

TEST(Frame, RequestIsWhatStandsBeforeTheNul) {
  using namespace std::string_literals;
  const std::string longest = "at" + std::string(10237, 'x');
  const struct {
    std::string bytes, command;
  } rows[] = {
      {"AT+CSQ\0+CMEE"s, "AT+CSQ"},
      {"AT+CPBW=1,\"\xC3\xA9\"\0"s, "AT+CPBW=1,\"\xC3\xA9\""},
      {longest + '\0', longest},
      {longest + "y", ""},  // no NUL within the frame
      {"\0AT"s, ""},
      {"+CSQ\0"s, ""},
      {"AT\rAT\0"s, ""},
      {"AT\x1A\0"s, ""},
      {"AT\x7F\0"s, ""},
  };
  for (const auto& row : rows) {
    const FrameRequest request = read_request(frame_with(row.bytes));
    EXPECT_EQ(request.command, row.command);
    EXPECT_EQ(request.refusal.empty(), !row.command.empty());
  }
  EXPECT_EQ(read_request(frame_with("AT\0"s, 5000)).timeout.count(), 5000);
  EXPECT_EQ(read_request(frame_with("AT\0"s, 0)).timeout.count(), 10'000);
  EXPECT_EQ(read_request(frame_with("AT\0"s, 0xFFFFFFFF)).timeout.count(), 600'000);
}

TEST(Frame, AnswerFillsTheRestWithZeros) {
  AtMsg frame = frame_with("");
  for (const std::string& text : {std::string(10'239, 'x'), std::string("\r\nOK\r\n")}) {
    fill_frame(frame, text);
    EXPECT_EQ(test::bytes_of(frame), test::bytes_of(test::frame_of(text)));
  }
}

TEST(Escape, GoesBothWaysAndHidesSecrets) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += char(byte);
  EXPECT_EQ(unescaped(escaped(all)), all);
  EXPECT_EQ(escaped("a\\\r\n\x80"), "a\\\\\\r\\n\\x80");
  for (const char* bad : {"\\", "\\x", "\\x4", "\\xZZ", "\\q"}) {
    EXPECT_EQ(unescaped(bad), std::nullopt) << bad;
  }
  EXPECT_EQ(without_secrets("AT+CPIN=\"1234\";+CSQ=1"), "AT+CPIN=\"****\";+CSQ=1");
  EXPECT_EQ(without_secrets("at+cpwd=\"SC\",\"12\",\"34\"\r5"), "at+cpwd=\"SC\",\"**\",\"**\"\r5");
  EXPECT_EQ(without_secrets("AT+CPIN?\r\n+CPIN: READY 12"), "AT+CPIN?\r\n+CPIN: READY 12");
}

TEST(Transcript, LinesAreReadBack) {
  const std::string time = "2026-01-31T12:00:00.123456Z";
  const auto entry = parse_transcript_line(time + " > AT\\r");
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->kind, TranscriptEntry::Kind::kToModem);
  EXPECT_EQ(entry->bytes, "AT\r");
  for (const char* bad : {"", " AT", " ? AT", " >", " > \\x"}) {
    EXPECT_FALSE(parse_transcript_line(time + bad)) << bad;
  }
}

TEST(Options, ModemAddresses) {
  const auto tty = std::get<TtyAddress>(parse_modem_address("tty:/dev/ttyUSB2,9600,rtscts"));
  EXPECT_EQ(tty.device, "/dev/ttyUSB2");
  EXPECT_EQ(tty.baud, 9600u);
  EXPECT_TRUE(tty.rtscts);
  const auto tcp = std::get<TcpAddress>(parse_modem_address("tcp:[::1]:7000"));
  EXPECT_EQ(tcp.host + " " + tcp.port, "::1 7000");
  EXPECT_EQ(std::get<ReplayAddress>(parse_modem_address("replay:a:b")).file, "a:b");
  for (const char* bad : {"", "usb", "tty:", "tty:/dev/x,12", "tty:/dev/x,fast", "tcp:host",
                          "tcp::7", "tcp:h:", "replay:"}) {
    EXPECT_THROW(parse_modem_address(bad), std::invalid_argument) << bad;
  }
}

}  // namespace
}  // namespace qalt::server
