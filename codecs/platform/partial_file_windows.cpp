#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "platform/partial_file.h"
#include "platform/windows_path.h"

namespace nerova_zel {

namespace {

/** Shared for deleting and renaming, and not for writing: so nobody else writes the file, and it can get its name. */
HANDLE open_alone(const std::wstring& name, DWORD how) {
  return CreateFileW(name.c_str(), GENERIC_WRITE, FILE_SHARE_DELETE, nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE handle_of(int descriptor) { return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)); }

/** The system's last error as a number of errno. */
void tell_errno() {
  const std::error_code error(static_cast<int>(GetLastError()), std::system_category());
  const std::error_condition condition = error.default_error_condition();
  errno = condition.category() == std::generic_category() ? condition.value() : EIO;
}

bool told(BOOL done) {
  if (done == FALSE) {
    tell_errno();
  }
  return done != FALSE;
}

struct Identity {
  std::uint64_t device;
  std::uint64_t file;
};

bool identify(HANDLE handle, Identity& identity) {
  BY_HANDLE_FILE_INFORMATION about{};
  if (GetFileInformationByHandle(handle, &about) == FALSE) {
    return false;
  }
  identity = {about.dwVolumeSerialNumber, (std::uint64_t{about.nFileIndexHigh} << 32U) | about.nFileIndexLow};
  return true;
}

}  // namespace

void PartialFile::remove_if_stale(const std::filesystem::path& temporary) {
  const std::wstring name = windows_path(temporary);
  const HANDLE file = open_alone(name, OPEN_EXISTING);
  if (file != INVALID_HANDLE_VALUE) {  // else somebody writes it
    DeleteFileW(name.c_str());
    CloseHandle(file);
  }
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
    DeleteFileW(windows_path(temporary_).c_str());
  }
  close();
}

bool PartialFile::open() {
  constexpr int most_writers = 1000;
  for (int number = 1; number <= most_writers; ++number) {
    std::filesystem::path name = place_;
    name += suffix;
    if (number > 1) {
      name += std::to_string(number);
    }
    const HANDLE file = open_alone(windows_path(name), CREATE_ALWAYS);
    if (file != INVALID_HANDLE_VALUE) {
      descriptor_ = _open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_BINARY);
      if (descriptor_ < 0) {
        CloseHandle(file);
        return false;
      }
      temporary_ = name;
      return true;
    }
    if (GetLastError() != ERROR_SHARING_VIOLATION) {
      break;
    }
  }
  tell_errno();
  return false;
}

bool PartialFile::write(const void* data, std::size_t size) {
  const char* at = static_cast<const char*>(data);
  while (size > 0) {
    constexpr std::size_t most = std::size_t{1} << 30U;
    DWORD written = 0;
    if (!told(WriteFile(handle_of(descriptor_), at, static_cast<DWORD>(std::min(size, most)), &written, nullptr))) {
      return false;
    }
    at += written;
    size -= written;
  }
  return true;
}

bool PartialFile::truncate(std::uint64_t size) {
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<LONGLONG>(size);
  const HANDLE file = handle_of(descriptor_);
  return told(
      static_cast<BOOL>(SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != FALSE && SetEndOfFile(file) != FALSE));
}

bool PartialFile::publish() {
  Identity own{};
  if (!told(static_cast<BOOL>(identify(handle_of(descriptor_), own)))) {
    return false;
  }
  device_ = own.device;
  file_ = own.file;
  if (!told(MoveFileExW(windows_path(temporary_).c_str(), windows_path(place_).c_str(), MOVEFILE_REPLACE_EXISTING))) {
    return false;
  }
  temporary_.clear();
  close();
  return true;
}

bool PartialFile::is_in_place() const {
  const HANDLE present =
      CreateFileW(windows_path(place_).c_str(), FILE_READ_ATTRIBUTES,
                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (present == INVALID_HANDLE_VALUE) {
    return false;
  }
  Identity found{};
  const bool known = identify(present, found);
  CloseHandle(present);
  return known && found.device == device_ && found.file == file_;
}

void PartialFile::close() {
  if (descriptor_ >= 0) {
    _close(descriptor_);
    descriptor_ = -1;
  }
}

}  // namespace nerova_zel
