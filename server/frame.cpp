#include "server/frame.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "at/at_line.h"
#include "common/text.h"

namespace qalt::server {
namespace {

using std::chrono::milliseconds;

// For a client that names no time-out, and for one that names one beyond reason.
constexpr milliseconds kDefaultTimeout{10'000};
constexpr milliseconds kLongestTimeout{600'000};

bool is_control(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

}  // namespace

static_assert(sizeof(AtMsg) == QALT_AT_FRAME_SIZE && offsetof(AtMsg, ulTimeout) == 4 &&
              offsetof(AtMsg, aucDataBuf) == 8);

FrameRequest read_request(const AtMsg& frame) {
  FrameRequest request;
  const size_t length = bounded_length(frame.aucDataBuf, sizeof frame.aucDataBuf);
  const std::string_view command(frame.aucDataBuf, length);
  if (length == sizeof frame.aucDataBuf) {
    request.refusal = "command without an end";
  } else if (!at::starts_with_nocase(command, "AT")) {
    request.refusal = "not an AT command";
  } else if (std::any_of(command.begin(), command.end(), is_control)) {
    request.refusal = "control character in the command";
  } else {
    request.command = command;
  }
  const milliseconds asked(frame.ulTimeout);
  request.timeout = asked == milliseconds(0) ? kDefaultTimeout : std::min(asked, kLongestTimeout);
  return request;
}

void fill_frame(AtMsg& frame, std::string_view text) {
  std::memset(&frame, 0, sizeof frame);
  frame.usParaLen = static_cast<uint16_t>(
      copy_text(frame.aucDataBuf, sizeof frame.aucDataBuf, text.data(), text.size()));
}

}  // namespace qalt::server
