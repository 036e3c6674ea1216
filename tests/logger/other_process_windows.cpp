#include <windows.h>

#include "logger/other_process.h"

namespace nerova_zel::test {

namespace {

std::intptr_t open_file(const char* file, DWORD share) {
  return reinterpret_cast<std::intptr_t>(
      CreateFileA(file, GENERIC_READ | GENERIC_WRITE, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

HANDLE handle_of(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

}  // namespace

HeldLock::HeldLock(const char* file, For purpose)
    : file_(open_file(file, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE)) {
  OVERLAPPED region = {};
  region.Offset = purpose == For::Rotation ? 0 : 1;
  region.OffsetHigh = 0x7FFFFFFF;
  LockFileEx(handle_of(file_), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &region);
}

HeldLock::~HeldLock() { CloseHandle(handle_of(file_)); }

FixedName::FixedName(const char* file) : file_(open_file(file, FILE_SHARE_READ | FILE_SHARE_WRITE)) {}

FixedName::~FixedName() { CloseHandle(handle_of(file_)); }

}  // namespace nerova_zel::test
