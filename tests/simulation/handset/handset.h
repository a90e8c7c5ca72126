// handset.h - a modem by the standards alone: ITU-T V.250, 3GPP TS 27.007, TS 27.005, TS 23.038.
#ifndef QALT_TESTS_SIMULATION_HANDSET_HANDSET_H_
#define QALT_TESTS_SIMULATION_HANDSET_HANDSET_H_

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/simulation/handset/options.h"
#include "tests/simulation/handset/phone.h"
#include "tests/simulation/machine.h"

namespace qalt::simulation {

class Handset : public Machine {
 public:
  explicit Handset(Options options);
  void receive(std::string_view bytes) override;
  std::vector<Said> take() override;
  void power_cycle() override;
  [[nodiscard]] const std::map<int, Stored>& contacts() const override;
  void change_by_itself(int index, std::optional<Stored> contact) override;

 private:
  // Where in "AT", body, S3 the terminal is.
  enum class Part { kNothing, kA, kBody };

  void receive(char c);
  void edit();
  void run_line();
  Result run_next(std::string_view& body);
  void say_lines(const Lines& lines);
  void end_line(Result result);
  void say(std::string bytes, bool ends_command);
  void flush_echo();
  [[nodiscard]] char end_of_line() const;

  Phone phone_;
  Part part_ = Part::kNothing;
  std::string body_;  // kept behind its end, for "A/"
  bool too_long_ = false;
  std::string echo_;                         // not yet in said_
  std::chrono::milliseconds answer_time_{};  // to be waited before the next piece
  std::vector<Said> said_;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_HANDSET_H_
