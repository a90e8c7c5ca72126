// The switch of the modem's character set around an entry command.
#include <cstring>

#include "common/text.h"
#include "pb/engine.h"

namespace qalt {
namespace {

const char* charset_name(int mode) {
  switch (mode) {
    case kCharsetUcs2:
      return "UCS2";
    case 2:
      return "UCS2_0X81";
    default:
      return on_platform(PB_PLATFORM_4) ? "GSM" : "IRA";
  }
}

}  // namespace
}  // namespace qalt

using namespace qalt;

int _SetPbCharactorSet(int mode) {
  CharsetName record = {};
  const char* name = charset_name(mode);
  copy_text(record.acName, sizeof record.acName, name, std::strlen(name));
  return CSCS_Set(record) == PB_OK ? 1 : 0;
}
