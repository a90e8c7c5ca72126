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

void process_on(int platform, Processor process, PbItemList& list) {
  QL_setCurrentPlatform(platform);
  std::memset(&list, 0, sizeof list);
  FUZZ_CHECK(process(&g_record, &list) == 0);
}

void check_processors() {
  static const PbItem kEmpty{};
  g_before = g_record;
  // Only +CPBR is read differently on some platforms.
  constexpr std::pair<int, Processor> kReadings[] = {
      {PB_PLATFORM_DEFAULT, CPBR_SetATResProcess}, {PB_PLATFORM_1, CPBR_SetATResProcess},
      {PB_PLATFORM_8, CPBR_SetATResProcess},       {PB_PLATFORM_8, JCPBR_SetATResProcess},
      {PB_PLATFORM_8, SCPBR_SetATResProcess},
  };
  for (const auto& [platform, process] : kReadings) {
    process_on(platform, process, g_list);
    process_on(platform, process, g_again);
    FUZZ_CHECK(fuzz::same_bytes(g_list, g_again) && fuzz::same_bytes(g_record, g_before));
    FUZZ_CHECK(g_list.count >= 0 && g_list.count <= PB_READ_MAX);
    for (int32_t i = 0; i < PB_LIST_SIZE; ++i) {
      const PbItem& item = g_list.items[i];
      FUZZ_CHECK(i < g_list.count || fuzz::same_bytes(item, kEmpty));
      FUZZ_CHECK(fuzz::terminated(item.number) && fuzz::terminated(item.text) &&
                 fuzz::terminated(item.number2) && fuzz::terminated(item.number3) &&
                 fuzz::terminated(item.email) && fuzz::terminated(item.extraText));
    }
  }
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

// One entry through the parser and the processor of its family.
void check_entry(fuzz::Input input) {
  const int32_t index = input.word();
  const std::string number = carried(input, 40), text = carried(input, 60);
  const std::string number2 = carried(input, 40), email = carried(input, 99);
  const std::string head = std::to_string(index) + ",\"" + number + "\",";
  const std::string vendor = '"' + text + "\",\"" + number2 + "\",\"\",\"" + email + "\",\"\"";
  // Platform 8 reads a line as it is, up to its commas.
  for (const int platform : {PB_PLATFORM_1, PB_PLATFORM_4, PB_PLATFORM_7}) {
    for (const bool is_vendor : {false, true}) {
      const std::string line =
          is_vendor ? "+JCPBR: " + head + vendor : "+CPBR: " + head + "145,\"" + text + '"';
      fuzz::GuardedText answer("\r\n" + line + "\r\n\r\nOK\r\n");
      g_record = {};
      FUZZ_CHECK(Bk_Parse_At_Res(answer.data(), &g_record) == 0 && g_record.ResType == AT_RES_OK);
      process_on(platform, is_vendor ? JCPBR_SetATResProcess : CPBR_SetATResProcess, g_list);
      const PbItem& item = g_list.items[0];
      FUZZ_CHECK(g_list.count == 1 && item.storageIndex == index);
      FUZZ_CHECK(item.number == number && item.text == text);
      FUZZ_CHECK(item.numberType == (is_vendor ? 0 : 145));
      FUZZ_CHECK(!is_vendor || (item.number2 == number2 && item.email == email));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::GuardedText text(fuzz::Input(bytes, size).text());
  // As a payload by itself, and as what the parser makes of it.
  g_record = {};
  text.str().copy(g_record.Paras, sizeof g_record.Paras - 1);
  check_processors();
  g_record = {};
  if (Bk_Parse_At_Res(text.data(), &g_record) == AT_PARSE_OK) check_processors();
  check_entry(fuzz::Input(bytes, size));
  return 0;
}
