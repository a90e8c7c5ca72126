#include "cli/file_access.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <optional>
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

// The number in /dev/fd/N: what stands behind it is written to, not replaced.
std::optional<int> descriptor_named(const std::string& path) {
  for (const std::string folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (path.compare(0, folder.size(), folder) != 0) continue;
    int number = 0;
    const char* const end = path.data() + path.size();
    const auto read = std::from_chars(path.data() + folder.size(), end, number);
    if (read.ec == std::errc() && read.ptr == end) return number;
  }
  if (path == "/dev/stderr") return STDERR_FILENO;
  return std::nullopt;
}

void write_special(const std::string& path, const std::string& text) {
  int number = -1;
  // A FIFO that nobody reads yet; opened otherwise, no interrupt would end the waiting.
  while ((number = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) == -1 && errno == ENXIO) {
    constexpr int kStepMs = 100;
    pollfd wait = {interrupt_descriptor(), POLLIN, 0};
    if (poll(&wait, 1, kStepMs) > 0) throw Failure(Cause::kInterrupted, "interrupted");
  }
  const Descriptor file(number);
  const bool done =
      number != -1 && fcntl(number, F_SETFL, O_WRONLY) == 0 && write_all(number, text);
  if (!done) fail_on_errno(path, "cannot be written");
}

// Where the links lead, to a file that there may not be yet.
std::filesystem::path target_of(const std::string& path) {
  constexpr int kMostLinks = 40;
  std::filesystem::path target = path;
  std::error_code error;
  for (int i = 0; i != kMostLinks && std::filesystem::is_symlink(target, error); ++i) {
    target = target.parent_path() / std::filesystem::read_symlink(target, error);
  }
  return target;
}

void replace_file(const std::string& path, const std::string& text) {
  const std::filesystem::path target = target_of(path);
  struct stat old = {};
  const bool exists = stat(target.c_str(), &old) == 0;
  std::string name = target.parent_path() / ".qalt-pb.XXXXXX";
  const Descriptor file(mkostemp(name.data(), O_CLOEXEC));
  if (file.get() == -1) fail_on_errno(path, "cannot be written");
  bool done = true;
  if (exists) {
    // Only root may give a file away; for others the mode is what can be kept.
    [[maybe_unused]] const int unused = fchown(file.get(), old.st_uid, old.st_gid);
    done = fchmod(file.get(), old.st_mode & 0777) == 0;
  }
  done = done && write_all(file.get(), text) && fsync(file.get()) == 0 &&
         rename(name.c_str(), target.c_str()) == 0;
  if (!done) {
    const int error = errno;
    unlink(name.c_str());
    errno = error;
    fail_on_errno(path, "cannot be written");
  }
}

}  // namespace

bool is_standard_output(const std::string& path) {
  return path.empty() || path == kStandardStream || path == "/dev/stdout" ||
         descriptor_named(path) == STDOUT_FILENO;
}

void write_file(const std::string& path, const std::string& text) {
  struct stat status = {};
  if (const auto descriptor = descriptor_named(path)) {
    if (!write_all(*descriptor, text)) fail_on_errno(path, "cannot be written");
  } else if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    write_special(path, text);
  } else {
    replace_file(path, text);
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
