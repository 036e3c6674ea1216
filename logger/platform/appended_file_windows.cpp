#include <windows.h>

#include <atomic>
#include <string>

#include "platform/appended_file.h"

namespace nerova_zel::logger {

namespace {

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE handle_of(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

/** A byte that no file reaches: locked regions are closed to the other processes' reads and writes. */
OVERLAPPED locked_region() {
  OVERLAPPED region = {};
  region.Offset = 0;
  region.OffsetHigh = 0x7FFFFFFF;
  return region;
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
  volume_ = status.dwVolumeSerialNumber;
  identity_ = joined(status.nFileIndexHigh, status.nFileIndexLow);
  return true;
}

void AppendedFile::close() noexcept {
  if (!is_open()) {
    return;
  }
  if (locked_) {
    OVERLAPPED region = locked_region();
    UnlockFileEx(handle_of(handle_), 0, 1, 0, &region);
    locked_ = false;
  }
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

bool AppendedFile::append(const char* text, std::size_t length) const noexcept {
  DWORD written = 0;
  return WriteFile(handle_of(handle_), text, static_cast<DWORD>(length), &written, nullptr) != 0 && written == length;
}

bool AppendedFile::force_to_disk() const noexcept { return FlushFileBuffers(handle_of(handle_)) != 0; }

bool AppendedFile::try_lock() noexcept {
  OVERLAPPED region = locked_region();
  locked_ = LockFileEx(handle_of(handle_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &region) != 0;
  return locked_;
}

// An open file keeps its name until all have closed it; so it gets another name first.
bool discard_file(const std::filesystem::path& path) noexcept {
  static std::atomic<unsigned> count = 0;
  try {
    const std::wstring discarded = path.wstring() + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" +
                                   std::to_wstring(count++) + L".discarded";
    if (MoveFileExW(path.c_str(), discarded.c_str(), 0) == 0) {
      return GetLastError() == ERROR_FILE_NOT_FOUND;
    }
    DeleteFileW(discarded.c_str());
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace nerova_zel::logger
