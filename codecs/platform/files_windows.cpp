#include <windows.h>

#include "platform/files.h"
#include "platform/windows_path.h"

namespace nerova_zel {

namespace fs = std::filesystem;

namespace {

std::error_code last_error() { return {static_cast<int>(GetLastError()), std::system_category()}; }

std::error_code error_unless(BOOL done) { return done != FALSE ? std::error_code() : last_error(); }

std::uint64_t joined(DWORD high, DWORD low) { return (std::uint64_t{high} << 32U) | low; }

/** Windows counts steps of 100 ns since the start of 1601. */
std::chrono::nanoseconds since_1970(const FILETIME& time) {
  constexpr std::int64_t between = 116444736000000000;
  const auto steps = static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime)) - between;
  return std::chrono::nanoseconds(100 * steps);
}

DirectoryEntry entry_of(const WIN32_FIND_DATAW& found) {
  const bool is_directory = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const bool is_link = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  return {fs::path(found.cFileName), !is_directory, is_directory && !is_link};
}

}  // namespace

fs::path native_path(const fs::path& path) { return windows_path(path); }

std::optional<FileFacts> file_facts(const fs::path& path) {
  // Opened, so that links are followed; no right but to ask.
  const HANDLE file = CreateFileW(windows_path(path).c_str(), FILE_READ_ATTRIBUTES,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return std::nullopt;
  }
  BY_HANDLE_FILE_INFORMATION about{};
  const bool known = GetFileInformationByHandle(file, &about) != FALSE;
  const bool on_disk = GetFileType(file) == FILE_TYPE_DISK;
  CloseHandle(file);
  if (!known) {
    return FileFacts{};  // a device
  }
  const bool is_directory = (about.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return FileFacts{is_directory, on_disk && !is_directory, joined(about.nFileSizeHigh, about.nFileSizeLow),
                   since_1970(about.ftLastWriteTime)};
}

bool is_taken(const fs::path& path) {
  return GetFileAttributesW(windows_path(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::vector<DirectoryEntry> directory_entries(const fs::path& directory, std::error_code& error) {
  std::vector<DirectoryEntry> entries;
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW(windows_path(directory / L"*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) {
    // The root of an empty drive holds not even itself.
    error = GetLastError() == ERROR_FILE_NOT_FOUND ? std::error_code() : last_error();
    return entries;
  }
  do {
    if (const fs::path name = found.cFileName; name != L"." && name != L"..") {
      entries.push_back(entry_of(found));
    }
  } while (FindNextFileW(search, &found) != FALSE);
  error = GetLastError() == ERROR_NO_MORE_FILES ? std::error_code() : last_error();
  FindClose(search);
  return entries;
}

bool make_directory(const fs::path& directory, std::error_code& error) {
  error = error_unless(CreateDirectoryW(windows_path(directory).c_str(), nullptr));
  return !error;
}

void remove_entry(const fs::path& path) {
  const std::wstring name = windows_path(path);
  if (DeleteFileW(name.c_str()) == FALSE) {
    RemoveDirectoryW(name.c_str());
  }
}

void rename_file(const fs::path& from, const fs::path& to, std::error_code& error) {
  error = error_unless(MoveFileExW(windows_path(from).c_str(), windows_path(to).c_str(), MOVEFILE_REPLACE_EXISTING));
}

void keep_file(const fs::path& path, const fs::path& kept, std::error_code& error) {
  const std::wstring from = windows_path(path);
  const std::wstring to = windows_path(kept);
  // Not every file system has links. A copy has the time of its original.
  error = error_unless(static_cast<BOOL>(CreateHardLinkW(to.c_str(), from.c_str(), nullptr) != FALSE ||
                                         CopyFileW(from.c_str(), to.c_str(), TRUE) != FALSE));
}

}  // namespace nerova_zel
