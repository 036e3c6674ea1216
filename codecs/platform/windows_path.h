#pragma once

#include <filesystem>
#include <string>

namespace nerova_zel {

/**
 * A path as Windows takes it whatever its length: functions refuse one of 260 characters or more, names for temporary
 * files and all, unless it is absolute and begins so. Short paths stay as they are.
 */
inline std::wstring windows_path(const std::filesystem::path& path) {
  constexpr std::size_t surely_short = 240;
  const std::wstring given = path.wstring();
  if (given.compare(0, 4, L"\\\\?\\") == 0 || given.compare(0, 4, L"\\\\.\\") == 0) {
    return given;
  }
  std::error_code error;
  // Lexically, because the system takes what begins so by its letters.
  const std::wstring whole = std::filesystem::absolute(path, error).lexically_normal().make_preferred().wstring();
  if (error || whole.size() < surely_short) {
    return given;
  }
  return whole.compare(0, 2, L"\\\\") == 0 ? L"\\\\?\\UNC" + whole.substr(1) : L"\\\\?\\" + whole;
}

}  // namespace nerova_zel
