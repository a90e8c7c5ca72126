// The modem's bytes cut into answers and reports: whole, in single bytes and cut at every place,
// with the same events each time.
#include "server/stream_reader.h"

#include <gtest/gtest.h>

namespace qalt::server {
namespace {

std::string described(const StreamEvent& event) {
  static constexpr const char* kNames[] = {"answer", "prompt", "report", "line"};
  std::string text = kNames[int(event.kind)];
  if (event.too_long) text += " too-long";
  if (event.unfit) text += " unfit";
  if (event.open_quote) text += " open";
  return text + ":" + event.text + "|";
}

// What a reader that awaits the answer to `command` makes of the pieces.
std::string events_of(const std::string& command, const std::vector<std::string>& pieces) {
  StreamReader reader;
  if (!command.empty()) reader.expect_answer(command);
  std::string text;
  for (const std::string& piece : pieces) {
    reader.feed(piece);
    while (const auto event = reader.next()) {
      text += described(*event);
      if (event->kind <= StreamEvent::Kind::kPrompt) reader.expect_nothing();
    }
  }
  return text;
}

struct Row {
  const char* command;
  std::string bytes;
  std::string events;
};

void expect_rows(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    EXPECT_EQ(events_of(row.command, {row.bytes}), row.events) << row.bytes;
    for (size_t cut = 0; cut <= row.bytes.size(); ++cut) {
      EXPECT_EQ(events_of(row.command, {row.bytes.substr(0, cut), row.bytes.substr(cut)}),
                row.events)
          << row.bytes << " cut at " << cut;
    }
    std::vector<std::string> bytes;
    for (char byte : row.bytes) bytes.emplace_back(1, byte);
    EXPECT_EQ(events_of(row.command, bytes), row.events) << row.bytes << " byte by byte";
  }
}

const std::string kOk = "\r\nOK\r\n";
const std::string kCsq = "\r\n+CSQ: 20,99\r\n";

TEST(StreamReader, Answers) {
  expect_rows({
      {"AT", kOk, "answer:" + kOk + "|"},
      {"AT+CSQ", kCsq + kOk, "answer:" + kCsq + kOk + "|"},
      {"AT+CSQ", "\r\nERROR\r\n", "answer:\r\nERROR\r\n|"},
      {"AT+CSQ", "\r\n+CME ERROR: SIM busy\r\n", "answer:\r\n+CME ERROR: SIM busy\r\n|"},
      {"AT+JUSIM=?", "\r\nnot support\r\n", "answer:\r\nnot support\r\n|"},
      {"AT+CMGS=\"1\"", "\r\n> ", "prompt:\r\n> |"},
      {"ATD1;", "\r\nNO CARRIER\r\n", "answer:\r\nNO CARRIER\r\n|"},
      {"ATD1", "\r\nCONNECT 9600\r\n", "answer:\r\nCONNECT 9600\r\n|"},
      {"AT+CGSN", "\r\n12 OK\r\nOKAY\r\n" + kOk, "answer:\r\n12 OK\r\nOKAY\r\n" + kOk + "|"},
      // An odd quote hides nothing, but is told.
      {"AT+CPBR=1", "\r\n+CPBR: 1,\"5\",129,\"a\"b\"\r\n" + kOk,
       "answer open:\r\n+CPBR: 1,\"5\",129,\"a\"b\"\r\n" + kOk + "|"},
  });
}

TEST(StreamReader, EchoAndNoise) {
  const std::string nuls("\0\0", 2);
  expect_rows({
      {"AT", "AT\r" + kOk, "answer:" + kOk + "|"},
      {"AT+CSQ", "AT+CSQ\r" + kCsq + kOk, "answer:" + kCsq + kOk + "|"},
      {"AT+CSQ", "AT+CSQ\r\r\n+CMTI: \"SM\",1\r\n" + kCsq + kOk,
       "report:\r\n+CMTI: \"SM\",1\r\n|answer:" + kCsq + kOk + "|"},
      {"AT+CSQ", "\r\n+CMTI: \"SM\",1\r\nAT+CSQ\r" + kCsq + kOk,
       "report:\r\n+CMTI: \"SM\",1\r\n|answer:" + kCsq + kOk + "|"},
      {"AT", nuls + kOk, "answer:" + kOk + "|"},
      {"AT+CPBR=1", "\r\n+CPBR: 1,\"" + nuls + "\"\r\n" + kOk, "answer unfit:|"},
      {"AT", "\nOK\n", "answer:\nOK\n|"},
  });
}

TEST(StreamReader, ReportsBetweenInsideAndAfter) {
  const std::string first = "\r\n+CPBR: 1,\"5\",129,\"a\"\r\n";
  const std::string second = "+CPBR: 2,\"6\",129,\"b\"\r\n";
  const std::string answer = "answer:" + first + second + kOk + "|";
  const std::string cmti = "\r\n+CMTI: \"SM\",3\r\n";
  expect_rows({
      {"AT+CPBR=1,2", cmti + first + second + kOk, "report:" + cmti + "|" + answer},
      {"AT+CPBR=1,2", first + cmti + second + kOk, "report:" + cmti + "|" + answer},
      {"AT+CPBR=1,2", first + cmti.substr(2) + second + kOk, "report:" + cmti + "|" + answer},
      {"AT+CPBR=1,2", first + second + cmti + kOk, "report:" + cmti + "|" + answer},
      {"AT+CPBR=1,2", first + second + cmti + cmti + kOk + cmti,
       "report:" + cmti + "|report:" + cmti + "|" + answer + "report:" + cmti + "|"},
      // Unframed, in the empty line before the result: the parser needs that line back.
      {"AT+CSQ", kCsq + "\r\n+CMTI: \"SM\",3\r\nOK\r\n",
       "report:" + cmti + "|answer:" + kCsq + kOk + "|"},
      // The command's own name is its answer, also in a line of several commands.
      {"AT+CGREG?", "\r\n+CGREG: 0,1\r\n" + kOk, "answer:\r\n+CGREG: 0,1\r\n" + kOk + "|"},
      {"AT+CSQ;+CGREG?", kCsq + "\r\n+CGREG: 0,1\r\n" + kOk,
       "answer:" + kCsq + "\r\n+CGREG: 0,1\r\n" + kOk + "|"},
      {"AT+CGREG?", "\r\n+CEREG: 5\r\n\r\n+CGREG: 0,1\r\n" + kOk + "\r\n+CGREG: 2\r\n",
       "report:\r\n+CEREG: 5\r\n|answer:\r\n+CGREG: 0,1\r\n" + kOk + "|report:\r\n+CGREG: 2\r\n|"},
      {"AT", "\r\nRING\r\n" + kOk, "report:\r\nRING\r\n|answer:" + kOk + "|"},
      {"AT", "\r\nNO CARRIER\r\n" + kOk, "report:\r\nNO CARRIER\r\n|answer:" + kOk + "|"},
      {"AT", "\r\n+JEND\r\n" + kOk, "report:\r\n+JEND\r\n|answer:" + kOk + "|"},
      {"", "\r\n+CREG: 1\r\n\r\nOK\r\n", "line:+CREG: 1|line:OK|"},
  });
}

TEST(StreamReader, ReportsOfTwoLines) {
  const std::string cds = "\r\n+CDS: 25\r\n0791\r\n";
  expect_rows({
      {"AT", cds + kOk, "report:" + cds + "|answer:" + kOk + "|"},
      {"AT+CSQ", kCsq + "\r\n+CMT: ,5\r\nOK\r\n" + kOk,
       "report:\r\n+CMT: ,5\r\nOK\r\n|answer:" + kCsq + kOk + "|"},
      // The data never came.
      {"AT", "\r\n+CBM: 8\r\n\r\nOK\r\n", "report:\r\n+CBM: 8\r\n|answer:" + kOk + "|"},
      // In text mode a status report is one line.
      {"AT", "\r\n+CDS: 2,5\r\n" + kOk, "report:\r\n+CDS: 2,5\r\n|answer:" + kOk + "|"},
      {"", cds, "report:" + cds + "|"},
  });
}

TEST(StreamReader, NothingGrowsWithoutBound) {
  const std::string long_line = "\r\n+CPBR: " + std::string(100'000, 'x') + "\r\n";
  EXPECT_EQ(events_of("AT+CPBR=1", {long_line, kOk, "\r\nRING\r\n"}),
            "answer too-long:|report:\r\nRING\r\n|");
  EXPECT_EQ(events_of("", {long_line}), "line too-long:|");
  EXPECT_EQ(events_of("AT", {"\r\n+CMTI: " + std::string(30'000, 'x') + "\r\n" + kOk}),
            "report too-long:|answer:" + kOk + "|");
  EXPECT_EQ(events_of("", {"\r\n+CMTI: " + std::string(15'000, 'x') + "\r\n"}),
            "report too-long:|");

  // One byte more than fits, and exactly what fits.
  const size_t room = StreamReader::kLongestAnswer - kOk.size();
  for (const size_t length : {room, room + 1}) {
    std::string text;
    while (length - text.size() > 200) text += "\r\n" + std::string(96, 'y') + "\r\n";
    text += "\r\n" + std::string(length - text.size() - 4, 'z') + "\r\n";
    EXPECT_EQ(events_of("AT", {text + kOk}),
              length == room ? "answer:" + text + kOk + "|" : "answer too-long:|");
  }
}

TEST(StreamReader, ResyncLeavesOutTheRestOfALine) {
  StreamReader reader;
  reader.expect_answer("AT+CGREG?");
  reader.feed("\r\n+CGREG: 0");
  EXPECT_FALSE(reader.next());
  reader.expect_resync("AT");
  reader.feed(",1\r\n" + kOk);
  EXPECT_EQ(described(*reader.next()), "answer:" + kOk + "|");
  // Late lines of the command before are no reports until the next one.
  reader.feed("\r\n+CGREG: 0,1\r\n");
  EXPECT_EQ(described(*reader.next()), "line:+CGREG: 0,1|");
  reader.expect_nothing();
  reader.feed("\r\n+CGREG: 0,1\r\n");
  EXPECT_EQ(described(*reader.next()), "report:\r\n+CGREG: 0,1\r\n|");
}

}  // namespace
}  // namespace qalt::server
