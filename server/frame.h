// frame.h - the frames of the client protocol: what a request asks for, and how a text is sent.
#ifndef QALT_SERVER_FRAME_H_
#define QALT_SERVER_FRAME_H_

#include <chrono>
#include <string>
#include <string_view>

#include "qalt_at/link.h"

namespace qalt::server {

struct FrameRequest {
  std::string command;  // empty when the request is refused
  std::chrono::milliseconds timeout{0};
  std::string refusal;  // why, for the log
};

// Reads a request. The command is what stands before the first NUL; nothing else of the frame but
// the time-out is looked at. Refused are an empty command, one without a NUL, one that does not
// begin with "AT" (the modem would not answer it) and one that holds a control character: a
// carriage return would make it two commands, Ctrl-Z or escape would end or cancel another's input.
FrameRequest read_request(const AtMsg& frame);

// A frame with `text`, which fits; zeros behind it.
void fill_frame(AtMsg& frame, std::string_view text);

}  // namespace qalt::server

#endif  // QALT_SERVER_FRAME_H_
