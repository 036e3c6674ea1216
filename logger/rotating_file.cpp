#include "rotating_file.h"

#include <utility>

namespace nerova_zel::logger {

namespace {

std::filesystem::path numbered(const std::filesystem::path& path, std::uint32_t number) {
  std::filesystem::path result = path;
  result += "." + std::to_string(number);
  return result;
}

/**
 * Frees the path, by moving the files up to the first number that is free. Stops at the first refusal, so that none is
 * lost; what is in the way is moved by the next attempt.
 */
void shift_files(const std::filesystem::path& path, std::uint32_t kept_files) {
  if (kept_files == 0) {
    discard_file(path);
    return;
  }
  std::error_code error;
  std::uint32_t free_number = 1;
  while (free_number < kept_files && std::filesystem::exists(numbered(path, free_number), error)) {
    ++free_number;
  }
  if (error) {
    return;  // nobody knows whether that file is there
  }
  discard_file(numbered(path, free_number));
  for (; free_number > 1 && !error; --free_number) {
    std::filesystem::rename(numbered(path, free_number - 1), numbered(path, free_number), error);
  }
  if (!error) {
    std::filesystem::rename(path, numbered(path, 1), error);
  }
}

}  // namespace

bool RotatingFile::open() {
  if (!place_.empty()) {
    return file_.open(place_);
  }
  std::error_code error;
  std::filesystem::path place = std::filesystem::absolute(std::filesystem::u8path(name_), error);  // or none
  std::filesystem::path canonical = std::filesystem::weakly_canonical(place, error);
  if (!error) {  // as happens when another process rotates in between
    place = std::move(canonical);
  }
  if (file_.open(place)) {
    place_ = std::move(place);
  }
  return file_.is_open();
}

bool RotatingFile::is_full(std::uint64_t size, std::size_t coming) const {
  return size != 0 && max_size_ != 0 && size + coming > max_size_;
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
  if (size && is_full(*size, length)) {
    rotate(length);
    if (!open()) {
      return false;
    }
  }
  return file_.append(text, length);
}

void RotatingFile::rotate(std::size_t coming) {
  AppendedFile locked;  // opened again, since a forked process shares what was open and with it the lock
  if (!locked.open(place_) || !locked.try_lock()) {
    return;
  }
  const auto size = locked.size_at(place_);  // another process may have been faster
  if (size && is_full(*size, coming)) {
    shift_files(place_, kept_files_);
  }
}

}  // namespace nerova_zel::logger
