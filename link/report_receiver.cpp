// The report receiver: one thread for the process, which hands pushed frames to the callback.
#include <errno.h>
#include <pthread.h>
#include <signal.h>

#include "common/held_lock.h"
#include "common/log.h"
#include "common/text.h"
#include "link/errno_keeper.h"
#include "link/frame_io.h"
#include "qalt_at/link.h"

constinit char g_ModuleID[QALT_AT_MODULE_ID_SIZE] = {};
constinit pthread_t recv_thread_id{};
constinit QaltReportCallback pCallBackFun = nullptr;

namespace {

constexpr char kLogModule[] = "at_com";

// Makes concurrent first calls of ClientInit start one thread.
constinit pthread_mutex_t g_init_mutex = PTHREAD_MUTEX_INITIALIZER;

// The path that the receiver was started with: a later ClientInit overwrites g_ModuleID, possibly
// before the new thread has read it. Written only while no receiver runs.
constinit char g_receiver_path[QALT_AT_PATH_SIZE] = {};

bool fits_path(const char* identifier) {
  return identifier != nullptr && identifier[0] != '\0' &&
         qalt::bounded_length(identifier, QALT_AT_PATH_SIZE) < QALT_AT_PATH_SIZE;
}

// A new thread has its starter's signal mask. The receiver takes no signals: they are for threads
// that know of them, and one would interrupt the frame that it receives.
int create_receiver_thread() {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  const int error = pthread_create(&recv_thread_id, nullptr, receive_thread, g_receiver_path);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return error;
}

bool start_receiver(const char* identifier) {
  qalt::copy_text(g_receiver_path, sizeof g_receiver_path, identifier,
                  qalt::bounded_length(identifier, sizeof g_receiver_path));
  if (create_receiver_thread() != 0) {
    recv_thread_id = {};
    QALT_LOG_DEBUG("at_com: create receive thread error!");
    return false;
  }
  QALT_LOG_DEBUG("at_com: create receive thread success!");
  return true;
}

int init_receiver(const char* identifier) {
  const bool usable = fits_path(identifier);
  if (usable) {
    qalt::copy_text(g_ModuleID, sizeof g_ModuleID, identifier,
                    qalt::bounded_length(identifier, sizeof g_ModuleID));
  }
  if (recv_thread_id != pthread_t{}) return 0;
  if (!usable) {
    QALT_LOG_ERROR("module identifier is null, empty or longer than %d characters\n",
                   QALT_AT_PATH_SIZE - 1);
    return 1;
  }
  return start_receiver(identifier) ? 0 : 1;
}

// Waits for the next connection and takes its frame. False with errno set when either failed.
bool next_frame(int server_socket, AtMsg* frame) {
  int connection = -1;
  if (qalt_at_accept_client_request(server_socket, &connection) != 1) {
    const qalt::ErrnoKeeper cause;
    QALT_LOG_DEBUG("can not accept libprefs client.");
    return false;
  }
  const bool received = qalt::receive_frame(connection, frame);
  const qalt::ErrnoKeeper cause;
  qalt_at_close_client_socket(connection);
  if (!received) QALT_LOG_DEBUG("receive client data error !\n");
  return received;
}

// Hands on every frame until accepting or receiving fails with anything but an interruption.
void serve(int server_socket) {
  AtMsg frame;
  for (;;) {
    if (next_frame(server_socket, &frame)) {
      // A frame that is full of text has no NUL.
      QALT_LOG_DEBUG("received data from client is:%.*s", QALT_AT_TEXT_SIZE, frame.aucDataBuf);
      parse_msg(&frame);
    } else if (errno != EINTR) {
      return;
    }
  }
}

}  // namespace

int ClientInit(const char* pModuleID) {
  const qalt::HeldLock lock(g_init_mutex);
  return init_receiver(pModuleID);
}

int SetClientProcRecvCallback(QaltReportCallback pCallBack) {
  __atomic_store_n(&pCallBackFun, pCallBack, __ATOMIC_RELEASE);
  return 0;
}

void* receive_thread(void* pPath) {
  const char* path = static_cast<const char*>(pPath);
  char module_id[sizeof g_ModuleID];
  if (path == nullptr) {
    qalt::copy_text(module_id, sizeof module_id, g_ModuleID,
                    qalt::bounded_length(g_ModuleID, sizeof g_ModuleID));
    path = module_id;
  }
  int server_socket = -1;
  if (qalt_at_create_server_socket(path, &server_socket) != 1) {
    QALT_LOG_DEBUG("can not create at server socket.");
    return nullptr;
  }
  serve(server_socket);
  return nullptr;
}

void parse_msg(AtMsg* pMsg) {
  if (pMsg == nullptr) return;
  QALT_LOG_DEBUG("usParaLen %d,aucDataBuf %.*s \n", pMsg->usParaLen, QALT_AT_TEXT_SIZE,
                 pMsg->aucDataBuf);
  const QaltReportCallback callback = __atomic_load_n(&pCallBackFun, __ATOMIC_ACQUIRE);
  if (callback != nullptr) callback(pMsg);
}
