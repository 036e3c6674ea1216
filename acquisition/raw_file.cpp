#include "raw_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "failure.h"

namespace nerova_zel {

RawFile::RawFile(const std::string& path, std::size_t frame_bytes, bool replace)
    : path_(path),
      frame_bytes_(frame_bytes),
      descriptor_(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (replace ? O_TRUNC : O_EXCL), 0666)) {
  if (descriptor_ < 0) {
    fail("made");
  }
}

RawFile::~RawFile() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
  if (frames_ == 0) {
    unlink(path_.c_str());
  }
}

void RawFile::fail(const char* action) const {
  throw Failure(path_ + " cannot be " + action + ": " + std::strerror(errno) + ".");
}

void RawFile::append(const unsigned char* frame) {
  std::size_t written = 0;
  while (written < frame_bytes_) {
    const ssize_t part = write(descriptor_, frame + written, frame_bytes_ - written);
    if (part < 0 && errno == EINTR) {
      continue;
    }
    if (part <= 0) {
      const int reason = errno;
      if (ftruncate(descriptor_, static_cast<off_t>(frames_ * frame_bytes_)) != 0) {
        errno = reason;
        fail("written, and its last frame is cut short");
      }
      errno = reason;
      fail("written");
    }
    written += static_cast<std::size_t>(part);
  }
  ++frames_;
}

void RawFile::close() {
  if (::close(std::exchange(descriptor_, -1)) != 0) {
    fail("written");
  }
}

}  // namespace nerova_zel
