// line.h - the serial line between the server and a modem, which does to what it carries what lines
// and modems do: answers come late, cut, in pieces or never, the line is hung up, and reports stand
// before, inside and behind answers.
#ifndef QALT_TESTS_SIMULATION_LINE_H_
#define QALT_TESTS_SIMULATION_LINE_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/simulation/chance.h"
#include "tests/simulation/machine.h"
#include "tests/simulation/world.h"

namespace qalt::simulation {

// One in so many command lines; 0: none.
struct LineFaults {
  int late = 0;
  int never = 0;         // carried out, and not answered
  int cut = 0;           // the end of the answer is lost
  int hang_up = 0;       // before the command, behind it, or in the middle of its answer
  int restart = 0;       // the modem begins anew with the port open, in place of it or behind it
  int dead = 0;          // nothing is answered for a minute or two
  int pieces = 0;        // the answer comes in several reads
  int reports = 0;       // one or more beside or inside the answer
  int silence = 0;       // minutes between reports at rest, on average
  std::string stubborn;  // lines that begin so are never answered
};

// Whether the answer to a line has texts in it, of which nobody can tell a report.
bool has_free_text(std::string_view line);

// What a modem said to one command line, and what the line made of it.
struct Exchange {
  std::string answer;    // whole, without echo and reports
  bool touched = false;  // it did not come, or late, or not whole
};

// Who is at the other end.
class Terminal {
 public:
  virtual ~Terminal() = default;
  // `reports`: those whose last byte comes with these.
  virtual void received(std::string_view bytes, const std::vector<std::string>& reports) = 0;
  virtual void hung_up() = 0;
};

class Line {
 public:
  virtual ~Line() = default;
  virtual void connect(Terminal& terminal) = 0;
  // False while the modem is away.
  virtual bool open() = 0;
  virtual void close() = 0;
  // What the server sends: a command line with its CR, which the modem carries out at once, or a
  // character alone.
  virtual std::shared_ptr<Exchange> write(std::string_view bytes) = 0;
};

std::unique_ptr<Line> new_line(World& world, Machine& machine, Chance chance,
                               const LineFaults& faults);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_LINE_H_
