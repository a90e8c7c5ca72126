// run.h - one seed's world, from its beginning to its end.
#ifndef QALT_TESTS_SIMULATION_RUN_H_
#define QALT_TESTS_SIMULATION_RUN_H_

#include <cstdint>
#include <functional>
#include <string>

namespace qalt::simulation {

struct RunReport {
  uint64_t commands = 0;
  int64_t seconds = 0;  // simulated
  std::string scenario;
};

// `wrong` is called with what must not be and the transcript up to there, and does not return.
RunReport run_seed(uint64_t seed,
                   const std::function<void(const std::string& what, const std::string& scenario,
                                            const std::string& transcript)>& wrong);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_RUN_H_
