#include "file_set.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "codec_error.h"
#include "platform/files.h"

namespace nerova_zel {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const fs::path& path, const std::string& reason) {
  throw CodecError(CodecError::Reason::not_writable, "cannot write " + path.u8string() + ": " + reason);
}

std::string last_error() { return errno != 0 ? std::strerror(errno) : "unknown reason"; }

constexpr const char* previous_suffix = ".previous";

/** "one" of "one.partial3" for that suffix; empty for other names. */
std::string without_suffix(const std::string& name, const std::string& suffix) {
  const std::size_t digits = name.find_last_not_of("0123456789");
  const std::size_t end = digits == std::string::npos ? 0 : digits + 1;
  const bool has_it = end > suffix.size() && name.compare(end - suffix.size(), suffix.size(), suffix) == 0;
  return has_it ? name.substr(0, end - suffix.size()) : "";
}

/** Earlier files that are replaced, kept under second names until all is done. */
class Replaced {
 public:
  Replaced() = default;
  Replaced(const Replaced&) = delete;
  Replaced& operator=(const Replaced&) = delete;

  ~Replaced() {
    for (auto file = files_.rbegin(); file != files_.rend(); ++file) {
      // What another program put there since is not ours to remove.
      if (!kept_new_ && file->published != nullptr && file->published->is_in_place()) {
        if (file->kept.empty()) {
          remove_entry(file->path);
        } else {
          std::error_code ignored;
          rename_file(file->kept, file->path, ignored);
        }
      } else if (!file->kept.empty()) {
        remove_entry(file->kept);
      }
    }
  }

  /** Before a file is replaced. */
  void keep(const fs::path& path) {
    files_.push_back({path, {}, nullptr});
    if (!is_taken(path)) {
      return;
    }
    fs::path kept;
    for (int number = 1; kept.empty() || is_taken(kept); ++number) {
      kept = path;
      kept += previous_suffix + std::to_string(number);
    }
    std::error_code error;
    keep_file(path, kept, error);
    if (error) {
      fail(path, "the earlier file cannot be kept (" + error.message() + ")");
    }
    files_.back().kept = kept;
  }

  void published(const PartialFile& file) { files_.back().published = &file; }

  void keep_new() { kept_new_ = true; }

 private:
  struct File {
    fs::path path;
    fs::path kept;  ///< empty when there was none
    const PartialFile* published;
  };
  std::vector<File> files_;
  bool kept_new_ = false;
};

}  // namespace

void remove_stale_files(const fs::path& directory, const std::function<bool(const std::string&)>& is_ours) {
  std::error_code ignored;
  for (const DirectoryEntry& entry : directory_entries(directory, ignored)) {
    const std::string name = entry.name.u8string();
    if (const std::string place = without_suffix(name, PartialFile::suffix); !place.empty() && is_ours(place)) {
      PartialFile::remove_if_stale(directory / entry.name);
    } else if (const std::string kept = without_suffix(name, previous_suffix); !kept.empty() && is_ours(kept)) {
      remove_entry(directory / entry.name);
    }
  }
}

FileSet::~FileSet() {
  entries_.clear();
  if (committed_) {
    return;
  }
  for (auto directory = made_directories_.rbegin(); directory != made_directories_.rend(); ++directory) {
    remove_entry(*directory);  // goes only when empty
  }
}

void FileSet::make_directory(const fs::path& directory) {
  std::error_code error;
  fs::path so_far = directory.root_path();
  for (const fs::path& part : directory.relative_path()) {
    so_far /= part;
    if (nerova_zel::make_directory(so_far, error)) {
      made_directories_.push_back(so_far);
    }
    if (!is_folder(so_far)) {
      const std::string reason = is_taken(so_far) ? so_far.u8string() + " is a file" : error.message();
      throw CodecError(CodecError::Reason::not_writable,
                       "cannot make the directory " + directory.u8string() + ": " + reason);
    }
  }
}

void FileSet::check_free(const fs::path& path) const {
  if (earlier_ == Earlier::refused && is_taken(path)) {
    fail(path, "a file of that name is there already");
  }
}

void FileSet::write(const fs::path& path, const Bytes& bytes) { write(path, {{bytes.data(), bytes.size()}}); }

void FileSet::write(const fs::path& path, std::initializer_list<ByteView> parts) {
  if (is_folder(path)) {
    fail(path, "a directory has that name");
  }
  check_free(path);
  PartialFile partial(path);
  errno = 0;
  if (!partial.open()) {
    fail(path, last_error());
  }
  for (const ByteView& part : parts) {
    if (!partial.write(part.data, part.size)) {
      fail(path, last_error());
    }
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  entries_.push_back({path, std::move(partial)});
}

void FileSet::commit() {
  for (const Entry& entry : entries_) {
    check_free(entry.path);
  }
  Replaced replaced;
  for (Entry& entry : entries_) {
    replaced.keep(entry.path);
    errno = 0;
    if (!entry.partial.publish()) {
      fail(entry.path, last_error());
    }
    replaced.published(entry.partial);
  }
  replaced.keep_new();
  committed_ = true;
}

}  // namespace nerova_zel
