// The modem's bytes cut into answers and reports, whole and in single bytes.
#include "server/stream_reader.h"

#include <gtest/gtest.h>

#include <array>

namespace qalt::server {
namespace {

// In the tables "/" stands for a line end and "~" for a NUL.
std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}
std::string wire(const std::string& text) {
  return replaced(replaced(text, "/", "\r\n"), "~", std::string(1, '\0'));
}

std::string described(const StreamEvent& event) {
  std::string text = std::array{"answer", "prompt", "report", "line"}[size_t(event.kind)];
  if (event.too_long) text += " too-long";
  if (event.unfit) text += " unfit";
  if (event.open_quote) text += " open";
  return text + ":" + replaced(event.text, "\r\n", "/");
}

// What a reader makes of the bytes; after an answer or a prompt it awaits nothing.
std::string events_of(const std::string& command, const std::string& bytes, size_t piece) {
  StreamReader reader;
  if (!command.empty()) reader.expect_answer(command);
  std::string text;
  for (size_t start = 0; start < bytes.size(); start += piece) {
    reader.feed(bytes.substr(start, piece));
    while (const auto event = reader.next()) {
      text += (text.empty() ? "" : " | ") + described(*event);
      if (event->kind <= StreamEvent::Kind::kPrompt) reader.expect_nothing();
    }
  }
  return text;
}

TEST(StreamReader, AnswersAndReports) {
  const struct {
    const char* command;
    const char* bytes;
    const char* events;
  } rows[] = {
      {"AT+CSQ", "/+CSQ: 20,99//OK/", "answer:/+CSQ: 20,99//OK/"},
      {"AT+CSQ", "/+CME ERROR: SIM busy/", "answer:/+CME ERROR: SIM busy/"},
      {"AT+JUSIM=?", "/not support/", "answer:/not support/"},
      {"AT+CMGS=\"1\"", "/> ", "prompt:/> "},
      {"ATD1;", "/NO CARRIER/", "answer:/NO CARRIER/"},
      {"ATD1", "/CONNECT 9600/", "answer:/CONNECT 9600/"},
      {"AT+CGSN", "/12 OK/OKAY//OK/", "answer:/12 OK/OKAY//OK/"},
      {"AT", "\nOK\n", "answer:\nOK\n"},
      // An odd quote hides nothing, but is told.
      {"AT+CPBR=1", "/+CPBR: 1,\"a\"b\"//OK/", "answer open:/+CPBR: 1,\"a\"b\"//OK/"},
      // Echo and noise.
      {"AT+CSQ", "AT+CSQ\r/+CSQ: 20,99//OK/", "answer:/+CSQ: 20,99//OK/"},
      {"AT", "/RING/AT\r/OK/", "report:/RING/ | answer:/OK/"},
      {"AT", "~~/OK/", "answer:/OK/"},
      {"AT+CPBR=1", "/+CPBR: 1,\"~~\"//OK/", "answer unfit:"},
      // Reports before, inside and after an answer.
      {"AT+A", "/RING//+A: 1/+A: 2//OK//RING/",
       "report:/RING/ | answer:/+A: 1/+A: 2//OK/ | report:/RING/"},
      {"AT+A", "/+A: 1//RING/+A: 2//OK/", "report:/RING/ | answer:/+A: 1/+A: 2//OK/"},
      {"AT+A", "/+A: 1/RING/+A: 2//OK/", "report:/RING/ | answer:/+A: 1/+A: 2//OK/"},
      {"AT+A", "/+A: 1//RING//RING//OK/", "report:/RING/ | report:/RING/ | answer:/+A: 1//OK/"},
      // Unframed, in the empty line before the result: the parser needs that line back.
      {"AT+A", "/+A: 1//+CMTI: \"SM\",3/OK/", "report:/+CMTI: \"SM\",3/ | answer:/+A: 1//OK/"},
      // The command's own name is its answer, also in a line of several commands.
      {"AT+CSQ;+CGREG?", "/+CSQ: 1//+CGREG: 0//OK/", "answer:/+CSQ: 1//+CGREG: 0//OK/"},
      {"AT+CGREG?", "/+CEREG: 5//+CGREG: 0//OK//+CGREG: 2/",
       "report:/+CEREG: 5/ | answer:/+CGREG: 0//OK/ | report:/+CGREG: 2/"},
      {"AT", "/NO CARRIER//+JEND//OK/", "report:/NO CARRIER/ | report:/+JEND/ | answer:/OK/"},
      {"", "/+CREG: 1//OK/", "line:+CREG: 1 | line:OK"},
      // Reports of two lines; one whose data never came; in text mode a status report is one line.
      {"AT", "/+CDS: 25/0791//OK/", "report:/+CDS: 25/0791/ | answer:/OK/"},
      {"AT+A", "/+A: 1//+CMT: ,5/OK//OK/", "report:/+CMT: ,5/OK/ | answer:/+A: 1//OK/"},
      {"", "/+CDS: 25/0791/", "report:/+CDS: 25/0791/"},
      {"AT", "/+CBM: 8//OK/", "report:/+CBM: 8/ | answer:/OK/"},
      {"AT", "/+CDS: 2,5//OK/", "report:/+CDS: 2,5/ | answer:/OK/"},
  };
  for (const auto& row : rows) {
    const std::string bytes = wire(row.bytes);
    EXPECT_EQ(events_of(row.command, bytes, bytes.size()), row.events) << row.bytes;
    EXPECT_EQ(events_of(row.command, bytes, 1), row.events) << row.bytes << " byte by byte";
  }
}

TEST(StreamReader, NothingGrowsWithoutBound) {
  const size_t room = StreamReader::kLongestAnswer - 6;
  const struct {
    const char* command;
    std::string bytes;
    std::string events;
  } rows[] = {
      {"AT", "/+A: " + std::string(100'000, 'x') + "//OK//RING/",
       "answer too-long: | report:/RING/"},
      {"", "/+A: " + std::string(100'000, 'x') + "/", "line too-long:"},
      {"AT", "/+CMTI: " + std::string(30'000, 'x') + "//OK/", "report too-long: | answer:/OK/"},
      {"", "/+CMTI: " + std::string(15'000, 'x') + "/", "report too-long:"},
      // Exactly what fits, and one byte more.
      {"AT", std::string(room, 'z') + "/OK/", "answer:" + std::string(room, 'z') + "/OK/"},
      {"AT", std::string(room + 1, 'z') + "/OK/", "answer too-long:"},
  };
  for (const auto& row : rows) EXPECT_EQ(events_of(row.command, wire(row.bytes), 999), row.events);
}

TEST(StreamReader, ResyncLeavesOutTheRestOfALine) {
  StreamReader reader;
  reader.expect_answer("AT+CGREG?");
  reader.feed("\r\n+CGREG: 0");
  EXPECT_FALSE(reader.next());
  reader.expect_resync("AT");
  reader.feed(wire(",1//OK//+CGREG: 0,1/"));
  EXPECT_EQ(described(*reader.next()), "answer:/OK/");
  // Late lines of the command before are no reports until the next one.
  EXPECT_EQ(described(*reader.next()), "line:+CGREG: 0,1");
  reader.expect_nothing();
  reader.feed(wire("/+CGREG: 0,1/"));
  EXPECT_EQ(described(*reader.next()), "report:/+CGREG: 0,1/");
}

}  // namespace
}  // namespace qalt::server
