// One exchange of a command for an answer; its floor: the bare system calls that it cannot avoid,
// with the same frames and the same server.
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "qalt_at/link.h"

namespace {

std::string g_path;

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

// Answers every frame with a frame, for the life of the process.
void serve(int listening) {
  AtMsg frame;
  for (;;) {
    const int client = accept(listening, nullptr, nullptr);
    if (client == -1) return;
    if (recv(client, &frame, sizeof frame, MSG_WAITALL) == sizeof frame) {
      std::strcpy(frame.aucDataBuf, "\r\nOK\r\n");
      send(client, &frame, sizeof frame, MSG_NOSIGNAL);
    }
    close(client);
  }
}

void start_server() {
  if (!g_path.empty()) return;
  char folder[] = "/tmp/link_bench.XXXXXX";
  if (mkdtemp(folder) == nullptr) std::abort();
  g_path = std::string(folder) + "/socket";
  const int listening = socket(AF_UNIX, SOCK_STREAM, 0);
  const sockaddr_un address = address_of(g_path);
  if (bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listening, 16) != 0) {
    std::abort();
  }
  std::thread(serve, listening).detach();
  std::atexit([] {
    unlink(g_path.c_str());
    rmdir(g_path.substr(0, g_path.rfind('/')).c_str());
  });
}

void client_send_cmd(benchmark::State& state) {
  start_server();
  static AtMsg answer;
  for (auto _ : state) {
    if (ClientSendCmd("AT+CPBS?", &answer, 5000) != 0) state.SkipWithError("no exchange");
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel("floor<=1.05");
}
BENCHMARK(client_send_cmd)->Name("one exchange/ours")->UseRealTime();

void bare_system_calls(benchmark::State& state) {
  start_server();
  static AtMsg request;
  static AtMsg answer;
  const sockaddr_un address = address_of(g_path);
  for (auto _ : state) {
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        send(fd, &request, sizeof request, 0) != sizeof request ||
        recv(fd, &answer, sizeof answer, MSG_WAITALL) != sizeof answer) {
      state.SkipWithError("no exchange");
    }
    close(fd);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(bare_system_calls)->Name("one exchange/floor")->UseRealTime();

}  // namespace

// The library's fixed path leads to this program's own server.
extern "C" int connect(int fd, const sockaddr* given, socklen_t length) {
  sockaddr_un address;
  if (length == sizeof address) {
    std::memcpy(&address, given, sizeof address);
    if (std::strcmp(address.sun_path, QALT_AT_SERVER_PATH) == 0) {
      address = address_of(g_path);
      return static_cast<int>(syscall(SYS_connect, fd, &address, sizeof address));
    }
  }
  return static_cast<int>(syscall(SYS_connect, fd, given, length));
}
