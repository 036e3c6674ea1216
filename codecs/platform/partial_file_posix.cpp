#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include "platform/partial_file.h"

namespace nerova_zel {

namespace {

/**
 * Opens a file that nobody else writes: whoever does holds its lock until it has its final name. -1 when the file
 * cannot be opened, or, with errno EWOULDBLOCK, when somebody does.
 */
int open_alone(const char* path) {
  for (;;) {
    const int descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor < 0) {
      return -1;
    }
    struct stat opened {};
    struct stat present {};
    // Some network file systems have no locks; there only a program that writes to the same place could disturb.
    const bool alone = flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    if (alone && fstat(descriptor, &opened) == 0) {
      const bool same = stat(path, &present) == 0 && present.st_ino == opened.st_ino && present.st_dev == opened.st_dev;
      if (same && ftruncate(descriptor, 0) == 0) {
        return descriptor;
      }
      if (!same) {  // it got its final name, or was removed, between opening and locking
        close(descriptor);
        continue;
      }
    }
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return -1;
  }
}

}  // namespace

void PartialFile::remove_if_stale(const std::filesystem::path& temporary) {
  const int descriptor = ::open(temporary.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) {
    return;
  }
  // Whoever writes it holds the lock. Who opened it and has not locked it yet finds it gone, and makes another.
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
    unlink(temporary.c_str());
  }
  ::close(descriptor);
}

PartialFile::PartialFile(std::filesystem::path place) : place_(std::move(place)) {}

PartialFile::PartialFile(PartialFile&& other) noexcept
    : place_(std::move(other.place_)),
      temporary_(std::exchange(other.temporary_, {})),
      descriptor_(std::exchange(other.descriptor_, -1)),
      device_(other.device_),
      file_(other.file_) {}

PartialFile::~PartialFile() {
  if (!temporary_.empty()) {
    unlink(temporary_.c_str());
  }
  close();
}

bool PartialFile::open() {
  constexpr int most_writers = 1000;
  for (int number = 1; number <= most_writers; ++number) {
    std::string name = place_.string() + suffix;
    if (number > 1) {
      name += std::to_string(number);
    }
    descriptor_ = open_alone(name.c_str());
    if (descriptor_ >= 0) {
      temporary_ = name;
      return true;
    }
    if (errno != EWOULDBLOCK) {
      return false;
    }
  }
  return false;
}

bool PartialFile::write(const void* data, std::size_t size) {
  const char* at = static_cast<const char*>(data);
  while (size > 0) {
    constexpr std::size_t most = std::size_t{1} << 30U;
    const ssize_t written = ::write(descriptor_, at, std::min(size, most));
    if (written < 0 && errno != EINTR) {
      return false;
    }
    if (written > 0) {
      at += written;
      size -= static_cast<std::size_t>(written);
    }
  }
  return true;
}

bool PartialFile::truncate(std::uint64_t size) { return ftruncate(descriptor_, static_cast<off_t>(size)) == 0; }

bool PartialFile::publish() {
  struct stat own {};
  if (fstat(descriptor_, &own) != 0) {
    return false;
  }
  device_ = own.st_dev;
  file_ = own.st_ino;
  if (std::rename(temporary_.c_str(), place_.c_str()) != 0) {
    return false;
  }
  temporary_.clear();
  close();
  return true;
}

bool PartialFile::is_in_place() const {
  struct stat present {};
  return lstat(place_.c_str(), &present) == 0 && present.st_dev == device_ && present.st_ino == file_;
}

void PartialFile::close() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
    descriptor_ = -1;
  }
}

}  // namespace nerova_zel
