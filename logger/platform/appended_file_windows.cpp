#include <windows.h>

#include <atomic>
#include <string>

#include "platform/appended_file.h"

namespace nerova_zel::logger {

namespace {

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE handle_of(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

/** Bytes that no file reaches: what is locked is closed to the other processes' reads and writes. */
enum class Lock : DWORD { Rotation, Append };

OVERLAPPED region_of(Lock lock) {
  OVERLAPPED region = {};
  region.Offset = static_cast<DWORD>(lock);
  region.OffsetHigh = 0x7FFFFFFF;
  return region;
}

bool try_lock_region(std::intptr_t file, Lock lock) {
  OVERLAPPED region = region_of(lock);
  return LockFileEx(handle_of(file), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &region) != 0;
}

void unlock_region(std::intptr_t file, Lock lock) {
  OVERLAPPED region = region_of(lock);
  UnlockFileEx(handle_of(file), 0, 1, 0, &region);
}

std::uint64_t joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

}  // namespace

bool AppendedFile::open(const std::filesystem::path& path) noexcept {
  close();
  // Append access without write access: the system itself finds the end for each append. Locks need read access.
  const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA | FILE_READ_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                                  share_all, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return false;
  }
  BY_HANDLE_FILE_INFORMATION status = {};
  if (GetFileType(file) != FILE_TYPE_DISK || GetFileInformationByHandle(file, &status) == 0) {
    CloseHandle(file);
    return false;
  }
  handle_ = reinterpret_cast<std::intptr_t>(file);
  gave_up_ = false;
  volume_ = status.dwVolumeSerialNumber;
  identity_ = joined(status.nFileIndexHigh, status.nFileIndexLow);
  return true;
}

void AppendedFile::close() noexcept {
  if (!is_open()) {
    return;
  }
  unlock_region(handle_, Lock::Rotation);
  CloseHandle(handle_of(handle_));
  handle_ = none;
}

std::optional<std::uint64_t> AppendedFile::size_at(const std::filesystem::path& path) const noexcept {
  const HANDLE file = CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, share_all, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return std::nullopt;
  }
  BY_HANDLE_FILE_INFORMATION status = {};
  const bool known = GetFileInformationByHandle(file, &status) != 0;
  CloseHandle(file);
  if (!known || status.dwVolumeSerialNumber != volume_ ||
      joined(status.nFileIndexHigh, status.nFileIndexLow) != identity_) {
    return std::nullopt;
  }
  return joined(status.nFileSizeHigh, status.nFileSizeLow);
}

// Local file systems find the end and write in one step; servers and emulations of them do not, hence the lock. A
// process that was stopped while it held it must not stop the others: after a while they go without, and wait again
// only once they have had it.
bool AppendedFile::append(const char* text, std::size_t length) noexcept {
  constexpr ULONGLONG patience = 2000;  // milliseconds: a busy disk takes hundreds
  constexpr int tries_without_pause = 100;
  constexpr int least_tries = 200;  // a machine that stood still stopped the holder, too
  const ULONGLONG start = GetTickCount64();
  bool locked = try_lock_region(handle_, Lock::Append);
  for (int i = 0; !locked && !gave_up_ && (i < least_tries || GetTickCount64() - start < patience); ++i) {
    Sleep(i < tries_without_pause ? 0 : 1);
    locked = try_lock_region(handle_, Lock::Append);
  }
  gave_up_ = !locked;
  DWORD written = 0;
  const bool done = WriteFile(handle_of(handle_), text, static_cast<DWORD>(length), &written, nullptr) != 0;
  if (locked) {
    unlock_region(handle_, Lock::Append);
  }
  return done && written == length;
}

bool AppendedFile::force_to_disk() const noexcept { return FlushFileBuffers(handle_of(handle_)) != 0; }

bool AppendedFile::try_lock() const noexcept { return try_lock_region(handle_, Lock::Rotation); }

// An open file keeps its name until all have closed it; so it gets another name first.
void discard_file(const std::filesystem::path& path) noexcept {
  static std::atomic<unsigned> count = 0;
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return;
  }
  try {
    const std::wstring discarded = path.wstring() + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" +
                                   std::to_wstring(count++) + L".discarded";
    if (MoveFileExW(path.c_str(), discarded.c_str(), 0) != 0) {
      DeleteFileW(discarded.c_str());
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): the file stays
  }
}

}  // namespace nerova_zel::logger
