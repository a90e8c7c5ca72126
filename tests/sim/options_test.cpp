// The options and the contacts file.
#include "sim/options.h"

#include <gtest/gtest.h>

#include <fstream>

#include "sim/modem.h"
#include "tests/link/private_server.h"

namespace qalt::sim {
namespace {

Config parsed(const std::string& line) {
  CLI::App app;
  Options options;
  add_options(app, options);
  app.parse(line);
  return make_config(options);
}

// The configuration with a contacts file of the given text.
Config with_contacts(const std::string& text) {
  const test::PrivateDirectory directory;
  std::ofstream(directory.file("contacts")) << text;
  return parsed("--sim-size 5 --sim-name-length 4 --sim-contacts " + directory.file("contacts"));
}

// Most options are used, and their effects seen, by the tests of the programs.
TEST(SimOptions, ReachTheConfiguration) {
  const Config config = parsed(
      "--sim-size 9 --sim-no-lengths --sim-busy 3 --sim-delay 40 "
      "--sim-fault 1:AT:never --sim-fault \"*:AT+CSQ:report-after=RING\"");
  EXPECT_EQ(config.size, 9);
  EXPECT_FALSE(config.send_lengths);
  EXPECT_EQ(config.faults.busy, 3u);
  EXPECT_EQ(config.faults.delay.count(), 40);
  ASSERT_EQ(config.faults.rules.size(), 2u);
  EXPECT_EQ(config.faults.rules[1].text, "RING");
  EXPECT_THROW(parsed("--sim-profile other"), CLI::ParseError);
  EXPECT_THROW(parsed("--sim-size 0"), CLI::ParseError);
  EXPECT_THROW(parsed("--sim-fault nonsense"), std::invalid_argument);
}

TEST(SimOptions, ContactsFromAFile) {
  const Modem modem(with_contacts(R"({"SM": [{"number": "+49", "name": "Zoë"},
                                             {"index": 4, "name": "中"},
                                             {"number": "5", "type": 161}],
                                      "ME": [{"index": 2, "number": "1", "email": "a@b"}]})"));
  const State& state = modem.state();
  EXPECT_EQ(state.sim.used(), 3);
  EXPECT_EQ(state.sim.find(1)->name, u"Zoë");
  EXPECT_EQ(state.sim.find(1)->type, kTypeInternational);
  EXPECT_EQ(state.sim.find(5)->type, 161);
  EXPECT_EQ(state.device.find(2)->email, "a@b");
}

TEST(SimOptions, ContactsFileErrorsSayWhere) {
  const std::pair<const char*, const char*> rows[] = {
      {"{", "parse error"},
      {"3", "neither an object nor an array"},
      {R"({"FD": []})", "\"FD\" is no storage"},
      {R"({"SM": {}})", "SM is not an array"},
      {R"([1])", "SM entry 1: is not an object"},
      {R"([{}, {"index": 6}])", "SM entry 2: index 6 is outside 1 to 5"},
      {R"([{}, {"index": 1}])", "SM entry 2: index 1 stands twice"},
      {R"([{"nmae": "x"}])", "SM entry 1: \"nmae\" is no key"},
      {R"([{"number": 5}])", "\"number\" is not a text"},
      {R"([{"index": "5"}])", "\"index\" is not a whole number"},
      {R"([{"name": "five5"}])", "more than 4 characters"},
  };
  for (const auto& [text, said] : rows) {
    try {
      with_contacts(text);
      ADD_FAILURE() << text;
    } catch (const std::exception& error) {
      EXPECT_NE(std::string(error.what()).find(said), std::string::npos) << error.what();
    }
  }
  EXPECT_THROW(parsed("--sim-contacts /nowhere/at/all"), std::runtime_error);
}

}  // namespace
}  // namespace qalt::sim
