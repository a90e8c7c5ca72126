// frame_io.h - whole frames over a connected stream socket.
#ifndef QALT_LINK_FRAME_IO_H_
#define QALT_LINK_FRAME_IO_H_

#include "qalt_at/link.h"

namespace qalt {

// Sends the whole frame: a part of one would be another request. A peer that has closed is a
// failure like any other, never a signal.
bool send_frame(int connection, const AtMsg& frame);

// Takes what the peer sends before it closes, at most a frame, and puts zeros behind it. False,
// with errno set, when receiving fails.
bool receive_frame(int connection, AtMsg* frame);

}  // namespace qalt

#endif  // QALT_LINK_FRAME_IO_H_
