#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace nerova_zel {

// Texts that name files are in UTF-8 on every system: std::filesystem::u8path makes paths of them, u8string makes texts
// of paths. What follows takes long paths on Windows, too, which the standard library's functions do not.

/** A path as streams and the system's functions take it. */
std::filesystem::path native_path(const std::filesystem::path& path);

/** What lies at a path. */
struct FileFacts {
  bool is_directory = false;
  bool is_file = false;  ///< a regular one
  std::uint64_t size = 0;
  /** When its content changed last, since the start of 1970, UTC. */
  std::chrono::nanoseconds changed{0};
};

/** Of what a link leads to; nothing where nothing is, or cannot be asked. */
std::optional<FileFacts> file_facts(const std::filesystem::path& path);

inline bool is_folder(const std::filesystem::path& path) {
  const auto facts = file_facts(path);
  return facts && facts->is_directory;
}

/** Whether anything has the name, be it a link that leads nowhere. */
bool is_taken(const std::filesystem::path& path);

struct DirectoryEntry {
  std::filesystem::path name;
  bool is_file = false;       ///< or a link to one
  bool is_directory = false;  ///< no link
};

/** What lies in a directory, in no order. */
std::vector<DirectoryEntry> directory_entries(const std::filesystem::path& directory, std::error_code& error);

/** Whether it was made; what is above it must be there. */
bool make_directory(const std::filesystem::path& directory, std::error_code& error);

/** A file, or a directory if it is empty; nothing else happens where it cannot be removed. */
void remove_entry(const std::filesystem::path& path);

/** Gives a file another name, in one step; a file that had the name is replaced. */
void rename_file(const std::filesystem::path& from, const std::filesystem::path& to, std::error_code& error);

/** Gives a file a second name, or where that cannot be a copy with its time. The second name must be free. */
void keep_file(const std::filesystem::path& path, const std::filesystem::path& kept, std::error_code& error);

}  // namespace nerova_zel
