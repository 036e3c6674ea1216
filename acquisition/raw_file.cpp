#include "raw_file.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "failure.h"

namespace nerova_zel {

RawFile::RawFile(std::string path, std::size_t frame_bytes, bool replace)
    : path_(std::move(path)), frame_bytes_(frame_bytes), replace_(replace), partial_(std::filesystem::path(path_)) {
  check_free();
  if (!partial_.open()) {
    fail("made", errno);
  }
}

void RawFile::check_free() const {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path_, error);
  if (!replace_ && std::filesystem::exists(status)) {
    fail("made", EEXIST);
  }
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    throw Failure(path_ + " is no ordinary file; a recording needs one.");
  }
}

void RawFile::fail(const char* action, int reason) const {
  throw Failure(path_ + " cannot be " + action + ": " + std::generic_category().message(reason) + ".");
}

void RawFile::append(const unsigned char* frame) {
  if (!partial_.write(frame, frame_bytes_)) {
    const int reason = errno;
    if (!partial_.truncate(frames_ * frame_bytes_)) {
      fail("written, and its last frame is cut short", reason);
    }
    fail("written", reason);
  }
  ++frames_;
}

void RawFile::publish() {
  check_free();
  if (!partial_.publish()) {
    fail("written", errno);
  }
}

}  // namespace nerova_zel
