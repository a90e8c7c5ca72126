// Entry writes and deletes in each of the three command families, and the character set
// (+CPBW and +CSCS: 3GPP TS 27.007 clauses 8.14 and 5.5).
#include "AtCodec/exchange.h"
#include "common/log.h"
#include "qalt_at/commands.h"

namespace qalt {
namespace {

constexpr char kLogModule[] = "AtCodec/PB_AtWrapper";

constexpr CommandRow kCpbwSet = {
    PB_CMD_LONG_TIMEOUT_MS, nullptr, nullptr,
    [] { QALT_LOG_ERROR("###K47D LOG###  Bk_Parse_At_Res return UNI_ERROR_FALSE\n"); }};
constexpr CommandRow kVendorWrite = {PB_CMD_TIMEOUT_MS, nullptr, nullptr, log_unreadable};
constexpr CommandRow kCscsSet = {PB_CMD_TIMEOUT_MS, nullptr, nullptr, log_unreadable};

constexpr int32_t kNoIndex = -1;

uint32_t send_line(const CommandLine& line, const CommandRow& row) {
  AtRes tAtRes;
  return exchange(line, row, tAtRes) == AT_RES_OK ? PB_OK : PB_ERR_COMMAND;
}

// With storage index 0 the modem chooses: no index, and no type, goes with the number.
void put_index(CommandLine& line, int32_t index) {
  if (index != 0) line.put_number(index);
}
void put_given_type(CommandLine& line, int32_t index, int32_t type) {
  line.put(",");
  if (index != 0 && type != 0) line.put_number(type);
  line.put(",");
}

// ^SCPBW tells the type by the number's own looks.
void put_number_and_type(CommandLine& line, const char (&number)[sizeof JcpbwRecord::number]) {
  line.put(",").put_quoted(number).put(",");
  line.put_number(number[0] == '+' ? PB_TYPE_INTERNATIONAL : PB_TYPE_NATIONAL);
}

void put_cpbw_parameters(CommandLine& line, const CpbwRecord& record) {
  put_index(line, record.storageIndex);
  line.put(",").put_quoted(record.number);
  put_given_type(line, record.storageIndex, record.numberType);
  line.put_quoted(record.text);
}

void put_jcpbw_parameters(CommandLine& line, const JcpbwRecord& record) {
  put_index(line, record.storageIndex);
  line.put(",").put_quoted(record.number);
  put_given_type(line, record.storageIndex, record.numberType);
  line.put_quoted(record.text);
  line.put(",").put_quoted(record.number2);
  line.put(",").put_quoted(record.number3);
  line.put(",").put_quoted(record.email);
  line.put(",").put_quoted(record.extraText);
}

// The second number of ^SCPBW is number3 and the third and fourth are number2, as ^SCPBR brings
// them.
void put_scpbw_parameters(CommandLine& line, const JcpbwRecord& record) {
  put_index(line, record.storageIndex);
  put_number_and_type(line, record.number);
  put_number_and_type(line, record.number3);
  put_number_and_type(line, record.number2);
  put_number_and_type(line, record.number2);
  line.put(",").put_quoted(record.text).put(",1,").put_quoted(record.email);
}

// One shape for the three: a record without number and text deletes its index, any other is
// written.
template <typename Record>
uint32_t write_entry(const char* start, const CommandRow& row, const Record* record,
                     void (*put)(CommandLine&, const Record&)) {
  if (record == nullptr) return PB_ERR_COMMAND;
  CommandLine line(PB_WRITE_LINE_LEN, start);
  if (record->number[0] != '\0' || record->text[0] != '\0') {
    put(line, *record);
  } else if (record->storageIndex != kNoIndex) {
    line.put_number(record->storageIndex);
  } else {
    return PB_ERR_COMMAND;
  }
  return send_line(line, row);
}

}  // namespace
}  // namespace qalt

using namespace qalt;

uint32_t CPBW_Set(const CpbwRecord* pRecord) {
  return write_entry("AT+CPBW=", kCpbwSet, pRecord, put_cpbw_parameters);
}

uint32_t JCPBW_Set(const JcpbwRecord* pRecord) {
  return write_entry("AT+JCPBW=", kVendorWrite, pRecord, put_jcpbw_parameters);
}

uint32_t SCPBW_Set(const JcpbwRecord* pRecord) {
  return write_entry("AT^SCPBW=", kVendorWrite, pRecord, put_scpbw_parameters);
}

uint32_t CSCS_Set(CharsetName tName) {
  CommandLine line(PB_CMD_LINE_LEN, "AT+CSCS=");
  line.put_quoted(tName.acName);
  AtRes tAtRes;
  return exchange(line, kCscsSet, tAtRes) == AT_RES_OK ? PB_OK : PB_ERR_COMMAND;
}
