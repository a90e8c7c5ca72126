// qalt-pb end to end: every command on every kind of phonebook, and files there and back.
#include "tests/cli/tool.h"

namespace {

using nlohmann::json;
using test::contents;
using test::Ended;
using test::Tool;

struct Profile {
  const char* server;
  const char* platform;
  bool fields;  // has more than a name and a number
};
// In the names of the tests; by itself GoogleTest names them after addresses.
void PrintTo(const Profile& profile, std::ostream* out) {
  *out << profile.server << ", platform " << profile.platform;
}

class OnProfile : public Tool, public testing::WithParamInterface<Profile> {
 protected:
  void SetUp() override {
    Tool::SetUp();
    if (!IsSkipped()) start({"--sim-profile", GetParam().server, "--sim-name-length", "40"});
  }
  Ended pb(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--json", "--platform", GetParam().platform});
    return run(arguments);
  }
  json result(const std::vector<std::string>& arguments) {
    const Ended ended = pb(arguments);
    EXPECT_EQ(0, ended.status) << ended.err;
    return json::parse(ended.out);
  }
  json contact(int index) { return result({"get", std::to_string(index)})[0]; }
};

INSTANTIATE_TEST_SUITE_P(
    All, OnProfile,
    testing::Values(Profile{"standard", "0", false}, Profile{"standard", "7", false},
                    Profile{"standard", "8", false}, Profile{"vendor", "0", false},
                    Profile{"vendor", "1", true}, Profile{"vendor-usim", "0", true},
                    Profile{"scpbr", "4", true}));

TEST_P(OnProfile, EveryCommand) {
  const json info = result({"info"});
  EXPECT_EQ(15, info["used"]);
  EXPECT_EQ(250, info["last"]);
  EXPECT_EQ(40, info["lengths"]["number"]);
  EXPECT_EQ(15u, result({"list"}).size());
  EXPECT_EQ(3u, result({"list", "--from", "2", "--to", "5"}).size());
  EXPECT_EQ("李小龙", contact(6)["name"]);
  EXPECT_EQ(2u, result({"find", "ANNA"}).size());
  EXPECT_EQ(5, result({"find", "иВАН п"})[0]["index"]);
  EXPECT_EQ(1, result({"find", "+49 (30) 901"})[0]["index"]);
  EXPECT_EQ(4, pb({"get", "4"}).status);

  std::vector<std::string> add = {"add", "--name", "Ωμέγα 24h", "--number", "+3021"};
  if (GetParam().fields) add.insert(add.end(), {"--number2", "+3022", "--email", "o@example.org"});
  json expected = result(add);
  EXPECT_EQ(4, expected["index"]);
  EXPECT_EQ(GetParam().fields ? "+3022" : "", expected["number2"]);
  EXPECT_EQ(expected, contact(4));
  EXPECT_EQ(2, pb({"add", "--name", "Thief", "--index", "4"}).status);
  EXPECT_EQ(0, pb({"set", "4", "--number", "*100#"}).status);
  expected["number"] = "*100#";
  EXPECT_EQ(expected, contact(4));
  EXPECT_EQ(0, pb({"add", "--name", "New", "--index", "4", "--force"}).status);
  EXPECT_EQ(4, pb({"delete", "4", "8", "--yes"}).status);
  EXPECT_EQ("New", contact(4)["name"]) << "one index was empty, so none is deleted";
  EXPECT_EQ(2, pb({"delete", "4"}).status) << "nobody to ask";
  EXPECT_EQ(0, pb({"delete", "4", "--yes"}).status);
  EXPECT_EQ(4, pb({"get", "4"}).status);
  // A forgotten restore would show here: the set is IRA again.
  EXPECT_EQ("\"IRA\"", result({"at", "AT+CSCS?"})[0]["answers"][0]["payload"]);
}

TEST_P(OnProfile, FilesThereAndBack) {
  for (const std::string file : {"a.vcf", "a.csv", "a.jsonl"}) {
    EXPECT_EQ(0, pb({"export", file}).status);
    EXPECT_EQ(15, result({"import", file})["unchanged"]) << file;
    ASSERT_EQ(0, pb({"clear", "--yes"}).status);
    EXPECT_EQ(15, result({"import", file})["written"]) << file;
  }
  const std::string before = contents("a.jsonl");
  ASSERT_EQ(0, pb({"clear", "--yes"}).status);
  const json plan = result({"import", "a.jsonl", "--dry-run"});
  EXPECT_EQ(json::array(), result({"list"}));
  EXPECT_EQ(15, result({"import", "a.jsonl"})["written"]);
  for (const json& line : plan["lines"]) EXPECT_GT(sent(line), 0) << line;
  EXPECT_EQ(before, pb({"export"}).out);
  // Another contact at an index of the file, and one that the file does not have.
  ASSERT_EQ(0, pb({"set", "1", "--name", "Changed"}).status);
  ASSERT_EQ(0, pb({"add", "--name", "More", "--number", "1"}).status);
  expect(7, "line 1: index 1 is occupied by \\\"Changed\\\"", pb({"import", "a.jsonl"}));
  expect(2, "no terminal to ask on", pb({"import", "a.jsonl", "--replace"}));
  const json replaced = result({"import", "a.jsonl", "--replace", "--yes"});
  EXPECT_EQ(1, replaced["written"]);
  EXPECT_EQ(1, replaced["deleted"]);
  EXPECT_EQ(before, pb({"export"}).out);
}

// Two steps more than a frame holds of names of 40 characters in UCS2.
TEST_F(Tool, AFullPhonebookOfLongNames) {
  json contacts = json::array();
  std::string name;
  for (int i = 0; i < 36; ++i) name += i % 2 == 0 ? "王" : "é";
  for (int i = 1; i <= 250; ++i) {
    contacts.push_back({{"name", name + std::to_string(1000 + i)},
                        {"number", "+4930" + std::to_string(10000000000000 + i)}});
  }
  write("contacts.json", json{{"SM", contacts}}.dump());
  start({"--sim-contacts", "contacts.json", "--sim-name-length", "40"});
  const json list = json_of({"list"});
  EXPECT_LE(sent("AT"), 60);
  ASSERT_EQ(250u, list.size());
  for (size_t i = 0; i != 250; ++i) {
    EXPECT_EQ(contacts[i]["name"], list[i]["name"]);
    EXPECT_EQ(contacts[i]["number"], list[i]["number"]);
  }
  EXPECT_EQ(0u, run({"list"}).out.find("Index  Name"));
  EXPECT_EQ(5, run({"add", "--name", "One too many"}).status);
  EXPECT_EQ(0, run({"set", "250", "--name", name + "9999"}).status);
  EXPECT_EQ(name + "9999", json_of({"get", "250"})[0]["name"].get<std::string>());
}

TEST_F(Tool, WhatDoesNotFitIsRefusedBeforeItIsSent) {
  start();
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"--name", "1234567890123456789"}, "name has 19 characters, the phonebook takes 18"},
      {{"--number", std::string(41, '1')}, "number has 41 characters, the phonebook takes 40"},
      {{"--name", "😀"}, "above U+FFFF"},
      {{"--number", "1\";+CPBW=1"}, "number may hold 0-9"},
      {{"--name", "A", "--index", "251"}, "the indices 1 to 250"},
  };
  expect(2, "--from 251 is behind the last index", run({"list", "--from", "251"}));
  expect(2, "--to 0 is before the first index", run({"list", "--to", "0"}));
  for (auto [arguments, said] : cases) {
    arguments.insert(arguments.begin(), "add");
    expect(2, said, run(arguments));
  }
  EXPECT_EQ(0, sent("AT+CPBW"));
  EXPECT_EQ(0, run({"add", "--name", "A;B\r\"C"}).status) << "a name is coded, whatever it holds";
}

TEST_F(Tool, AtReportsAndTexts) {
  const std::string module = folder + "/reports";
  start({"--report-to", module, "--sim-report", "+CREG: 5"});
  const Ended at = run({"--json", "at", "AT+CSQ", "AT+NONE"});
  EXPECT_EQ(1, at.status);
  EXPECT_EQ(json::parse(R"([{"command":"AT+CSQ","answers":[{"result":"OK","payload":"20,99"}]},
                            {"command":"AT+NONE","answers":[{"result":"ERROR","payload":""}]}])"),
            json::parse(at.out));
  EXPECT_EQ(2, run({"at", "AT\rATD1"}).status);

  test::Program reports(PB_PROGRAM, {"--json", "reports", "--module", module, "--count", "1"},
                        false);
  int listening = -1;
  while ((listening = test::connect_to(module)) == -1) ::sched_yield();
  ::close(listening);
  // Nobody's socket is taken, that of the AT server neither.
  for (const std::string& taken : {module, std::string("/tmp/AT_SERVER_MSG")}) {
    expect(2, "already answers", run({"reports", "--module", taken, "--count", "1"}));
  }
  EXPECT_EQ("\r\nOK\r\n", test::ask("/tmp/AT_SERVER_MSG", "AT+CPBW=4,\"1\",129,\"X\""));
  const Ended received = reports.end(0);
  EXPECT_EQ(0, received.status) << received.err;
  EXPECT_EQ(json::parse(R"({"result":"REPORT","payload":"5","name":"+CREG"})"),
            json::parse(received.out));
  write("precious", "text");
  EXPECT_EQ(2, run({"reports", "--module", "precious"}).status);
  EXPECT_EQ("text", contents("precious"));

  EXPECT_EQ("041F0440\n", run({"text", "encode", "Пр"}).out);
  EXPECT_EQ("a{\n", run({"text", "decode", "--vendor", "611B28"}).out);
}

}  // namespace
