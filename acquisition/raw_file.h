#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace nerova_zel {

/** A new file of frames of equal size. For one thread. */
class RawFile {
 public:
  /** Throws Failure where the file cannot be made; one that is there already stays, unless it is to be replaced. */
  RawFile(const std::string& path, std::size_t frame_bytes, bool replace);
  /** Removes a file without frames. */
  ~RawFile();
  RawFile(const RawFile&) = delete;
  RawFile& operator=(const RawFile&) = delete;

  /** Appends a frame. Throws Failure, where the file keeps the whole frames before it. */
  void append(const unsigned char* frame);

  /** Closes it. Throws Failure where the system says only now that it could not write. */
  void close();

  std::uint64_t frames() const { return frames_; }

 private:
  [[noreturn]] void fail(const char* action) const;

  std::string path_;
  std::size_t frame_bytes_;
  int descriptor_;
  std::uint64_t frames_ = 0;
};

}  // namespace nerova_zel
