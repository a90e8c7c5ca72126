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
    // What the counter says was cut out, behind the debris that went first.
    const size_t debris = literal::find_unquoted(text, "\r\n");
    FUZZ_CHECK(g_iProcDataLen > 0);
    FUZZ_CHECK(debris + static_cast<size_t>(g_iProcDataLen) + after.size() == text.size());
    if (calls == 0)
      FUZZ_CHECK(parse(text, again, result) == after && fuzz::same_bytes(again, record));
    text = after;
  }
}
