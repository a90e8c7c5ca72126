// The floor of reading a phonebook over a terminal: sends the command lines of a file, each as
// soon as the answer before it is complete, and looks at nothing but the answers' ends.
// usage: phonebook_floor TERMINAL COMMANDS
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

namespace {

bool ends_with(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

constexpr std::string_view kFinalResults[] = {"\r\nOK\r\n", "\r\nERROR\r\n", "\r\nnot support\r\n"};

bool is_complete(std::string_view answer) {
  for (const std::string_view result : kFinalResults) {
    if (ends_with(answer, result)) return true;
  }
  return false;
}

bool exchange(int terminal, const std::string& command) {
  if (::write(terminal, command.data(), command.size()) != ssize_t(command.size())) return false;
  static char answer[65536];
  size_t length = 0;
  while (!is_complete({answer, length})) {
    const ssize_t count = ::read(terminal, answer + length, sizeof answer - length);
    if (count <= 0) return false;
    length += size_t(count);
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const int terminal = ::open(argv[1], O_RDWR | O_NOCTTY);
  termios settings{};
  if (terminal == -1 || ::tcgetattr(terminal, &settings) != 0) {
    std::perror(argv[1]);
    return 1;
  }
  ::cfmakeraw(&settings);
  ::tcsetattr(terminal, TCSANOW, &settings);
  std::ifstream commands(argv[2]);
  for (std::string command; std::getline(commands, command);) {
    if (!exchange(terminal, command + "\r")) {
      std::cerr << "no answer to " << command << "\n";
      return 1;
    }
  }
}
