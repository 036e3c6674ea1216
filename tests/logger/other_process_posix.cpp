#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "logger/other_process.h"

namespace {

std::string_view fixed_name;

}  // namespace

// Defined here, it serves the logger as well.
extern "C" __attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept {
  const std::string_view path = from;
  if (!fixed_name.empty() && path.substr(path.rfind('/') + 1) == fixed_name) {
    errno = EBUSY;
    return -1;
  }
  return static_cast<int>(syscall(SYS_rename, from, to));
}

namespace nerova_zel::test {

HeldLock::HeldLock(const char* file, For /*purpose*/) : file_(open(file, O_RDWR)) {
  flock(static_cast<int>(file_), LOCK_EX);
}

HeldLock::~HeldLock() { close(static_cast<int>(file_)); }

FixedName::FixedName(const char* file) { fixed_name = file; }

FixedName::~FixedName() { fixed_name = {}; }

}  // namespace nerova_zel::test
