// The Unix-domain stream sockets of the link, for both sides of a connection.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>

#include "common/log.h"
#include "common/text.h"
#include "link/errno_keeper.h"
#include "qalt_at/link.h"

static_assert(sizeof(sockaddr_un) == 110);
static_assert(offsetof(sockaddr_un, sun_path) == 2);
static_assert(sizeof(sockaddr_un::sun_path) == QALT_AT_PATH_SIZE);

namespace {

constexpr char kLogModule[] = "libqalt_at";
constexpr int kConnectAttempts = 300;
constexpr unsigned kSecondsBetweenAttempts = 1;
constexpr int kBacklog = 500;

// A socket is this process's: a program that it becomes, or starts, does not inherit it. Between
// the two calls another thread's fork may get it; the flag that makes it one call is younger than
// POSIX.
int own(int descriptor) {
  if (descriptor != -1) fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  return descriptor;
}

// Fills the address, whole; false, with a log line, when the path does not fit. An empty one would
// be a name that the file system does not guard.
bool fill_address(sockaddr_un* address, const char* path) {
  *address = {};
  const size_t length = qalt::bounded_length(path, sizeof address->sun_path);
  if (length == 0) {
    QALT_LOG_ERROR("socket path is empty\n");
    return false;
  }
  if (length == sizeof address->sun_path) {
    QALT_LOG_ERROR("socket path is longer than %d characters\n", QALT_AT_PATH_SIZE - 1);
    return false;
  }
  address->sun_family = AF_UNIX;
  qalt::copy_text(address->sun_path, sizeof address->sun_path, path, length);
  return true;
}

const sockaddr* generic(const sockaddr_un* address) {
  return reinterpret_cast<const sockaddr*>(address);
}

// A connected socket, or -1. errno tells why a connection failed.
int connected_socket(const char* path) {
  sockaddr_un address;
  if (!fill_address(&address, path)) return -1;
  const int descriptor = own(socket(AF_UNIX, SOCK_STREAM, 0));
  if (descriptor == -1) return -1;
  if (qalt_at_socket_connect_rety(descriptor, generic(&address), sizeof address) == 0) {
    return descriptor;
  }
  const qalt::ErrnoKeeper cause;
  close(descriptor);
  return -1;
}

// Binds the socket and lets it listen; false, with a log line, when one fails.
bool listen_at(int descriptor, const sockaddr_un& address, const char* path) {
  if (bind(descriptor, generic(&address), sizeof address) == -1) {
    QALT_LOG_DEBUG("can not bind socket :%s !", path);
    return false;
  }
  if (listen(descriptor, kBacklog) == -1) {
    QALT_LOG_DEBUG("can not liscen socket :%s !", path);
    return false;
  }
  return true;
}

}  // namespace

int qalt_at_create_client_socket(const char* pPath, int* pSocket) {
  if (pPath == nullptr || pSocket == nullptr) return -1;
  const int descriptor = connected_socket(pPath);
  if (descriptor == -1) {
    const qalt::ErrnoKeeper cause;
    QALT_LOG_DEBUG("can not connect to:%s\n", pPath);
    return -1;
  }
  *pSocket = descriptor;
  return 1;
}

int qalt_at_socket_connect_rety(int iSocket, const struct sockaddr* pAddr, socklen_t addrLen) {
  if (pAddr == nullptr) return -1;
  for (int attempt = 0; attempt < kConnectAttempts; ++attempt) {
    if (connect(iSocket, pAddr, addrLen) == 0) return 0;
    const qalt::ErrnoKeeper cause;
    sleep(kSecondsBetweenAttempts);
  }
  return -1;
}

int qalt_at_close_client_socket(int iSocket) {
  if (iSocket == -1) {
    QALT_LOG_DEBUG("client_socketfd  error!");
    return -1;
  }
  close(iSocket);
  return 1;
}

int qalt_at_create_server_socket(const char* pPath, int* pSocket) {
  QALT_LOG_DEBUG("qalt_server_path_id is:%s", pPath != nullptr ? pPath : "(null)");
  if (pPath == nullptr) {
    QALT_LOG_DEBUG("qalt_server_path_id is null");
    return -1;
  }
  sockaddr_un address;
  if (pSocket == nullptr || !fill_address(&address, pPath)) return -1;
  unlink(pPath);
  const int descriptor = own(socket(AF_UNIX, SOCK_STREAM, 0));
  if (descriptor == -1) {
    QALT_LOG_DEBUG("can not create socket :%s!", pPath);
    return -1;
  }
  QALT_LOG_DEBUG("qalt_server_addr.sun_path:%s", address.sun_path);
  if (!listen_at(descriptor, address, pPath)) {
    close(descriptor);
    return -1;
  }
  *pSocket = descriptor;
  return 1;
}

int qalt_at_accept_client_request(int iServerSocket, int* pSocket) {
  if (iServerSocket == -1) {
    QALT_LOG_DEBUG("server_addr error");
    return -1;
  }
  if (pSocket == nullptr) return -1;
  socklen_t no_length = 0;  // nobody asks for the peer's address
  const int descriptor = own(accept(iServerSocket, nullptr, &no_length));
  if (descriptor == -1) {
    const qalt::ErrnoKeeper cause;
    QALT_LOG_DEBUG("can not accept client !");
    return -1;
  }
  *pSocket = descriptor;
  return 1;
}
