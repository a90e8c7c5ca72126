// engine.h - what the parts of the phonebook engine share: the settings, the discovered
// configuration and the rules that follow from them. Process-wide and unguarded: one phonebook call
// at a time.
#ifndef QALT_PB_ENGINE_H_
#define QALT_PB_ENGINE_H_

#include "common/log.h"
#include "qalt_at/commands.h"
#include "qalt_at/phonebook.h"

namespace qalt {

// Every file of the engine logs under this name.
inline constexpr char kLogModule[] = "lib_pb";

// The only storage type served: the SIM phonebook.
constexpr int kSimStorage = 0;

// What the last discovery found; a member that a later one does not set keeps its value.
extern PbParam g_module_param;

inline bool on_platform(int32_t code) {
  return g_phone_book_currentPlatform == code;
}

// Which command family reads, writes and deletes entries.
inline bool uses_vendor_family() {
  const PbType& type = g_module_param.PbType;
  return on_platform(PB_PLATFORM_4) || (on_platform(PB_PLATFORM_1) && type.IsSupportExtend == 1) ||
         (type.IsSupportExtend == 1 && type.IsSupportUSim == 1);
}

// Whether an entry command is surrounded by a switch of the modem's character set.
inline bool switches_charset() {
  const PbType& type = g_module_param.PbType;
  return type.IsSupportExtend == 0 || type.IsSupportJCPBM == 1;
}

// Modes of _SetPbCharactorSet that the engine uses.
constexpr int kCharsetUcs2 = 1;
constexpr int kCharsetRestore = 0;

}  // namespace qalt

#endif  // QALT_PB_ENGINE_H_
