// What another process can do to a log file, for the one test program that includes this.

#pragma once

#if defined(_WIN32)

#include <windows.h>

namespace nerova_zel::test {

/** A file that is open as the logger has it, or without sharing its name: then it cannot be renamed. */
class OpenFile {
 public:
  explicit OpenFile(const char* file, bool shares_name)
      : handle_(CreateFileA(file, GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | (shares_name ? FILE_SHARE_DELETE : 0U), nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~OpenFile() { CloseHandle(handle_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  void lock(DWORD offset) const {
    OVERLAPPED region = {};
    region.Offset = offset;
    region.OffsetHigh = 0x7FFFFFFF;
    LockFileEx(handle_, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &region);
  }

 private:
  HANDLE handle_;
};

struct FixedName : OpenFile {
  explicit FixedName(const char* file) : OpenFile(file, false) {}
};

struct HeldRotation : OpenFile {
  explicit HeldRotation(const char* file) : OpenFile(file, true) { lock(0); }
};

struct HeldAppend : OpenFile {
  explicit HeldAppend(const char* file) : OpenFile(file, true) { lock(1); }
};

}  // namespace nerova_zel::test

#else

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace nerova_zel::test {

/** While it lives, files whose path ends so cannot be renamed. */
struct FixedName {
  explicit FixedName(const char* file) { ending = file; }
  ~FixedName() { ending.clear(); }
  FixedName(const FixedName&) = delete;
  FixedName& operator=(const FixedName&) = delete;

  static inline std::string ending;
};

struct HeldRotation {
  explicit HeldRotation(const char* file) : descriptor(open(file, O_RDWR)) { flock(descriptor, LOCK_EX); }
  ~HeldRotation() { close(descriptor); }
  HeldRotation(const HeldRotation&) = delete;
  HeldRotation& operator=(const HeldRotation&) = delete;

  const int descriptor;
};

}  // namespace nerova_zel::test

// Defined here, it serves the logger as well.
extern "C" __attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept {
  const std::string path = from;
  const std::string& ending = nerova_zel::test::FixedName::ending;
  if (!ending.empty() && path.size() >= ending.size() && path.substr(path.size() - ending.size()) == ending) {
    errno = EBUSY;
    return -1;
  }
  return static_cast<int>(syscall(SYS_rename, from, to));
}

#endif
