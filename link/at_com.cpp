// The exchange of one command for one answer with the AT server, one connection each.
#include <errno.h>

#include <cstddef>
#include <cstring>

#include "common/log.h"
#include "common/text.h"
#include "link/frame_io.h"
#include "qalt_at/link.h"

static_assert(sizeof(AtMsg) == QALT_AT_FRAME_SIZE);
static_assert(offsetof(AtMsg, usParaLen) == 0);
static_assert(offsetof(AtMsg, usReserved) == 2);
static_assert(offsetof(AtMsg, ulTimeout) == 4);
static_assert(offsetof(AtMsg, aucDataBuf) == 8);

namespace {

constexpr char kLogModule[] = "at_com";

// Builds the request, every byte defined; false when the command does not fit.
bool build_request(AtMsg* request, const char* command, uint32_t timeout) {
  const size_t length = qalt::bounded_length(command, sizeof request->aucDataBuf);
  if (length == sizeof request->aucDataBuf) return false;
  request->usParaLen = static_cast<uint16_t>(length);
  request->usReserved = 0;
  request->ulTimeout = timeout;
  qalt::copy_text(request->aucDataBuf, sizeof request->aucDataBuf, command, length);
  std::memset(request->aucDataBuf + length, 0, sizeof request->aucDataBuf - length);
  return true;
}

// One request and one answer over a connection that stands.
bool exchange_frames(int connection, const AtMsg& request, AtMsg* answer) {
  if (!qalt::send_frame(connection, request)) {
    QALT_LOG_DEBUG("send item_id failed\n");
    return false;
  }
  if (!qalt::receive_frame(connection, answer)) {
    QALT_LOG_DEBUG("receive client data error !\n");
    return false;
  }
  answer->aucDataBuf[sizeof answer->aucDataBuf - 1] = '\0';  // a frame may be full of text
  return true;
}

bool exchange(const char* command, AtMsg* answer, uint32_t timeout) {
  AtMsg request;
  if (!build_request(&request, command, timeout)) {
    QALT_LOG_ERROR("command is longer than %d characters\n", QALT_AT_TEXT_SIZE - 1);
    return false;
  }
  int connection = -1;
  if (qalt_at_create_client_socket(QALT_AT_SERVER_PATH, &connection) != 1) {
    QALT_LOG_DEBUG("create connect socket failed,errno is %d\n", errno);
    return false;
  }
  const bool exchanged = exchange_frames(connection, request, answer);
  qalt_at_close_client_socket(connection);
  return exchanged;
}

}  // namespace

int send_message(const char* pCmd, AtMsg* pRes, uint32_t ulTimeout) {
  if (pCmd == nullptr || pRes == nullptr) return -1;
  if (exchange(pCmd, pRes, ulTimeout)) return 0;
  std::memset(pRes, 0, sizeof *pRes);
  return -1;
}

int ClientSendCmd(const char* pCmd, AtMsg* pRes, uint32_t ulTimeout) {
  return send_message(pCmd, pRes, ulTimeout) == 0 ? 0 : 1;
}
