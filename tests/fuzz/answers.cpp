// The three answer processors on whatever payload the parser makes of an answer, on every platform.
#include "qalt_at/commands.h"
#include "qalt_at/parameters.h"
#include "qalt_at/phonebook.h"
#include "tests/fuzz/property.h"

namespace {

using Processor = uint32_t (*)(AtRes*, PbItemList*);

// Made once: memory of this size that is new for every call would cost most of the time.
AtRes g_record, g_before;
PbItemList g_list, g_again;

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
    QL_setCurrentPlatform(platform);
    for (PbItemList* list : {&g_list, &g_again}) {
      std::memset(list, 0, sizeof *list);
      FUZZ_CHECK(process(&g_record, list) == 0);
    }
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::GuardedText text(fuzz::Input(bytes, size).text());
  // As a payload by itself, and as what the parser makes of it.
  g_record = {};
  text.str().copy(g_record.Paras, sizeof g_record.Paras - 1);
  check_processors();
  g_record = {};
  if (Bk_Parse_At_Res(text.data(), &g_record) == AT_PARSE_OK) check_processors();
  return 0;
}
