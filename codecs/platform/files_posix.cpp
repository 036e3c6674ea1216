#include <sys/stat.h>

#include "platform/files.h"

namespace nerova_zel {

namespace fs = std::filesystem;

fs::path native_path(const fs::path& path) { return path; }

std::optional<FileFacts> file_facts(const fs::path& path) {
  struct stat found {};
  if (stat(path.c_str(), &found) != 0) {
    return std::nullopt;
  }
  return FileFacts{S_ISDIR(found.st_mode), S_ISREG(found.st_mode), static_cast<std::uint64_t>(found.st_size),
                   std::chrono::seconds(found.st_mtim.tv_sec) + std::chrono::nanoseconds(found.st_mtim.tv_nsec)};
}

bool is_taken(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

std::vector<DirectoryEntry> directory_entries(const fs::path& directory, std::error_code& error) {
  std::vector<DirectoryEntry> found;
  fs::directory_iterator entries(directory, error);
  for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
    std::error_code gone;
    found.push_back(
        {entries->path().filename(), entries->is_regular_file(gone), fs::is_directory(entries->symlink_status(gone))});
  }
  return found;
}

bool make_directory(const fs::path& directory, std::error_code& error) {
  return fs::create_directory(directory, error);
}

void remove_entry(const fs::path& path) {
  std::error_code ignored;
  fs::remove(path, ignored);
}

void rename_file(const fs::path& from, const fs::path& to, std::error_code& error) { fs::rename(from, to, error); }

void keep_file(const fs::path& path, const fs::path& kept, std::error_code& error) {
  fs::create_hard_link(path, kept, error);
  if (!error) {
    return;
  }
  fs::copy_file(path, kept, error);  // not every file system has links
  if (!error) {
    fs::last_write_time(kept, fs::last_write_time(path, error), error);
  }
  if (error) {
    remove_entry(kept);
  }
}

}  // namespace nerova_zel
