#include "file_set.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "failure.h"

namespace nerova_zel {

namespace fs = std::filesystem;

FileSet::~FileSet() {
  if (committed_) {
    return;
  }
  std::error_code ignored;
  for (const Entry& entry : entries_) {
    fs::remove(entry.temporary, ignored);
  }
  for (auto directory = made_directories_.rbegin(); directory != made_directories_.rend(); ++directory) {
    fs::remove(*directory, ignored);  // goes only when empty
  }
}

void FileSet::make_directory(const fs::path& directory) {
  std::error_code error;
  fs::path so_far;
  for (const fs::path& part : directory) {
    so_far /= part;
    if (fs::create_directory(so_far, error)) {
      made_directories_.push_back(so_far);
    }
    if (!fs::is_directory(so_far)) {
      const std::string reason = fs::exists(so_far) ? so_far.string() + " is a file" : error.message();
      throw Failure("cannot make the directory " + directory.string() + ": " + reason + ".");
    }
  }
}

void FileSet::write(const fs::path& path, const std::vector<unsigned char>& bytes) {
  write(path, {{bytes.data(), bytes.size()}});
}

void FileSet::write(const fs::path& path, std::initializer_list<ByteView> parts) {
  std::error_code error;
  if (fs::is_directory(path, error)) {
    throw Failure("cannot write " + path.string() + ": a directory has that name.");
  }
  fs::path temporary = path.string() + ".partial";
  for (int number = 2; fs::exists(temporary, error); ++number) {
    temporary = path.string() + ".partial" + std::to_string(number);
  }
  errno = 0;
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  if (file) {
    entries_.push_back({temporary, path});
    for (const ByteView& part : parts) {
      file.write(static_cast<const char*>(part.data), static_cast<std::streamsize>(part.size));
    }
    file.close();
  }
  if (!file) {
    throw Failure("cannot write " + path.string() + ": " + (errno != 0 ? std::strerror(errno) : "unknown reason") +
                  ".");
  }
}

void FileSet::commit() {
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    std::error_code error;
    fs::rename(entries_[i].temporary, entries_[i].path, error);
    if (error) {
      std::error_code ignored;
      for (std::size_t k = 0; k < i; ++k) {
        fs::remove(entries_[k].path, ignored);
      }
      throw Failure("cannot write " + entries_[i].path.string() + ": " + error.message() + ".");
    }
  }
  committed_ = true;
}

}  // namespace nerova_zel
