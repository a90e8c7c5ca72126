// The whole engine against a modem whose answers are the fuzzer's bytes: discovery, reads, writes
// and deletes on every platform.
#include <errno.h>
#include <sys/socket.h>

#include "qalt_at/link.h"
#include "qalt_at/phonebook.h"
#include "tests/fuzz/property.h"

namespace {

fuzz::Input* g_answers = nullptr;  // null: the answers of an ordinary modem
AtMsg g_request;                   // the command that is answered next

std::string ordinary_answer(const std::string& line) {
  if (line == "AT+CPBS?") return "\r\n+CPBS: \"SM\",1,250\r\n\r\nOK\r\n";
  if (line == "AT+CPBR=?") return "\r\n+CPBR: (1-250),40,18\r\n\r\nOK\r\n";
  return line == "AT+JCPBR=?" ? "\r\nnot support\r\n" : "\r\nOK\r\n";
}

}  // namespace

extern "C" int connect(int, const sockaddr*, socklen_t) {
  return 0;
}

// A line that a client's text must never have broken out of.
extern "C" ssize_t send(int, const void* bytes, size_t size, int) {
  FUZZ_CHECK(size == sizeof g_request);
  std::memcpy(&g_request, bytes, size);
  FUZZ_CHECK(fuzz::terminated(g_request.aucDataBuf) && g_request.usReserved == 0);
  const std::string line = g_request.aucDataBuf;
  FUZZ_CHECK(line.size() == g_request.usParaLen && line.compare(0, 2, "AT") == 0);
  FUZZ_CHECK(line.find_first_of("\r\n\x1A\x1B") == line.npos);
  FUZZ_CHECK(std::count(line.begin(), line.end(), '"') % 2 == 0);
  return static_cast<ssize_t>(size);
}

// An answer is what stands in front of the next NUL; an empty one is a server that closed, "!" a
// broken connection, and "~" in front asks for the answer 200 times over.
extern "C" ssize_t recv(int, void* bytes, size_t size, int) {
  std::string answer =
      g_answers == nullptr ? ordinary_answer(g_request.aucDataBuf) : g_answers->text();
  if (answer.empty()) return 0;
  errno = ECONNRESET;
  if (answer == "!") return -1;
  if (answer[0] == '~') {
    const std::string line = answer.substr(1);
    for (int i = 0; i < 200; ++i) answer += line;
  }
  static AtMsg frame;
  frame = {};
  answer.copy(frame.aucDataBuf, sizeof frame.aucDataBuf);
  std::memcpy(bytes, &frame, std::min(size, sizeof frame));
  return static_cast<ssize_t>(std::min(size, sizeof frame));
}

namespace {

bool is_one_of(int result, std::initializer_list<int> results) {
  return std::find(results.begin(), results.end(), result) != results.end();
}

void discover(fuzz::Input& input) {
  constexpr int kPlatforms[] = {0, 1, 4, 5, 7, 8, 99, -1};
  QL_setCurrentPlatform(kPlatforms[input.byte() % 8]);
  fuzz::Guarded<PbParam> param(1);
  g_answers = &input;
  FUZZ_CHECK(QL_getPhonebookInfo(0, param.data()) == PB_OK);
  for (int32_t k = 0; k < PB_FIELD_TYPES; ++k) FUZZ_CHECK(param[0].FieldAbility[k].fieldType == k);
}

// Reads into exactly the room that the header asks for.
void read(fuzz::Input& input) {
  const int begin = input.byte();
  const int end = begin + input.byte() % 128;
  const auto room = static_cast<size_t>(std::min(end - begin + 1, int{PB_READ_MAX}));
  fuzz::Guarded<PhonebookEntry> entries(room);
  fuzz::Guarded<PbField> fields(room * PB_FIELD_TYPES);
  for (size_t i = 0; i < room; ++i) entries[i] = {0, 0, &fields[i * PB_FIELD_TYPES], 0};
  g_answers = &input;
  FUZZ_CHECK(is_one_of(QL_getPhonebookEntry(0, begin, end, entries.data()),
                       {PB_OK, PB_ERR_COMMAND, PB_ERR_READ_REFUSED}));
  for (size_t i = 0; i < room; ++i) {
    FUZZ_CHECK(entries[i].pFieldList == &fields[i * PB_FIELD_TYPES]);
    FUZZ_CHECK(is_one_of(entries[i].FieldCount, {0, 2, PB_FIELD_TYPES}));
    for (int32_t k = 0; k < entries[i].FieldCount; ++k) {
      const PbField& field = entries[i].pFieldList[k];
      FUZZ_CHECK(field.fieldType == k && fuzz::terminated(field.pField));
    }
  }
}

// Writes fields whose texts are the fuzzer's too; some fill their room without a terminator.
void write(fuzz::Input& input) {
  const size_t count = input.byte() % 8;
  fuzz::Guarded<PbField> fields(count);
  fields.clear();
  PhonebookEntry entry = {static_cast<int8_t>(input.byte()), static_cast<int32_t>(count),
                          fields.data(), 0};
  for (PbField& field : fields) {
    field.fieldType = input.byte() % 8 - 1;
    std::string text = input.text();
    if (text.size() == 1) text.assign(sizeof field.pField, text[0]);
    text.copy(field.pField, sizeof field.pField);
  }
  g_answers = &input;
  const int32_t asked = entry.storageIndex;
  FUZZ_CHECK(is_one_of(QL_setPhonebookEntry(0, &entry),
                       {PB_OK, PB_ERR_COMMAND, PB_ERR_PARAM, PB_ERR_FULL, PB_ERR_EXT_COMMAND}));
  FUZZ_CHECK(asked == 0 ? entry.storageIndex < PBB_CAPACITY : entry.storageIndex == asked);
}

void remove(fuzz::Input& input) {
  const int index = static_cast<int16_t>(input.word());
  g_answers = &input;
  const int result = QL_deletePhonebookEntry(0, index);
  FUZZ_CHECK(is_one_of(result, {PB_OK, PB_ERR_COMMAND, PB_ERR_PARAM, PB_ERR_EXT_COMMAND}));
  FUZZ_CHECK(result != PB_OK || index < 0 || index >= PBB_CAPACITY ||
             _PBB_GetIndexIsEmpty(index) == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  // What the process found out before lives on in it: every run begins with one and the same modem.
  g_answers = nullptr;
  PbParam param;
  QL_setCurrentPlatform(99);
  QL_getPhonebookInfo(0, &param);
  constexpr void (*kActions[])(fuzz::Input&) = {discover, read, write, remove};
  for (int action = 0; action < 16 && input.size() != 0; ++action) {
    kActions[input.byte() % 4](input);
  }
  return 0;
}
