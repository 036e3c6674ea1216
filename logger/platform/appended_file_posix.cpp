#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/appended_file.h"

namespace nerova_zel::logger {

namespace {

/** Repeats what a signal interrupted. */
template <class Call>
auto uninterrupted(Call call) noexcept {
  auto result = call();
  while (result == -1 && errno == EINTR) {
    result = call();
  }
  return result;
}

int descriptor(std::intptr_t handle) { return static_cast<int>(handle); }

/** After an append that the system cut short. Leaves all in place if others have appended since. */
void take_back(int file, off_t length) noexcept {
  struct stat status = {};
  if (fstat(file, &status) == 0 && status.st_size == lseek(file, 0, SEEK_CUR)) {
    uninterrupted([&] { return ftruncate(file, status.st_size - length); });
  }
}

}  // namespace

bool AppendedFile::open(const std::filesystem::path& path) noexcept {
  close();
  // Not blocking: a pipe without a reader would hold up the caller for good.
  constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  constexpr mode_t permissions = 0666;
  const int file = uninterrupted([&] { return ::open(path.c_str(), flags, permissions); });
  struct stat status = {};
  // Not a pipe or socket, whose reader may leave: that would end the program with a signal.
  if (fstat(file, &status) == 0 && (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode))) {
    handle_ = file;
    volume_ = status.st_dev;
    identity_ = status.st_ino;
  } else {
    ::close(file);
  }
  return is_open();
}

void AppendedFile::close() noexcept {
  if (!is_open()) {
    return;
  }
  flock(descriptor(handle_), LOCK_UN);  // a process forked in between would keep a lock beyond the closing
  ::close(descriptor(handle_));
  handle_ = none;
}

std::optional<std::uint64_t> AppendedFile::size_at(const std::filesystem::path& path) const noexcept {
  struct stat status = {};
  stat(path.c_str(), &status);  // no file has the identity 0
  if (status.st_dev != volume_ || status.st_ino != identity_) {
    return std::nullopt;
  }
  return S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool AppendedFile::append(const char* text, std::size_t length) noexcept {
  const ssize_t written = uninterrupted([&] { return write(descriptor(handle_), text, length); });
  if (written == static_cast<ssize_t>(length)) {
    return true;
  }
  if (written > 0) {
    take_back(descriptor(handle_), written);
  }
  return false;
}

bool AppendedFile::force_to_disk() const noexcept {
  return uninterrupted([&] { return fdatasync(descriptor(handle_)); }) == 0;
}

bool AppendedFile::try_lock() const noexcept {
  return uninterrupted([&] { return flock(descriptor(handle_), LOCK_EX | LOCK_NB); }) == 0;
}

void discard_file(const std::filesystem::path& path) noexcept { unlink(path.c_str()); }

}  // namespace nerova_zel::logger
