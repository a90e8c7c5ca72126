// qalt-pb end to end: every command on every kind of phonebook, and files there and back.
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/terminal.h"
#include "tests/cli/private_tmp.h"

namespace {

using nlohmann::json;
using test::contents;
using test::Ran;

struct Profile {
  const char* server;
  const char* platform;
  bool fields;  // has more than a name and a number
};

class OnProfile : public test::Tool, public testing::WithParamInterface<Profile> {
 protected:
  void SetUp() override {
    Tool::SetUp();
    if (!IsSkipped()) start({"--sim-profile", GetParam().server, "--sim-name-length", "40"});
  }
  Ran pb(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--platform", GetParam().platform});
    return run(arguments);
  }
  json contact(int index) {
    const Ran ran = pb({"--json", "get", std::to_string(index)});
    return ran.status == 0 ? json::parse(ran.out).at(0) : json();
  }
};

INSTANTIATE_TEST_SUITE_P(
    All, OnProfile,
    testing::Values(Profile{"standard", "0", false}, Profile{"standard", "7", false},
                    Profile{"standard", "8", false}, Profile{"vendor", "0", false},
                    Profile{"vendor", "1", true}, Profile{"vendor-usim", "0", true},
                    Profile{"scpbr", "4", true}),
    [](const auto& param) {
      std::string name = param.param.server;
      name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
      return name + "_" + param.param.platform;
    });

TEST_P(OnProfile, EveryCommand) {
  const json info = json::parse(pb({"--json", "info"}).out);
  EXPECT_EQ(15, info["used"]);
  EXPECT_EQ(250, info["last"]);
  EXPECT_EQ(40, info["lengths"]["number"]);
  EXPECT_EQ(15u, json::parse(pb({"--json", "list"}).out).size());
  EXPECT_EQ(3u, json::parse(pb({"--json", "list", "--from", "2", "--to", "5"}).out).size());
  EXPECT_EQ("李小龙", contact(6)["name"]);
  EXPECT_EQ("Anna \"Nan\" Lee", contact(7)["name"]);
  EXPECT_EQ(4, pb({"get", "4"}).status);
  EXPECT_EQ(4, pb({"get", "300"}).status);

  EXPECT_EQ(2u, json::parse(pb({"--json", "find", "ANNA"}).out).size());
  EXPECT_EQ(5, json::parse(pb({"--json", "find", "иВАН п"}).out)[0]["index"]);
  EXPECT_EQ(1, json::parse(pb({"--json", "find", "+49 (30) 901"}).out)[0]["index"]);
  EXPECT_EQ(4, pb({"find", "nobody"}).status);

  std::vector<std::string> add = {"--json", "add", "--name", "Ωμέγα 24h", "--number", "+3021"};
  if (GetParam().fields) add.insert(add.end(), {"--number2", "+3022", "--email", "o@example.org"});
  const json added = json::parse(pb(add).out);
  EXPECT_EQ(4, added["index"]);
  EXPECT_EQ(added, contact(4));
  EXPECT_EQ(GetParam().fields ? "+3022" : "", added["number2"]);
  EXPECT_EQ(2, pb({"add", "--name", "Thief", "--index", "4"}).status);
  EXPECT_EQ(0, pb({"set", "4", "--number", "*100#"}).status);
  json expected = added;
  expected["number"] = "*100#";
  EXPECT_EQ(expected, contact(4));
  EXPECT_EQ(0, pb({"add", "--name", "New", "--index", "4", "--force"}).status);
  EXPECT_EQ("New", contact(4)["name"]);

  EXPECT_EQ(4, pb({"delete", "4", "8", "--yes"}).status);
  EXPECT_EQ("New", contact(4)["name"]) << "one index was empty, so none is deleted";
  EXPECT_EQ(2, pb({"delete", "4"}).status) << "nobody to ask";
  EXPECT_EQ(0, pb({"delete", "4", "--yes"}).status);
  EXPECT_EQ(4, pb({"get", "4"}).status);
  // A forgotten restore would show here: the set is IRA again.
  EXPECT_EQ("OK  \"IRA\"\n", pb({"at", "AT+CSCS?"}).out);
}

TEST_P(OnProfile, FilesThereAndBack) {
  ASSERT_EQ(0, pb({"export", "/tmp/a.jsonl"}).status);
  const std::string before = contents("/tmp/a.jsonl");
  const auto import = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"--json", "import"});
    const Ran ran = pb(more);
    EXPECT_EQ(0, ran.status) << ran.err;
    return json::parse(ran.out);
  };
  EXPECT_EQ(15, import({"/tmp/a.jsonl"})["unchanged"]);
  ASSERT_EQ(0, pb({"clear", "--yes"}).status);
  EXPECT_EQ("[]\n", pb({"--json", "list"}).out);

  const json plan = import({"/tmp/a.jsonl", "--dry-run"});
  EXPECT_EQ(15u, plan["write"].size());
  EXPECT_EQ("[]\n", pb({"--json", "list"}).out);
  EXPECT_EQ(15, import({"/tmp/a.jsonl"})["written"]);
  for (const json& line : plan["lines"]) EXPECT_GT(sent(line), 0) << line;
  EXPECT_EQ(before, pb({"export"}).out);
  EXPECT_EQ(0, import({"/tmp/a.jsonl", "--replace"})["written"]);

  for (const std::string file : {"/tmp/a.vcf", "/tmp/a.csv"}) {
    EXPECT_EQ(0, pb({"export", file}).status);
    EXPECT_EQ(15, import({file})["unchanged"]) << file;
    ASSERT_EQ(0, pb({"clear", "--yes"}).status);
    EXPECT_EQ(15, import({file})["written"]) << file;
  }
  // Another contact at an index of the file, and one that the file does not have.
  ASSERT_EQ(0, import({"/tmp/a.jsonl", "--replace"})["missing"]);
  ASSERT_EQ(0, pb({"set", "1", "--name", "Changed"}).status);
  ASSERT_EQ(0, pb({"add", "--name", "More", "--number", "1"}).status);
  const Ran conflict = pb({"import", "/tmp/a.jsonl"});
  EXPECT_EQ(7, conflict.status);
  EXPECT_NE(conflict.err.npos, conflict.err.find("line 1: index 1 is occupied by \"Changed\""));
  const json replaced = import({"/tmp/a.jsonl", "--replace"});
  EXPECT_EQ(1, replaced["written"]);
  EXPECT_EQ(1, replaced["deleted"]);
  EXPECT_EQ(before, pb({"export"}).out);
}

using Tool = test::Tool;

// Two steps more than a frame holds of names of 40 characters in UCS2.
TEST_F(Tool, AFullPhonebookOfLongNames) {
  json contacts = json::array();
  std::string name;
  for (int i = 0; i < 36; ++i) name += i % 2 == 0 ? "王" : "é";
  for (int i = 1; i <= 250; ++i) {
    contacts.push_back({{"index", i},
                        {"name", name + std::to_string(1000 + i)},
                        {"number", "+4930" + std::to_string(10000000000000 + i)}});
  }
  std::ofstream("/tmp/contacts.json") << contacts;
  start({"--sim-contacts", "/tmp/contacts.json", "--sim-name-length", "40"});
  const json list = json::parse(run({"--json", "list"}).out);
  EXPECT_LE(sent("AT"), 60);
  ASSERT_EQ(250u, list.size());
  for (size_t i = 0; i != 250; ++i) {
    EXPECT_EQ(contacts[i]["name"], list[i]["name"]);
    EXPECT_EQ(contacts[i]["number"], list[i]["number"]);
  }
  EXPECT_EQ(5, run({"add", "--name", "One too many"}).status);
  EXPECT_EQ(0, run({"set", "250", "--name", name + "9999"}).status);
  EXPECT_EQ(name + "9999", json::parse(run({"--json", "get", "250"}).out)[0]["name"]);

  const std::string table = run({"list"}).out;
  for (size_t start = 0; start < table.size(); start = table.find('\n', start) + 1) {
    EXPECT_LE(qalt::cli::display_width(table.substr(start, table.find('\n', start) - start)), 80);
  }
}

TEST_F(Tool, WhatDoesNotFitIsRefusedBeforeItIsSent) {
  start();
  const struct {
    std::vector<std::string> fields;
    const char* said;
  } cases[] = {
      {{"--name", "1234567890123456789"}, "name has 19 characters, the phonebook takes 18"},
      {{"--number", std::string(41, '1')}, "number has 41 characters, the phonebook takes 40"},
      {{"--name", "A\xFF"}, "name is not valid UTF-8"},
      {{"--name", "😀"}, "above U+FFFF"},
      {{"--number", "1\";+CPBW=1"}, "number may hold 0-9"},
      {{"--number", "12+3"}, "number may hold 0-9"},
      {{"--name", "A", "--email", "a@b"}, "has no email"},
      {{"--name", "A", "--index", "251"}, "the indices 1 to 250"},
      {{"--name", ""}, "a contact needs"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> arguments = {"add"};
    arguments.insert(arguments.end(), c.fields.begin(), c.fields.end());
    const Ran ran = run(arguments);
    EXPECT_EQ(2, ran.status) << c.said;
    EXPECT_NE(ran.err.npos, ran.err.find(c.said)) << ran.err;
  }
  EXPECT_EQ(0, sent("AT+CPBW"));
  EXPECT_EQ(0, run({"add", "--name", "A;B\r\"C"}).status) << "a name is coded, whatever it holds";
}

TEST_F(Tool, AtReportsAndTexts) {
  start({"--report-to", "/tmp/reports", "--sim-report", "+CREG: 5"});
  const Ran at = run({"--json", "at", "AT+CSQ", "AT+NONE"});
  EXPECT_EQ(1, at.status);
  EXPECT_EQ(json::parse(R"([{"command":"AT+CSQ","answers":[{"result":"OK","payload":"20,99"}]},
                            {"command":"AT+NONE","answers":[{"result":"ERROR","payload":""}]}])"),
            json::parse(at.out));
  EXPECT_EQ(2, run({"at", "AT\rATD1"}).status);

  const pid_t reports = begin({"--json", "reports", "--module", "/tmp/reports", "--count", "1"});
  int listening = -1;
  while ((listening = test::connect_to("/tmp/reports")) == -1) ::sched_yield();
  ::close(listening);
  const std::string write = "AT+CPBW=4,\"1\",129,\"X\"";
  EXPECT_EQ("\r\nOK\r\n", test::ask("/tmp/AT_SERVER_MSG", write));
  const Ran received = finish(reports);
  EXPECT_EQ(0, received.status) << received.err;
  EXPECT_EQ(json::parse(R"({"result":"REPORT","payload":"5","name":"+CREG"})"),
            json::parse(received.out));
  std::ofstream("/tmp/precious") << "text";
  EXPECT_EQ(2, run({"reports", "--module", "/tmp/precious"}).status);
  EXPECT_EQ("text", contents("/tmp/precious"));

  EXPECT_EQ("041F0440\n", run({"text", "encode", "Пр"}).out);
  EXPECT_EQ("8102089FC0\n", run({"text", "encode", "--compact", "Пр"}).out);
  EXPECT_EQ("a{\n", run({"text", "decode", "--vendor", "611B28"}).out);
  EXPECT_EQ(2, run({"text", "decode", "xyz"}).status);
}

}  // namespace
