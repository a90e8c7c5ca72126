// The parameter codec on any text: splits, rewrites, and the operator list taken whole,
// each beside the literal version.
#include "qalt_at/parameters.h"

#include <set>

#include "qalt_at/parser.h"
#include "tests/exhaustive/literal.h"
#include "tests/fuzz/property.h"

namespace {

using std::string;
using Pieces = std::vector<string>;

template <typename Split, typename... Separator>
void check_split(const string& source, Split split, const Pieces& expected,
                 Separator... separator) {
  // Made once, and all zero again after each split.
  static ParasList list;
  fuzz::GuardedText text(source);
  split(&list, text.data(), separator...);
  FUZZ_CHECK(list.nCount == static_cast<int32_t>(expected.size()));
  for (size_t i = 0; i < expected.size(); ++i) {
    FUZZ_CHECK(fuzz::terminated(list.Para[i]) && list.Para[i] == expected[i]);
  }
  FUZZ_CHECK(text.str() == source);
  std::memset(&list, 0, sizeof list.nCount + expected.size() * ATCODEC_PARA_LEN);
}

void check_splits(const string& text, const string& separator) {
  const bool marked = literal::find_unquoted(text, "*STGC:") != string::npos;
  check_split(text, ATCodec_PreProc_Res_ParaList, literal::split(text, ";", 1));
  check_split(text, ATCodec_PreProc_Res_ParaList_Special, literal::split(text, ",", 1));
  check_split(text, ATCodec_PreProc_Res_Icera_ParaList, literal::split(text, "*STGC:", 6, marked));
  check_split(text, ATCodec_PreProc_Res_COPS5_ParaList,
              literal::split(text, "\r\n", 2, false, true));
  if (separator.empty()) return;
  check_split(text, ATCodec_PreProc_Res_ParaList_Ex, literal::split(text, separator, 1),
              separator.c_str());
}

// A line in a field of `room` bytes, or just its own size.
template <typename Byte>
string changed(const string& line, void (*change)(Byte*), size_t room = 0) {
  fuzz::GuardedText field(line, room);
  change(reinterpret_cast<Byte*>(field.data()));
  return field.str();
}

void check_rewrites(const string& line) {
  const string plain = changed(line, ATCodec_PreProc_Res_ParaLine, ATCODEC_PARA_LEN);
  const string special = changed(line, ATCodec_PreProc_Res_ParaLine_Special, ATCODEC_PARA_LEN);
  FUZZ_CHECK(plain == literal::rewritten(line, false));
  FUZZ_CHECK(special == literal::rewritten(line, true));
  for (const string& field : std::set<string>{line, plain, special}) {
    FUZZ_CHECK(changed(field, ATCodec_Restore_String_Para) == literal::restored(field, false));
    const string restored = changed(field, ATCodec_Restore_String_Para_Special);
    FUZZ_CHECK(restored == literal::restored(field, true));
    FUZZ_CHECK(changed(field, ATCodec_ProcRes_ParaLineEx) == literal::flattened(field));
  }
}

void check_operator_list(const string& source) {
  static AtRes record;
  record.Paras[0] = '\0';
  fuzz::GuardedText text(source);
  const bool has_ok = literal::find_unquoted(source, "\r\nOK\r\n") != string::npos;
  const int result = Bk_Parse_At_COPS5_Res(text.data(), &record);
  FUZZ_CHECK(result == (has_ok && source.size() < QALT_AT_PARAS_SIZE ? 0 : 19));
  FUZZ_CHECK(text.str() == source && (result != 0 || record.Paras == source));
  FUZZ_CHECK(result != 0 || (record.CmdId == 1 && record.ResType == AT_RES_OK));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  const string separator = input.text();
  const string text = input.text();
  check_splits(text, separator);
  check_rewrites(text);
  check_operator_list(text);
  return 0;
}
