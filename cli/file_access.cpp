#include "cli/file_access.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "cli/failure.h"
#include "cli/interrupts.h"

namespace qalt::cli {
namespace {

constexpr size_t kLargestFile = 64U << 20;

[[noreturn]] void fail_on_file(const std::string& path, const std::string& what) {
  const std::string name = path == kStandardStream ? "standard input" : path;
  throw Failure(Cause::kBadInput, name + " " + what);
}

[[noreturn]] void fail_on_errno(const std::string& path, const std::string& what) {
  fail_on_file(path, what + ": " + std::generic_category().message(errno));
}

// A descriptor that is closed when it goes.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ != -1) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return number_; }

 private:
  int number_;
};

}  // namespace

void open_standard_descriptors() {
  for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(number, F_GETFD) != -1) continue;
    // The wrong direction: reading the input or writing the output is an error then. The lowest
    // free number is this one.
    open("/dev/null", number == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
  }
}

std::string read_file(const std::string& path) {
  // A FIFO without a writer is waited for below, where an interrupt ends it.
  const bool standard = path == kStandardStream;
  const Descriptor file(standard ? dup(STDIN_FILENO)
                                 : open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (file.get() == -1) fail_on_errno(path, "cannot be read");
  std::string text;
  for (;;) {
    if (!wait_readable(file.get())) {
      throw Failure(Cause::kInterrupted, "interrupted, nothing was changed");
    }
    char buffer[16384];
    const ssize_t size = read(file.get(), buffer, sizeof buffer);
    if (size == 0) return text;
    if (size == -1 && (errno == EINTR || errno == EAGAIN)) continue;
    if (size == -1) fail_on_errno(path, "cannot be read");
    text.append(buffer, size_t(size));
    if (text.size() > kLargestFile) fail_on_file(path, "is larger than 64 MiB");
  }
}

bool write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written == -1 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(size_t(written));
  }
  return true;
}

}  // namespace qalt::cli
