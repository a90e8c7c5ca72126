// The whole engine against a modem whose answers are the fuzzer's bytes: discovery, reads, writes
// and deletes on every platform.
#include <errno.h>
#include <sys/socket.h>

#include "fuzz/property.h"
#include "qalt_at/link.h"
#include "qalt_at/phonebook.h"

namespace {

fuzz::Input* g_answers = nullptr;  // null: the answers of an ordinary modem
std::string g_line;                // the command that is answered next

std::string ordinary_answer() {
  if (g_line == "AT+CPBS?") return "\r\n+CPBS: \"SM\",1,250\r\n\r\nOK\r\n";
  if (g_line == "AT+CPBR=?") return "\r\n+CPBR: (1-250),40,18\r\n\r\nOK\r\n";
  if (g_line == "AT+JCPBR=?") return "\r\nnot support\r\n";
  return "\r\nOK\r\n";
}

// A line that a client's text must never have broken out of.
void check_command(const AtMsg& request) {
  FUZZ_CHECK(fuzz::terminated(request.aucDataBuf));
  const std::string line = request.aucDataBuf;
  FUZZ_CHECK(line.size() == request.usParaLen && line.compare(0, 2, "AT") == 0);
  FUZZ_CHECK(line.find_first_of("\r\n\x1A\x1B") == line.npos);
  FUZZ_CHECK(std::count(line.begin(), line.end(), '"') % 2 == 0);
  FUZZ_CHECK(request.usReserved == 0);
  g_line = line;
}

}  // namespace

extern "C" int connect(int, const sockaddr*, socklen_t) {
  return 0;
}

extern "C" ssize_t send(int, const void* bytes, size_t size, int) {
  auto request = std::make_unique<AtMsg>();
  FUZZ_CHECK(size == sizeof *request);
  std::memcpy(request.get(), bytes, sizeof *request);
  check_command(*request);
  return static_cast<ssize_t>(size);
}

// An answer is what stands in front of the next NUL; an empty one is a server that closed, "!" a
// broken connection, and "~" in front asks for the answer 200 times over.
extern "C" ssize_t recv(int, void* bytes, size_t size, int) {
  std::string answer = g_answers == nullptr ? ordinary_answer() : g_answers->text();
  if (answer == "!") {
    errno = ECONNRESET;
    return -1;
  }
  if (!answer.empty() && answer[0] == '~') {
    const std::string line = answer.substr(1);
    for (int i = 0; i < 200; ++i) answer += line;
  }
  if (answer.empty()) return 0;
  auto frame = std::make_unique<AtMsg>();
  std::memset(frame->aucDataBuf, 0, sizeof frame->aucDataBuf);
  answer.copy(frame->aucDataBuf, sizeof frame->aucDataBuf);
  std::memcpy(bytes, frame.get(), std::min(size, sizeof *frame));
  return static_cast<ssize_t>(std::min(size, sizeof *frame));
}

namespace {

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
  const int result = QL_getPhonebookEntry(0, begin, end, entries.data());
  FUZZ_CHECK(result == PB_OK || result == PB_ERR_COMMAND || result == PB_ERR_READ_REFUSED);
  for (size_t i = 0; i < room; ++i) {
    FUZZ_CHECK(entries[i].pFieldList == &fields[i * PB_FIELD_TYPES]);
    FUZZ_CHECK(entries[i].FieldCount == 0 || entries[i].FieldCount == 2 ||
               entries[i].FieldCount == PB_FIELD_TYPES);
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
  for (size_t i = 0; i < count; ++i) {
    fields[i].fieldType = input.byte() % 8 - 1;
    const std::string text = input.text();
    if (text.size() == 1) {
      std::memset(fields[i].pField, text[0], sizeof fields[i].pField);
    } else {
      text.copy(fields[i].pField, sizeof fields[i].pField);
    }
  }
  g_answers = &input;
  const int32_t asked = entry.storageIndex;
  const int result = QL_setPhonebookEntry(0, &entry);
  FUZZ_CHECK(result == PB_OK || result == PB_ERR_COMMAND || result == PB_ERR_PARAM ||
             result == PB_ERR_FULL || result == PB_ERR_EXT_COMMAND);
  FUZZ_CHECK(asked == 0 || entry.storageIndex == asked);
  FUZZ_CHECK(entry.storageIndex < PBB_CAPACITY || asked != 0);
}

void remove(fuzz::Input& input) {
  const int index = static_cast<int16_t>(input.word());
  g_answers = &input;
  const int result = QL_deletePhonebookEntry(0, index);
  FUZZ_CHECK(result == PB_OK || result == PB_ERR_COMMAND || result == PB_ERR_PARAM ||
             result == PB_ERR_EXT_COMMAND);
  FUZZ_CHECK(result != PB_OK || index < 0 || index >= PBB_CAPACITY ||
             _PBB_GetIndexIsEmpty(index) == 1);
}

// What the process found out before lives on in it: every run begins with one and the same modem.
void start_afresh() {
  g_answers = nullptr;
  PbParam param;
  QL_setCurrentPlatform(99);
  QL_getPhonebookInfo(0, &param);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  start_afresh();
  constexpr void (*kActions[])(fuzz::Input&) = {discover, read, write, remove};
  for (int action = 0; action < 16 && input.size() != 0; ++action) {
    kActions[input.byte() % 4](input);
  }
  return 0;
}
