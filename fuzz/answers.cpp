// The three answer processors on whatever payload the parser makes of an answer, on every platform;
// and entries as a modem writes them, which come back as they were.
#include "fuzz/property.h"
#include "qalt_at/commands.h"
#include "qalt_at/parameters.h"
#include "qalt_at/phonebook.h"

namespace {

using Processor = uint32_t (*)(AtRes*, PbItemList*);

// Made once: memory of this size that is new for every call would cost most of the time.
AtRes g_record, g_before;
PbItemList g_list, g_again;

const PbItemList& items_of(Processor process, PbItemList& list) {
  std::memset(&list, 0, sizeof list);
  FUZZ_CHECK(process(&g_record, &list) == 0);
  return list;
}

void make_record(const std::string& payload) {
  std::memset(&g_record, 0, sizeof g_record);
  payload.copy(g_record.Paras, sizeof g_record.Paras - 1);
}

void check_list(const PbItemList& list) {
  static const PbItem kEmpty{};
  FUZZ_CHECK(list.count >= 0 && list.count <= PB_READ_MAX);
  for (int32_t i = 0; i < PB_LIST_SIZE; ++i) {
    const PbItem& item = list.items[i];
    FUZZ_CHECK(i < list.count || fuzz::same_bytes(item, kEmpty));
    FUZZ_CHECK(fuzz::terminated(item.number) && fuzz::terminated(item.text) &&
               fuzz::terminated(item.number2) && fuzz::terminated(item.number3) &&
               fuzz::terminated(item.email) && fuzz::terminated(item.extraText));
  }
}

void check_processor(Processor process) {
  const PbItemList& list = items_of(process, g_list);
  check_list(list);
  FUZZ_CHECK(fuzz::same_bytes(list, items_of(process, g_again)));
  FUZZ_CHECK(fuzz::same_bytes(g_record, g_before));
}

// Only +CPBR is read differently on some platforms.
void check_processors() {
  std::memcpy(&g_before, &g_record, sizeof g_record);
  for (const int platform : {PB_PLATFORM_DEFAULT, PB_PLATFORM_1, PB_PLATFORM_8}) {
    QL_setCurrentPlatform(platform);
    check_processor(CPBR_SetATResProcess);
  }
  check_processor(JCPBR_SetATResProcess);
  check_processor(SCPBR_SetATResProcess);
}

// Bytes of the input as a text that an answer line can carry: no quotes, line ends or marks.
std::string carried(fuzz::Input& input, size_t most) {
  std::string text;
  for (size_t left = input.byte() % (most + 1); left != 0 && input.size() != 0; --left) {
    const uint8_t c = input.byte();
    if (c >= ' ' && c != '"' && c < ATCODEC_MARK_CR) text += static_cast<char>(c);
  }
  return text;
}

std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

// One entry through the parser and the processor of its family.
void check_entry(fuzz::Input input) {
  const int32_t index = input.word();
  const std::string number = carried(input, 40), text = carried(input, 60);
  const std::string number2 = carried(input, 40), email = carried(input, 99);
  const std::string head = std::to_string(index) + "," + quoted(number) + ",";
  const struct {
    Processor process;
    std::string line;
    bool vendor;
  } families[] = {
      {CPBR_SetATResProcess, "+CPBR: " + head + "145," + quoted(text), false},
      {JCPBR_SetATResProcess,
       "+JCPBR: " + head + quoted(text) + "," + quoted(number2) + ",\"\"," + quoted(email) +
           ",\"\"",
       true},
  };
  // Platform 8 reads a line as it is, up to its commas.
  for (const int platform : {PB_PLATFORM_1, PB_PLATFORM_4, PB_PLATFORM_7}) {
    QL_setCurrentPlatform(platform);
    for (const auto& family : families) {
      fuzz::GuardedText answer("\r\n" + family.line + "\r\n\r\nOK\r\n");
      make_record("");
      FUZZ_CHECK(Bk_Parse_At_Res(answer.data(), &g_record) == 0 && g_record.ResType == AT_RES_OK);
      const PbItemList& list = items_of(family.process, g_list);
      const PbItem& item = list.items[0];
      FUZZ_CHECK(list.count == 1 && item.storageIndex == index);
      FUZZ_CHECK(item.number == number && item.text == text);
      FUZZ_CHECK(item.numberType == (family.vendor ? 0 : 145));
      FUZZ_CHECK(!family.vendor || (item.number2 == number2 && item.email == email));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::GuardedText text(fuzz::Input(bytes, size).text());
  // As a payload by itself, and as what the parser makes of it.
  make_record(text.str());
  check_processors();
  make_record("");
  if (Bk_Parse_At_Res(text.data(), &g_record) == AT_PARSE_OK) check_processors();
  check_entry(fuzz::Input(bytes, size));
  return 0;
}
