#include "rotating_file.h"

namespace nerova_zel::logger {

namespace {

std::filesystem::path numbered(const std::filesystem::path& path, std::uint32_t number) {
  std::filesystem::path result = path;
  result += "." + std::to_string(number);
  return result;
}

/** Stops at the first refusal, so that no file is lost; what is in the way is moved by the next attempt. */
void shift_files(const std::filesystem::path& path, std::uint32_t kept_files) {
  if (kept_files == 0) {
    discard_file(path);
    return;
  }
  if (!discard_file(numbered(path, kept_files))) {
    return;
  }
  for (std::uint32_t number = kept_files - 1; number > 0; --number) {
    std::error_code error;
    std::filesystem::rename(numbered(path, number), numbered(path, number + 1), error);
    if (error && error != std::errc::no_such_file_or_directory) {
      return;
    }
  }
  std::error_code ignored;
  std::filesystem::rename(path, numbered(path, 1), ignored);
}

}  // namespace

bool RotatingFile::open() {
  if (place_.empty()) {
    std::error_code error;
    const std::filesystem::path place =
        std::filesystem::weakly_canonical(std::filesystem::absolute(std::filesystem::u8path(name_), error), error);
    if (error || !file_.open(place)) {
      return false;
    }
    place_ = place;
    return true;
  }
  return file_.open(place_);
}

bool RotatingFile::append(const char* text, std::size_t length) {
  if (!file_.is_open() && !open()) {
    return false;
  }
  auto size = file_.size_at(place_);
  if (!size) {  // rotated by another process, or removed
    if (!open()) {
      return false;
    }
    size = file_.size_at(place_);
  }
  if (size && *size != 0 && max_size_ != 0 && *size + length > max_size_) {
    rotate(length);
    if (!open()) {
      return false;
    }
  }
  return file_.append(text, length);
}

void RotatingFile::rotate(std::size_t coming) {
  AppendedFile locked;  // opened anew, since a forked process shares what was open and with it the lock
  if (!locked.open(place_) || !locked.try_lock()) {
    return;
  }
  const auto size = locked.size_at(place_);  // another process may have been faster
  if (size && *size + coming > max_size_) {
    shift_files(place_, kept_files_);
  }
}

}  // namespace nerova_zel::logger
