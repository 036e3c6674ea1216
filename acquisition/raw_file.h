#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/partial_file.h"

namespace nerova_zel {

/**
 * A file of frames of equal size that appears when it is published; until then, and if it never is, a file that has its
 * name stays as it is. For one thread.
 */
class RawFile {
 public:
  /** Throws Failure where the file cannot be made, or is there already and not to be replaced. */
  RawFile(std::string path, std::size_t frame_bytes, bool replace);

  /** Appends a frame. Throws Failure, where the file keeps the whole frames before it. */
  void append(const unsigned char* frame);

  /** Gives the file its name. At most once, at the end. Throws Failure. */
  void publish();

  std::uint64_t frames() const { return frames_; }

 private:
  void check_free() const;
  [[noreturn]] void fail(const char* action, int reason) const;

  std::string path_;
  std::size_t frame_bytes_;
  bool replace_;
  PartialFile partial_;
  std::uint64_t frames_ = 0;
};

}  // namespace nerova_zel
