// qalt-pb end to end against what goes wrong: no server, bad files, modems that misbehave, Ctrl-C.
#include <fcntl.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstddef>
#include <filesystem>

#include "cli/write_turn.h"
#include "qalt_at/detail/result.hpp"
#include "tests/cli/tool.h"

namespace {

using nlohmann::json;
using test::Ended;
using test::Tool;
using Texts = std::vector<std::string>;

TEST_F(Tool, WithoutAServerAModemOrAnOpenCard) {
  for (const auto& command : {Texts{"list"}, {"at", "AT"}}) {
    expect(3, "start one: qalt-atd", run(command));
  }
  EXPECT_EQ(3, json::parse(run({"--json", "list"}).err)["error"]["code"]);
  EXPECT_EQ(2, run({"frobnicate"}).status);
  EXPECT_EQ(2, json::parse(run({"--json", "set", "1"}).err)["error"]["code"]);
  start({"--sim-fault", "*:AT+C:answer=\\r\\n+CME ERROR: 1\\r\\n"});
  for (const auto& command : {Texts{"list"}, {"at", "AT+CSQ"}}) {
    expect(3, "the modem is away", run(command));
  }
  start({"--sim-fault", "*:AT+CPBS=:answer=\\r\\nERROR\\r\\n", "--sim-fault",
         "*:AT+CPIN?:answer=\\r\\n+CPIN: SIM PIN\\r\\n\\r\\nOK\\r\\n"});
  expect(1, "the card waits for its SIM PIN", run({"--wait", "0", "list"}));
}

TEST_F(Tool, ReadsThroughFaults) {
  const Texts all_fifteen[] = {
      {"--sim-fault", "1-3:AT+CPBR=1,:answer=\\r\\n+CME ERROR: 24\\r\\n"},
      {"--sim-fault", "*:AT+CPBR=1,2:answer=\\r\\nERROR\\r\\n"},  // two steps of different sizes
      {"--sim-refuse", "4", "--sim-empty", "error", "--sim-plain-numbers"},
      {"--sim-fault", "1-9:AT+CPBR=:report-inside=+CREG: 1", "--sim-split", "--sim-echo"},
      {"--sim-cmee", "2", "--sim-empty", "22", "--sim-base", "5", "--sim-no-lengths"},
  };
  for (const Texts& options : all_fifteen) {
    start(options);
    const json contacts = json_of({"list"});
    ASSERT_EQ(15u, contacts.size()) << options.back();
    EXPECT_EQ("+4930901820", contacts[0]["number"]);
  }
}

TEST_F(Tool, WritesThatDoNotHappen) {
  const struct {
    Texts options;
    int status;
    const char* said;
  } cases[] = {
      {{"--sim-full"}, 5, "memory full"},
      {{"--sim-no-ucs2"}, 1, "no character set UCS2"},
      {{"--sim-fault", "1:AT+CPBW:answer=\\r\\nERROR\\r\\n"}, 1, "answered ERROR"},
      {{"--sim-drop-writes"}, 6, "name written \"A\", read back empty"},
  };
  for (const auto& c : cases) {
    start(c.options);
    expect(c.status, c.said, run({"add", "--name", "A", "--number", "1"}));
    EXPECT_EQ("OK  \"IRA\"\n", run({"at", "AT+CSCS?"}).out);
  }
  EXPECT_EQ(6, run({"delete", "1", "--yes"}).status);
  EXPECT_EQ(6, run({"clear", "--yes"}).status);
}

TEST_F(Tool, ABadFileWritesNothing) {
  start();
  const struct {
    const char* name;
    std::string text;
    const char* said;
  } cases[] = {
      {"a.jsonl", "{\"name\":\"A\"}\n{\"name\":", "line 2: is no JSON object"},
      {"a.csv", "name\n1234567890123456789\n", "line 2: name has 19"},
      {"a.jsonl", "{\"name\":\"A\",\"further\":\",0;+CPBW=1\"}", "line 1: further is no list"},
      {"a.jsonl", "{\"index\":4,\"name\":\"A\"}\n{\"index\":4,\"name\":\"B\"}", "stands twice"},
      {"a.vcf", "BEGIN:VCARD\nFN:A\nEND:VCARD\nBEGIN:VCARD\nFN:B\n", "line 4: this card"},
      {"a.vcf", "BEGIN:VCARD\nFN:A\nEMAIL:a@b\nEND:VCARD", "--force leaves it out"},
  };
  for (const auto& c : cases) {
    write(c.name, c.text);
    expect(7, c.said, run({"import", c.name}));
  }
  write_names("crowd.csv", "Guest ", 236);
  expect(5, "no free index for 1", run({"import", "crowd.csv"}));
  EXPECT_EQ(7, run({"import", "missing.csv"}).status);
  EXPECT_EQ(7, run({"export", "no/such/folder.csv"}).status);
  EXPECT_EQ(0, sent("AT+CPBW"));
  expect(0, "line 1: left out: email \"a@b\"", run({"import", "a.vcf", "--force"}));
}

// Stored is more than the phonebook announces, and more than a name and a number.
TEST_F(Tool, WhatIsStoredIsGoodAsItStands) {
  write("stored.json", R"([{"number": "1", "name": "A name of twenty-six chars"},
      {"number": "12AB", "name": "B"},
      {"number": "3", "name": "C", "further": ",0,\"00460072\",\"+49\",145"}])");
  start({"--sim-contacts", "stored.json", "--sim-further"});
  const json before = json_of({"list"});
  EXPECT_EQ(",0,\"00460072\",\"+49\",145", before[2]["further"]);
  EXPECT_NE(std::string::npos, run({"get", "3"}).out.find("further ,0,\"00460072\",\"+49\",145"));
  for (const std::string file : {"a.jsonl", "a.csv", "a.vcf"}) {
    const Ended saved = run({"export", file});
    EXPECT_EQ(file != "a.jsonl", saved.err.find("the further parameters") != saved.err.npos);
    EXPECT_EQ(3, json_of({"import", file})["unchanged"]) << file;
    EXPECT_EQ(3, json_of({"import", file, "--replace", "--yes"})["unchanged"]) << file;
  }
  EXPECT_EQ(0, run({"set", "3", "--number", "33"}).status);
  EXPECT_EQ(before[2]["further"], json_of({"get", "3"})[0]["further"]);

  ASSERT_EQ(0, run({"clear", "--yes"}).status);
  expect(7, "line 2: name has 26 characters", run({"import", "a.csv"}));
  expect(0, "line 2: tried as it is: number may hold", run({"import", "a.jsonl", "--dry-run"}));
  const Ended restored = run({"--json", "import", "a.jsonl"});
  expect(1, "line 1: tried as it is: name has 26", restored);
  expect(1, "could not write index 1: the modem answered +CME ERROR: 24", restored);
  EXPECT_EQ(1, json::parse(restored.out)["written"]);
  EXPECT_EQ(before[2], json_of({"list"})[0]);
  // A file that does not have them overwrites them; one that has none means it.
  write("b.csv", "index,name,number\n3,C,3\n");
  EXPECT_EQ(1, json_of({"import", "b.csv"})["unchanged"]);
  write("b.jsonl", R"({"index":3,"name":"C","number":"3","further":""})");
  expect(7, "occupied by \"C\" 3 with further parameters", run({"import", "b.jsonl"}));
  EXPECT_EQ(1, json_of({"import", "b.jsonl", "--force"})["written"]);
  EXPECT_EQ("", json_of({"get", "3"})[0]["further"]);
}

TEST_F(Tool, WhatCannotBeReadIsNoEmptyFile) {
  start();
  std::filesystem::create_directory("folder.csv");
  for (const char* input : {"- </tmp", "- <&-", "folder.csv", "--replace --yes - </tmp"}) {
    expect(7, "cannot be read", shell(std::string("$pb import --format csv ") + input));
  }
  EXPECT_EQ(15u, json_of({"list"}).size());
  // The closed descriptors stay without a meaning of their own.
  EXPECT_EQ(4, shell("exec $pb get 4 <&- >&- 2>&-").status);
  ASSERT_EQ(0, ::mkfifo("pipe.csv", 0600));
  test::Program import(PB_PROGRAM, {"import", "pipe.csv"}, false);
  const int writer = ::open("pipe.csv", O_WRONLY);  // it has opened it, and reads
  EXPECT_EQ(130, import.end(SIGINT).status);
  ::close(writer);
}

TEST_F(Tool, TheStatusSaysWhatBecameOfThePhonebook) {
  start();
  expect(8, "standard output takes no more", shell("exec $pb add --name A >/dev/full"));
  EXPECT_EQ(8, shell("exec $pb set 4 --name B >&-").status);
  EXPECT_EQ("B", json_of({"get", "4"})[0]["name"]);
  EXPECT_EQ(4, shell("exec $pb --json get 1 8 >/dev/full").status) << "the output comes second";
  EXPECT_EQ("1 of 1 contact deleted\n", run({"delete", "4", "04", "--yes"}).out);
}

TEST_F(Tool, ExportsReplaceOrWriteTo) {
  start();
  const std::string whole = run({"export"}).out;
  const auto mode = [](const char* path) {
    struct stat status = {};
    return ::stat(path, &status) == 0 ? status.st_mode & 0777 : 0;
  };
  write("kept.jsonl", "old");
  ::chmod("kept.jsonl", 0640);
  write("kept.jsonl.part", "somebody's");
  std::filesystem::create_directory("folder");
  std::filesystem::create_symlink("../kept.jsonl", "folder/link.jsonl");
  std::filesystem::create_symlink("later.jsonl", "folder/dangling.jsonl");
  for (const char* path : {"folder/link.jsonl", "folder/dangling.jsonl", "/dev/full"}) {
    EXPECT_EQ(path == std::string("/dev/full") ? 7 : 0,
              run({"export", "--format", "jsonl", path}).status)
        << path;
  }
  EXPECT_EQ(0640U, mode("kept.jsonl"));
  EXPECT_EQ(0600U, mode("folder/later.jsonl"));
  EXPECT_TRUE(std::filesystem::is_symlink("folder/link.jsonl"));
  EXPECT_EQ("somebody's", test::contents("kept.jsonl.part"));
  EXPECT_EQ(whole, run({"export", "-"}).out);
  EXPECT_EQ(0, shell("{ echo head; $pb export /dev/stdout; } >both;"
                     "$pb export --format jsonl /dev/fd/3 3>third;"
                     "mkfifo f.jsonl; cat f.jsonl >fourth & $pb export f.jsonl; wait")
                   .status);
  EXPECT_EQ("head\n" + whole, test::contents("both"));
  for (const char* path : {"kept.jsonl", "folder/later.jsonl", "third", "fourth"}) {
    EXPECT_EQ(whole, test::contents(path)) << path;
  }
}

TEST_F(Tool, WritersAtOnceLoseNothing) {
  start({"--sim-delay", "1"});
  write_names("a.csv", "a", 20);
  write_names("b.csv", "b", 20);
  const Ended both = shell(
      "$pb import a.csv & a=$!; $pb import b.csv & b=$!; $pb add --name c; wait $a && wait $b");
  EXPECT_EQ(0, both.status) << both.err;
  EXPECT_EQ(15u + 41u, json_of({"list"}).size()) << both.out;
}

// Whoever holds the turn for good, in whatever way, is waited for once, not for ever.
TEST_F(Tool, ATurnThatNeverEndsIsWaitedForOnce) {
  struct stat nothing = {};
  ::stat("/tmp/AT_SERVER_MSG", &nothing);
  const std::string name =
      "qalt-pb " + std::to_string(nothing.st_dev) + " " + std::to_string(nothing.st_ino);
  sockaddr_un address = {AF_UNIX, {}};
  name.copy(address.sun_path + 1, name.size());
  const auto size = socklen_t(offsetof(sockaddr_un, sun_path) + 1 + name.size());
  for (const bool listens : {false, true}) {
    const int holder = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(0, ::bind(holder, reinterpret_cast<sockaddr*>(&address), size));
    if (listens) ::listen(holder, 1);
    qalt::cli::WriteTurn::patience_ms = 1;
    const qalt::cli::WriteTurn turn;
    EXPECT_EQ(0, qalt::cli::WriteTurn::patience_ms);
    ::close(holder);
  }
}

// What stands there when the answer comes is what the question was about, or is not deleted; and
// it is deleted only where the answer is yes.
TEST_F(Tool, WhatIsConfirmedIsWhatIsDeleted) {
  start();
  write("a.jsonl", R"({"index":1,"name":"A"})");
  const std::pair<std::string, const char*> cases[] = {
      {"delete 1", "y\n"}, {"clear", "y\n"}, {"import --replace a.jsonl", "y\n"}, {"clear", "n\n"}};
  for (const auto& [command, answer] : cases) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(0, ::grantpt(terminal) | ::unlockpt(terminal));
    const std::string path = ::ptsname(terminal);
    test::Program asking("/bin/sh", {"-c", PB_PROGRAM " " + command + " <" + path + " 2>" + path},
                         false);
    std::string said;
    for (char c = 0; said.find("[y/N]") == said.npos && ::read(terminal, &c, 1) == 1;) said += c;
    EXPECT_EQ(0, run({"set", "1", "--number", std::to_string(command.size())}).status);
    EXPECT_EQ(2, ::write(terminal, answer, 2));
    const auto cause = *answer == 'y' ? qalt::Cause::kCollision : qalt::Cause::kUsage;
    EXPECT_EQ(int(cause), asking.end(0).status) << said;
    ::close(terminal);
    EXPECT_EQ(15u, json_of({"list"}).size()) << command;
  }
}

// A replacement leaves what it cannot read, and says so.
TEST_F(Tool, AReplacementNamesWhatItLeaves) {
  start({"--sim-fault", "*:AT+CPBR=1,:answer=\\r\\n+CME ERROR: 3\\r\\n"});
  write("a.jsonl", R"({"index":2,"name":"A"})");
  expect(1, "index 1 could not be read", run({"import", "a.jsonl", "--replace", "--yes"}));
}

TEST_F(Tool, NohupKeepsAHangUpIgnored) {
  start({"--sim-fault", "1:AT+CSQ:delay=300"});
  const Ended ended = shell(
      "trap '' HUP; $pb at AT AT+CSQ AT >out & while ! [ -s out ]; do :; done;"
      "kill -HUP $!; wait $!");
  EXPECT_EQ(0, ended.status) << ended.err;
}

// One error, not one for each contact that was never sent; and the tally is the truth.
TEST_F(Tool, AnImportEndsWhereTheModemOrTheServerDoes) {
  write_names("guests.csv", "Guest ", 200);
  for (const bool of_modem : {true, false}) {
    test::Program modem(SIMMODEM_PROGRAM, {"--pty", "modem", "--sim-delay", "2"});
    start({}, "tty:modem");
    test::Program import(PB_PROGRAM, {"--json", "import", "guests.csv"}, false);
    while (sent("AT+CPBW") < 5) ::sched_yield();
    (of_modem ? modem : *server).signal(SIGKILL);
    const Ended ended = import.end(0);
    EXPECT_EQ(3, ended.status);
    EXPECT_EQ("no-answer", json::parse(ended.err)["error"]["class"]) << ended.err;
    const json tally = json::parse(ended.out);
    EXPECT_GE(1u, tally["unknown"].size());
    EXPECT_EQ(200u, tally["written"].get<size_t>() + tally["unknown"].size() +
                        tally["left"].get<size_t>());
  }
}

TEST_F(Tool, AnInterruptEndsBetweenTwoCommands) {
  write_names("guests.csv", "Guest ", 200);
  start({"--sim-delay", "2"});
  test::Program import(PB_PROGRAM, {"--json", "import", "guests.csv"}, false);
  while (sent("AT+CPBW") < 5) ::sched_yield();
  // A terminal that closes and timeout(1) send more than one signal.
  for (const int number : {SIGTERM, SIGHUP, SIGTERM, SIGINT}) import.signal(number);
  const Ended ended = import.end(SIGINT);
  EXPECT_EQ(130, ended.status);
  const json tally = json::parse(ended.out);
  EXPECT_EQ(sent("AT+CPBW"), tally["written"]) << "what was written was read back, too";
  EXPECT_EQ(200 - tally["written"].get<int>(), tally["missing"]);
  EXPECT_EQ("OK  \"IRA\"\n", run({"at", "AT+CSCS?"}).out);
  EXPECT_EQ(15u + tally["written"].get<size_t>(), json_of({"list"}).size());
}

}  // namespace
