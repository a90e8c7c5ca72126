/*
 * link.h - the link to the AT server: one command exchanged for one answer, and the receiver of
 * pushed report frames.
 *
 * Conventions of this header:
 *  1. Results. ClientSendCmd: 0 success, 1 failure. send_message: 0 success, -1 failure. Socket
 *     functions: 1 success, -1 failure. Causes go to syslog at priority 7, refused arguments at 3.
 *  2. Ownership. The caller owns every buffer it passes; nothing is kept after the call returns,
 *     except the module identifier and the callback pointer, which are copied.
 *  3. Sizes and units. Every frame has exactly 10248 bytes in the processor's own byte order. Texts
 *     are NUL-terminated bytes. Time-outs are milliseconds.
 *  4. Threads and processes. ClientSendCmd may run in any number of threads at once; each call has
 *     a connection of its own. Exactly one receiver thread per process calls the report callback.
 *     A child that was forked has no receiver, though ClientInit says 0 there, and may not parse
 *     where another thread did at the fork: it calls exec, or the parent had one thread. So
 *     daemon() first, then ClientInit. The library's descriptors do not survive exec; the library
 *     itself is never unmapped (dlclose).
 *  5. Stack. An exchange needs about 11 KB besides the caller's answer frame; the receiver thread
 *     as much, plus what the callback uses, 220 KB where that parses. With the static library and
 *     musl, whose threads have 128 KB, link the program with -Wl,-z,stack-size=524288.
 *  6. Heap. The library asks for none; syslog, which it calls for every command, may (glibc's
 * does).
 *  7. Signals. A signal whose handler was installed without SA_RESTART ends the wait for an answer:
 *     ClientSendCmd fails, and the command may have been carried out. It also cuts short the second
 *     between two attempts to connect: under a timer of 10 ms all 300 are over in 3 seconds.
 * Install handlers with SA_RESTART, or block the signals around the call.
 *  8. Time. No server: about 300 seconds, then failure. A server that is stopped but listens: as
 *     long as it is stopped, once its backlog is full already in the first attempt. One that took
 *     the command: until it answers or ends; qalt-atd answers within ulTimeout and five minutes
 *     from the command's turn on. A client that must not wait looks for the server first:
 *     connect() to QALT_AT_SERVER_PATH on a socket of its own with SOCK_NONBLOCK, once, and
 * close().
 */
#ifndef QALT_AT_LINK_H
#define QALT_AT_LINK_H

#include <pthread.h>
#include <stdint.h>
#include <sys/socket.h>

#include "qalt_at/export.h"

QALT_BEGIN_DECLS

/* Where the AT server listens: a Unix-domain stream socket. */
#define QALT_AT_SERVER_PATH "/tmp/AT_SERVER_MSG"

enum {
  QALT_AT_FRAME_SIZE = 10248,  /* bytes of a frame on the wire */
  QALT_AT_TEXT_SIZE = 10240,   /* bytes of its text, terminating NUL included */
  QALT_AT_PATH_SIZE = 108,     /* bytes of a socket path, terminating NUL included */
  QALT_AT_MODULE_ID_SIZE = 128 /* bytes of g_ModuleID */
};

/*
 * The frame of the AT server link: request, answer and report alike.
 */
typedef struct AtMsg {
  uint16_t usParaLen;                 /* characters of text, without the NUL */
  uint16_t usReserved;                /* carries nothing, sent as 0 */
  uint32_t ulTimeout;                 /* ms the server may wait for the modem's final result */
  char aucDataBuf[QALT_AT_TEXT_SIZE]; /* command line, raw answer or report, NUL-terminated */
} AtMsg;

/*
 * Sends one AT command line and receives the modem's raw answer.
 *
 * pCmd       the command line without a carriage return, such as "AT+CPBS?"; at most 10239
 *            characters.
 * pRes       receives the answer frame; zeros where the server sent less, and always a terminating
 *            NUL in the text. After a failure it holds zeros, except when pCmd is null: then it is
 *            not touched.
 * ulTimeout  how long, in milliseconds, the server may wait for the modem; only carried.
 *
 * Returns 0 when an answer frame, or a part of one or nothing before the server closed, arrived;
 * 1 when pCmd or pRes is null, pCmd is too long (log line at priority 3, nothing is sent), the
 * server did not accept a connection in 300 attempts one second apart, or sending or receiving
 * failed, be it by a signal. After a failed receive nobody knows whether the modem carried the
 * command out: read before a write is sent again. See conventions 7 and 8.
 */
QALT_API int ClientSendCmd(const char* pCmd, AtMsg* pRes, uint32_t ulTimeout);

/*
 * The exchange behind ClientSendCmd, with the same arguments.
 * Returns 0 on success, -1 on any failure.
 */
QALT_API int send_message(const char* pCmd, AtMsg* pRes, uint32_t ulTimeout);

/*
 * Creates a stream socket and connects it to pPath (1 to 107 characters), retrying as
 * qalt_at_socket_connect_rety does. The descriptor is closed by exec.
 *
 * Returns 1 and stores the descriptor in *pSocket; -1 when an argument is null, the path is empty
 * or too long, the socket cannot be created or the connection fails (*pSocket stays as it was).
 */
QALT_API int qalt_at_create_client_socket(const char* pPath, int* pSocket);

/*
 * Connects iSocket to the given address, up to 300 attempts, sleeping one second after each failed
 * one. Returns 0 at the first success, -1 after the last failure.
 */
QALT_API int qalt_at_socket_connect_rety(int iSocket, const struct sockaddr* pAddr,
                                         socklen_t addrLen);

/* Closes iSocket. Returns 1, or -1 with a log line when iSocket is -1. */
QALT_API int qalt_at_close_client_socket(int iSocket);

/*
 * The report callback: runs on the receiver thread, once per received frame. pMsg is valid only
 * during the call and holds the frame as received, zeros where the sender sent less: a sender that
 * fills all 10240 text bytes leaves no terminating NUL. The result is ignored.
 *
 * Which report it is: Bk_Parse_At_Res (parser.h) gives those of the end-flag table as AT_RES_REPORT
 * with their CmdId, whose name _Find_Cmd_By_ID knows; to any other, such as +CREG: or +CIEV:, it
 * says AT_PARSE_NOT_FOUND (19): compare the text between its line ends with the name and a colon.
 */
typedef int (*QaltReportCallback)(AtMsg* pMsg);

/* The module identifier given to ClientInit: the path of the report socket. */
extern QALT_API char g_ModuleID[QALT_AT_MODULE_ID_SIZE];
/* The receiver thread; 0 until one has been started, never cleared. */
extern QALT_API pthread_t recv_thread_id;
/* The report callback or null; stored and read atomically by the library. */
extern QALT_API QaltReportCallback pCallBackFun;

/*
 * Starts the report receiver, once per process: a thread that listens on the Unix-domain stream
 * socket pModuleID and hands each received frame to the report callback. Any file at the path is
 * removed, another program's socket too. Concurrent first calls start one thread. It blocks all
 * signals; the starter's mask stays.
 *
 * pModuleID  path of the report socket, 1 to 107 characters. Its mode is what the process's umask
 *            leaves: choose a directory that only the senders may enter.
 *
 * Returns 0 when the thread was started now or earlier (a later identifier is stored in g_ModuleID
 * and otherwise without effect); 1 when the identifier is null, empty or too long and no receiver
 * runs, or when the thread could not be created (a later call tries again).
 *
 * 0 does not say that the receiver listens. It ends for good, and leaves its socket behind, when
 * the path cannot be bound, and at an accept or a receive that fails with anything but EINTR, such
 * as EMFILE; ClientInit says 0 then, too. Senders that connect to it then go on to succeed. Whoever
 * needs to know sends a frame of its own to the path, and sees it reach the callback. A sender that
 * connects and sends nothing holds up those behind it. qalt_at/report_receiver.hpp has a receiver
 * for C++ without these limits.
 */
QALT_API int ClientInit(const char* pModuleID);

/*
 * Sets the report callback, or removes it with null; takes effect for the next frame. May be called
 * before or after ClientInit. Returns 0.
 */
QALT_API int SetClientProcRecvCallback(QaltReportCallback pCallBack);

/*
 * The receiver thread's body. pPath: the socket path, or null for the path in g_ModuleID. Runs
 * until the socket cannot be set up or accepting or receiving fails with anything but EINTR;
 * returns 0.
 */
QALT_API void* receive_thread(void* pPath);

/* Logs a received frame and passes it to the callback, if one is set; a null frame is ignored. */
QALT_API void parse_msg(AtMsg* pMsg);

/*
 * Creates a listening stream socket at pPath (1 to 107 characters, backlog 500), removing any file
 * there first. Returns 1 and stores the descriptor, which exec closes, in *pSocket; -1 when an
 * argument is null, the path is empty or too long, or socket, bind or listen fails.
 */
QALT_API int qalt_at_create_server_socket(const char* pPath, int* pSocket);

/*
 * Accepts one connection on iServerSocket. Returns 1 and stores its descriptor, which exec closes,
 * in *pSocket; -1 when
 * iServerSocket is -1, pSocket is null or accept fails.
 */
QALT_API int qalt_at_accept_client_request(int iServerSocket, int* pSocket);

QALT_END_DECLS

#endif /* QALT_AT_LINK_H */
