// The response parser, called on one text until nothing is left to handle, beside the literal one.
#include "qalt_at/parser.h"

#include "fuzz/property.h"
#include "tests/exhaustive/literal_parser.h"

namespace {

// Made once: memory of this size that is new for every call would cost most of the time.
AtRes g_record, g_again;

// One call on the text and a zeroed record.
struct Call {
  Call(const std::string& before, AtRes* answer) : text(before), record(answer) {
    std::memset(answer, 0, sizeof *answer);
    result = Bk_Parse_At_Res(text.data(), answer);
  }
  fuzz::GuardedText text;
  AtRes* record;
  int result;
};

void check_against_literal(const std::string& before, Call& call) {
  const literal::Parsed expected = literal::parse(before);
  FUZZ_CHECK(call.result == expected.result);
  FUZZ_CHECK(call.text.str() == expected.rest);
  FUZZ_CHECK(call.record->CmdId == expected.command);
  FUZZ_CHECK(call.record->ResType == expected.type);
  FUZZ_CHECK(call.record->ParaLen == expected.para_length);
  FUZZ_CHECK(fuzz::terminated(call.record->Paras));
  FUZZ_CHECK(call.record->Paras == expected.payload);
}

// What was cut out is one piece, as long as the counter says, and only debris went before it.
void check_cut(const std::string& before, const std::string& after) {
  const std::string text = before.substr(literal::find_unquoted(before, "\r\n"));
  FUZZ_CHECK(g_iProcDataLen > 0);
  FUZZ_CHECK(after.size() + static_cast<size_t>(g_iProcDataLen) == text.size());
  const size_t head = static_cast<size_t>(
      std::mismatch(after.begin(), after.end(), text.begin()).first - after.begin());
  const size_t tail = static_cast<size_t>(
      std::mismatch(after.rbegin(), after.rend(), text.rbegin()).first - after.rbegin());
  FUZZ_CHECK(head + tail >= after.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  std::string text = fuzz::Input(bytes, size).text();
  for (size_t calls = 0;; ++calls) {
    FUZZ_CHECK(calls <= size);
    Call call(text, &g_record);
    check_against_literal(text, call);
    const std::string after = call.text.str();
    FUZZ_CHECK(after.size() <= text.size());
    if (call.result == AT_PARSE_NOT_FOUND) break;
    FUZZ_CHECK(call.result == AT_PARSE_OK);
    check_cut(text, after);
    if (calls == 0) {
      Call again(text, &g_again);
      FUZZ_CHECK(again.text.str() == after && fuzz::same_bytes(*again.record, *call.record));
    }
    text = after;
  }
  return 0;
}
