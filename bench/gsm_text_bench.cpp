// 160 characters of each language from GSM codes to UCS2 and back.
#include <cstring>
#include <string>

#include "bench/floors.h"
#include "bench/peers.h"
#include "bench/rows.h"
#include "qalt_at/text.h"

namespace {

constexpr uint32_t kCharacters = 160;
using Codes = std::basic_string<uint8_t>;

// Messages as they are written: letters, some of the language's own and some with an escape.
const std::wstring kDefault =
    L"Grüße aus Köln an Zoé & Søren! Der Flug kostet 249 € [oder 198 £], Gate {B7}. "
    L"ΔΦ: oggi là ~ mañana, señor Åberg. Call +49 30 123456 or mail to: anna@example.org? Yes!!!";
const std::wstring kSpanish =
    L"¿Dónde está el teléfono de José? Mañana llegaré a Málaga a las 10:45, el billete cuesta 35 "
    L"€. "
    L"Avísame cuando salgas [terminal 2], por favor. ¡Feliz cumpleaños, Ángela! ¿Qué más te digo?";
const std::wstring kPortuguese =
    L"A reunião de amanhã começa às 9:30 na estação de São João. O café é por conta da Conceição: "
    L"não esqueça o cartão {nº 42}, são 18 € por pessoa. Até já, você é ótimo! Ω é a última letra.";

struct Language {
  const char* name;
  int32_t id;
  const std::wstring& text;
  const uint16_t (&decode)[128];
  const uint8_t (&encode)[256];
};

Codes encoded(const std::wstring& text, int32_t language) {
  Codes codes(2 * text.size(), 0);
  codes.resize(CODE_Ucs2ToGsm7(codes.data(), text.data(), uint32_t(text.size()), language));
  return codes;
}

std::wstring decoded(const Codes& codes, int32_t language) {
  std::wstring text(codes.size(), L'#');
  text.resize(CODE_Gsm7ToUcs2(text.data(), codes.data(), uint32_t(codes.size()), language));
  return text;
}

// As libGammu has it.
Codes ucs2_bytes(const std::wstring& text) {
  Codes bytes;
  for (const wchar_t character : text + L'\0') {
    bytes += static_cast<uint8_t>(character >> 8);
    bytes += static_cast<uint8_t>(character);
  }
  return bytes;
}

// Inputs and outputs side by side: in less than a page, no store meets the low address bits of a
// load that is under way.
struct Buffers {
  wchar_t text[kCharacters];
  uint8_t codes[2 * kCharacters];
  wchar_t decoded[2 * kCharacters];
  uint8_t encoded[2 * kCharacters];
};

uint8_t g_bytes[4 * kCharacters];

// libGammu has the default alphabet alone: it is given that language's text beside the others too.
struct Gammu {
  std::wstring text;
  Codes codes = encoded(text, CODEC_LANG_DEFAULT);
  Codes bytes = ucs2_bytes(text);

  void decode() const { DecodeDefault(g_bytes, codes.data(), codes.size(), 1, nullptr); }
  size_t encode() const {
    size_t count = text.size();
    EncodeDefault(g_bytes, bytes.data(), &count, 1, nullptr);
    return count;
  }
};

void rows(const Language& language, const Gammu& gammu) {
  const std::wstring text = language.text.substr(0, kCharacters);
  const Codes codes = encoded(text, language.id);
  const char* const name = language.name;
  bench::require(text.size() == kCharacters && decoded(codes, language.id) == text, name);
  static Buffers all_buffers[CODEC_LANG_PORTUGUESE + 1];
  Buffers& at = all_buffers[language.id];
  text.copy(at.text, kCharacters);
  codes.copy(at.codes, 2 * kCharacters);
  const auto count = uint32_t(codes.size());
  const std::string peer =
      language.id == CODEC_LANG_DEFAULT ? "libGammu" : "libGammu (default alphabet)";

  const std::string decode = "160 characters GSM to UCS2: " + std::string(name);
  bench::side(
      decode, "ours", kCharacters,
      [=, &at] { CODE_Gsm7ToUcs2(at.decoded, at.codes, count, language.id); }, "peer<=1 floor<=4");
  bench::side(decode, peer, kCharacters, [gammu] { gammu.decode(); });
  bench::side(decode, "floor", kCharacters,
              [=, &at] { floors::decode(language.decode, at.codes, at.decoded, kCharacters); });

  const std::string encode = "160 characters UCS2 to GSM: " + std::string(name);
  bench::side(
      encode, "ours", kCharacters,
      [=, &at] { CODE_Ucs2ToGsm7(at.encoded, at.text, kCharacters, language.id); },
      "peer<=0.1 floor<=4");
  bench::side(encode, peer, kCharacters, [gammu] { gammu.encode(); });
  bench::side(encode, "floor", kCharacters,
              [=, &at] { floors::encode(language.encode, at.text, at.encoded, kCharacters); });
}

}  // namespace

int main(int argc, char** argv) {
  const Gammu gammu{kDefault.substr(0, kCharacters)};
  gammu.decode();
  bench::require(std::memcmp(g_bytes, gammu.bytes.data(), gammu.bytes.size()) == 0, "decode");
  bench::require(Codes(g_bytes, gammu.encode()) == gammu.codes, "encode");
  for (const Language& language :
       {Language{"default", CODEC_LANG_DEFAULT, kDefault, GsmToUcs2_DefaultAlphabet,
                 Ucs2_To_Gsm7_Alphabet_ASC},
        Language{"Spanish", CODEC_LANG_SPANISH, kSpanish, Spanish_Gsm7_To_Ucs2_Alphabet,
                 Spanish_Ucs2_To_Gsm7_Alphabet_ASC},
        Language{"Portuguese", CODEC_LANG_PORTUGUESE, kPortuguese, Portuguese_Gsm7_To_Ucs2_Alphabet,
                 Portuguese_Ucs2_To_Gsm7_Alphabet_ASC}}) {
    rows(language, gammu);
  }
  return bench::measure(argc, argv);
}
