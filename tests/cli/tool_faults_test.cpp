// qalt-pb end to end against what goes wrong: no server, bad files, modems that misbehave, Ctrl-C.
#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/cli/private_tmp.h"

namespace {

using nlohmann::json;
using test::contents;
using test::Ran;
using Tool = test::Tool;

bool said(const Ran& ran, const std::string& text) {
  return ran.err.find(text) != ran.err.npos;
}

TEST_F(Tool, WithoutAServer) {
  for (const auto& command : std::vector<std::vector<std::string>>{
           {"list"}, {"add", "--name", "A"}, {"clear", "--yes"}, {"at", "AT"}}) {
    const Ran ran = run(command);
    EXPECT_EQ(3, ran.status);
    EXPECT_TRUE(said(ran, "start one: qalt-atd")) << ran.err;
  }
  const json error = json::parse(run({"--json", "list"}).err);
  EXPECT_EQ(3, error["error"]["code"]);
  EXPECT_EQ(2, run({"frobnicate"}).status);
  EXPECT_EQ(2, json::parse(run({"--json", "set", "1"}).err)["error"]["code"]);
}

TEST_F(Tool, ReadsThroughFaults) {
  const std::string too_long = "answer=\\r\\n+CME ERROR: 24\\r\\n";
  const std::string error = "answer=\\r\\nERROR\\r\\n";
  const std::vector<std::vector<std::string>> all_fifteen = {
      {"--sim-fault", "1-3:AT+CPBR=1,:" + too_long},
      {"--sim-fault", "*:AT+CPBR=1,2:" + error},  // two steps of different sizes
      {"--sim-refuse", "4", "--sim-empty", "error"},
      {"--sim-split", "--sim-echo"},
      {"--sim-fault", "1-9:AT+CPBR=:report-inside=+CREG: 1"},
      {"--sim-cmee", "0", "--sim-empty", "22"},
      {"--sim-cmee", "2", "--sim-empty", "22"},
      {"--sim-base", "0"},
      {"--sim-base", "5", "--sim-no-lengths"},
      {"--sim-plain-numbers"},
  };
  for (const auto& options : all_fifteen) {
    start(options);
    const Ran ran = run({"--json", "list"});
    EXPECT_EQ(0, ran.status) << options[1] << ran.err;
    const json contacts = json::parse(ran.out);
    ASSERT_EQ(15u, contacts.size()) << options[1];
    EXPECT_EQ("+4930901820", contacts[0]["number"]);
  }
}

TEST_F(Tool, AnUnreadableIndexIsNamedAndNeverTaken) {
  // Index 4 is free, 8 to 9 are, and what stands at 2 cannot be told.
  start({"--sim-fault", "*:AT+CPBR=1,20:answer=\\r\\n+CME ERROR: 13\\r\\n", "--sim-fault",
         "*:AT+CPBR=1,10:answer=\\r\\n+CME ERROR: 13\\r\\n", "--sim-fault",
         "*:AT+CPBR=1,5:answer=\\r\\n+CME ERROR: 13\\r\\n", "--sim-fault",
         "*:AT+CPBR=1,3:answer=\\r\\n+CME ERROR: 13\\r\\n", "--sim-fault",
         "*:AT+CPBR=1,2:answer=\\r\\n+CME ERROR: 13\\r\\n", "--sim-fault",
         "*:AT+CPBR=1,1:answer=\\r\\n+CME ERROR: 13\\r\\n"});
  const Ran list = run({"--json", "list"});
  EXPECT_EQ(1, list.status);
  EXPECT_EQ(14u, json::parse(list.out).size());
  EXPECT_TRUE(said(list, "index 1 could not be read")) << list.err;
  EXPECT_EQ(4, json::parse(run({"--json", "add", "--name", "A"}).out)["index"]);
  EXPECT_EQ(2, run({"add", "--name", "A", "--index", "1"}).status);
}

TEST_F(Tool, WritesThatDoNotHappen) {
  const struct {
    std::vector<std::string> options;
    int status;
    const char* said;
  } cases[] = {
      {{"--sim-drop-writes"}, 6, "name written \"A\", read back empty"},
      {{"--sim-full"}, 5, "memory full"},
      {{"--sim-no-ucs2"}, 1, "no character set UCS2"},
      {{"--sim-fault", "1:AT+CPBW:answer=\\r\\nERROR\\r\\n"}, 1, "answered ERROR"},
  };
  for (const auto& c : cases) {
    start(c.options);
    const Ran ran = run({"add", "--name", "A", "--number", "1"});
    EXPECT_EQ(c.status, ran.status) << ran.err;
    EXPECT_TRUE(said(ran, c.said)) << ran.err;
    EXPECT_EQ("OK  \"IRA\"\n", run({"at", "AT+CSCS?"}).out);
  }
  start({"--sim-drop-writes"});
  EXPECT_EQ(6, run({"delete", "1", "--yes"}).status);
  EXPECT_EQ(6, run({"clear", "--yes"}).status);
}

TEST_F(Tool, ABadFileWritesNothing) {
  start();
  const struct {
    const char* name;
    const char* text;
    int status;
    const char* said;
  } cases[] = {
      {"a.jsonl", "{\"name\":\"A\"}\n{\"name\":", 7, "line 2: is no JSON object"},
      {"a.jsonl", "{\"name\":\"A\"}\n{\"name\":\"12345678901234567890\"}", 7,
       "line 2: name has 20"},
      {"a.jsonl", "{\"index\":4,\"name\":\"A\"}\n{\"index\":4,\"name\":\"B\"}", 7, "stands twice"},
      {"a.jsonl", "{\"name\":\"A\"}\n{\"index\":900,\"name\":\"B\"}", 7,
       "line 2: there is no index"},
      {"a.csv", "name,number\nA,1\nB,1 2", 7, "line 3: number may hold"},
      {"a.vcf", "BEGIN:VCARD\nFN:A\nEND:VCARD\nBEGIN:VCARD\nFN:B\n", 7, "line 4: this card"},
      {"a.vcf", "BEGIN:VCARD\nFN:A\nEMAIL:a@b\nEND:VCARD", 7, "--force leaves it out"},
      {"a.txt", "", 2, "say --format"},
  };
  for (const auto& c : cases) {
    const std::string path = std::string("/tmp/") + c.name;
    std::ofstream(path) << c.text;
    const Ran ran = run({"import", path});
    EXPECT_EQ(c.status, ran.status) << c.text;
    EXPECT_TRUE(said(ran, c.said)) << ran.err;
  }
  EXPECT_EQ(7, run({"import", "/tmp/missing.csv"}).status);
  std::ofstream("/tmp/empty.vcf").close();
  EXPECT_EQ(7, run({"import", "--replace", "/tmp/empty.vcf"}).status);
  EXPECT_EQ(7, run({"export", "/tmp/no/such/folder.csv"}).status);
  std::ofstream crowd("/tmp/crowd.csv");
  crowd << "name\n";
  for (int i = 0; i != 236; ++i) crowd << "Guest " << i << "\n";
  crowd.close();
  EXPECT_EQ(5, run({"import", "/tmp/crowd.csv"}).status);
  EXPECT_EQ(0, sent("AT+CPBW"));
  std::ofstream("/tmp/mail.vcf") << "BEGIN:VCARD\nFN:A\nEMAIL:a@b\nEND:VCARD";
  const Ran forced = run({"import", "/tmp/mail.vcf", "--force"});
  EXPECT_EQ(0, forced.status);
  EXPECT_TRUE(said(forced, "line 1: left out: email \"a@b\"")) << forced.err;
}

TEST_F(Tool, AnInterruptEndsBetweenTwoCommands) {
  std::string file;
  for (int i = 0; i != 200; ++i) file += "{\"name\":\"Guest " + std::to_string(i) + "\"}\n";
  std::ofstream("/tmp/guests.jsonl") << file;
  start({"--sim-delay", "2"});
  const pid_t import = begin({"--json", "import", "/tmp/guests.jsonl"});
  while (sent("AT+CPBW") < 5) ::sched_yield();
  ::kill(import, SIGINT);
  const Ran ran = finish(import);
  EXPECT_EQ(130, ran.status);
  const json tally = json::parse(ran.out);
  EXPECT_EQ(sent("AT+CPBW"), tally["written"]) << "what was written was read back, too";
  EXPECT_EQ(200 - tally["written"].get<int>(), tally["missing"]);
  EXPECT_EQ("OK  \"IRA\"\n", run({"at", "AT+CSCS?"}).out);
  EXPECT_EQ(15u + tally["written"].get<size_t>(), json::parse(run({"--json", "list"}).out).size());
}

}  // namespace
