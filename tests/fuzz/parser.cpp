// The response parser, called on one text until nothing is left to handle, beside the literal one.
#include "qalt_at/parser.h"

#include "tests/exhaustive/literal.h"
#include "tests/fuzz/property.h"

namespace {

// Calls the parser on a text and a zeroed record; returns what is left of the text.
std::string parse(const std::string& before, AtRes& record, int& result) {
  fuzz::GuardedText text(before);
  std::memset(&record, 0, sizeof record);
  result = Bk_Parse_At_Res(text.data(), &record);
  return text.str();
}

// What was cut out is one piece, as long as the counter says, and only debris went before it.
void check_cut(const std::string& before, const std::string& after) {
  const std::string text = before.substr(literal::find_unquoted(before, "\r\n"));
  FUZZ_CHECK(g_iProcDataLen > 0);
  FUZZ_CHECK(after.size() + static_cast<size_t>(g_iProcDataLen) == text.size());
  const auto head = std::mismatch(after.begin(), after.end(), text.begin()).first - after.begin();
  const auto tail =
      std::mismatch(after.rbegin(), after.rend(), text.rbegin()).first - after.rbegin();
  FUZZ_CHECK(static_cast<size_t>(head + tail) >= after.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  // Made once: memory of this size that is new for every call would cost most of the time.
  static AtRes record, again;
  std::string text = fuzz::Input(bytes, size).text();
  for (size_t calls = 0;; ++calls) {
    FUZZ_CHECK(calls <= size);
    int result = -1;
    const std::string after = parse(text, record, result);
    const literal::Parsed expected = literal::parse(text);
    FUZZ_CHECK(result == expected.result && after == expected.rest && after.size() <= text.size());
    FUZZ_CHECK(record.CmdId == expected.command && record.ResType == expected.type);
    FUZZ_CHECK(record.ParaLen == expected.para_length);
    FUZZ_CHECK(fuzz::terminated(record.Paras) && record.Paras == expected.payload);
    if (result == AT_PARSE_NOT_FOUND) return 0;
    check_cut(text, after);
    if (calls == 0)
      FUZZ_CHECK(parse(text, again, result) == after && fuzz::same_bytes(again, record));
    text = after;
  }
}
