// write_turn.h - processes of this tool take turns to look whether an index is free and write
// there.
#ifndef QALT_CLI_WRITE_TURN_H_
#define QALT_CLI_WRITE_TURN_H_

namespace qalt::cli {

// From its beginning to its end no other qalt-pb in front of the same AT server has a turn; it
// waits for that, up to half a minute for each who has one before it, five minutes in all or until
// the user interrupts, and then goes on
// without: the look before a write and the read-back after it are there in any case, for other
// programs' writes.
//
// The turn is a socket in Linux's abstract namespace, named after the server's: a dead process
// leaves nothing behind, and those who wait are connections to it, which hear of its end at once.
class WriteTurn {
 public:
  WriteTurn();
  ~WriteTurn();
  WriteTurn(const WriteTurn&) = delete;
  WriteTurn& operator=(const WriteTurn&) = delete;

  // Whoever holds a turn for that long may hold it for good: there is no second waiting.
  static inline int patience_ms = 30000;

 private:
  int socket_;
};

}  // namespace qalt::cli

#endif  // QALT_CLI_WRITE_TURN_H_
