// The parameter codec on any text: splits, counts, rewrites, and the operator list taken whole,
// each beside the literal version.
#include "qalt_at/parameters.h"

#include "fuzz/property.h"
#include "qalt_at/parser.h"
#include "tests/exhaustive/literal_parameters.h"
#include "tests/exhaustive/literal_parser.h"

namespace {

using std::string;
using Pieces = std::vector<string>;

template <typename Split>
Pieces pieces_of(Split split) {
  // Made once: memory of this size that is new for every split would cost most of the time.
  static ParasList g_list;
  ParasList* const list = &g_list;
  std::memset(list, 0, sizeof *list);
  split(list);
  FUZZ_CHECK(list->nCount >= 0 && list->nCount <= ATCODEC_MAX_PARAS);
  Pieces pieces;
  for (int32_t i = 0; i < list->nCount; ++i) {
    FUZZ_CHECK(fuzz::terminated(list->Para[i]));
    pieces.emplace_back(list->Para[i]);
  }
  return pieces;
}

string joined(const Pieces& pieces, const string& separator) {
  string text;
  for (const string& piece : pieces)
    text += (text.empty() && &piece == &pieces[0] ? "" : separator) + piece;
  return text;
}

void check_splits(const string& source, const string& separator) {
  fuzz::GuardedText text(source);
  const Pieces lines =
      pieces_of([&](ParasList* list) { ATCodec_PreProc_Res_ParaList(list, text.data()); });
  FUZZ_CHECK(lines == literal::split(source, ";", 1));
  FUZZ_CHECK(source.compare(0, joined(lines, ";").size(), joined(lines, ";")) == 0);
  FUZZ_CHECK(pieces_of([&](ParasList* list) {
               ATCodec_PreProc_Res_ParaList_Special(list, text.data());
             }) == literal::split(source, ",", 1));
  FUZZ_CHECK(pieces_of([&](ParasList* list) {
               ATCodec_PreProc_Res_Icera_ParaList(list, text.data());
             }) == literal::split(source, "*STGC:", 6,
                                  source.find("*STGC:") != string::npos &&
                                      literal::find_unquoted(source, "*STGC:") != string::npos));
  FUZZ_CHECK(pieces_of([&](ParasList* list) {
               ATCodec_PreProc_Res_COPS5_ParaList(list, text.data());
             }) == literal::split(source, "\r\n", 2, false, true));
  if (separator.empty()) return;
  FUZZ_CHECK(pieces_of([&](ParasList* list) {
               ATCodec_PreProc_Res_ParaList_Ex(list, text.data(), separator.c_str());
             }) == literal::split(source, separator, 1));
  FUZZ_CHECK(text.str() == source);
}

void check_pieces(const string& source, const string& separator) {
  fuzz::GuardedText text(source);
  int32_t count = -1;
  ATCodec_PreProc_Res_ParaList_Entend(text.data(), &count);
  const Pieces parameters = literal::split(source, ",", 1);
  if (count >= 0) FUZZ_CHECK(static_cast<size_t>(count) + 1 == parameters.size());
  FUZZ_CHECK(ATCodec_GetSubStrCountByToken(text.data(), separator.c_str()) >= 0);
  for (const int32_t index : {-1, 0, 1, 2, 3, 99, 100}) {
    fuzz::Guarded<char> out(std::max<size_t>(ATCODEC_PARA_LEN, source.size() + 1));
    out.clear();
    const char* result =
        ATCodec_FindSubStrByIndex(text.data(), out.data(), index, separator.c_str());
    const bool copied = result == out.data();
    FUZZ_CHECK(copied || out[0] == '\0');
    FUZZ_CHECK(copied || result == nullptr ||
               (result >= text.data() && result <= text.data() + source.size()));
    const Pieces all = separator.empty() ? Pieces{source} : literal::split(source, separator, 1);
    if (copied && index >= 1 && static_cast<size_t>(index) < all.size()) {
      FUZZ_CHECK(out.data() == all[static_cast<size_t>(index) - 1]);
    }
  }
}

// The same line in a field of 1024 bytes, as the rewrites require, or longer.
template <typename Rewrite>
string changed(const string& line, Rewrite rewrite) {
  fuzz::Guarded<char> field(std::max<size_t>(ATCODEC_PARA_LEN, line.size() + 1));
  std::memcpy(field.data(), line.c_str(), line.size() + 1);
  rewrite(field.data());
  FUZZ_CHECK(std::memchr(field.data(), '\0', field.size()) != nullptr);
  return field.data();
}

unsigned char* as_line(char* field) {
  return reinterpret_cast<unsigned char*>(field);
}

void check_rewrites(const string& line) {
  const string plain =
      changed(line, [](char* field) { ATCodec_PreProc_Res_ParaLine(as_line(field)); });
  const string special =
      changed(line, [](char* field) { ATCodec_PreProc_Res_ParaLine_Special(as_line(field)); });
  FUZZ_CHECK(plain == literal::rewritten(line, false));
  FUZZ_CHECK(special == literal::rewritten(line, true));
  FUZZ_CHECK(plain == line || plain.find('"') == string::npos);
  for (const string& field : {line, plain, special}) {
    fuzz::GuardedText restored(field), restored_special(field), flat(field);
    ATCodec_Restore_String_Para(restored.data());
    ATCodec_Restore_String_Para_Special(restored_special.data());
    ATCodec_ProcRes_ParaLineEx(flat.data());
    FUZZ_CHECK(restored.str() == literal::restored(field, false));
    FUZZ_CHECK(restored_special.str() == literal::restored(field, true));
    FUZZ_CHECK(flat.str() == literal::flattened(field));
  }
}

void check_operator_list(const string& source) {
  fuzz::GuardedText text(source);
  static AtRes g_record;
  const int result = Bk_Parse_At_COPS5_Res(text.data(), &g_record);
  const bool has_ok = literal::find_unquoted(source, "\r\nOK\r\n") != string::npos;
  FUZZ_CHECK(result == (has_ok && source.size() < QALT_AT_PARAS_SIZE ? 0 : 19));
  FUZZ_CHECK(text.str() == source);
  FUZZ_CHECK(result != 0 || g_record.Paras == source);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  const string separator = input.text();
  const string text = input.text();
  check_splits(text, separator);
  check_pieces(text, separator);
  check_rewrites(text);
  check_operator_list(text);
  return 0;
}
