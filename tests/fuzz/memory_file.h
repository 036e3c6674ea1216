#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace nerova_zel::test {

/** A file that lies in memory and has a name to open it by. */
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* bytes, std::size_t size) : descriptor_(memfd_create("input", 0)) {
    if (descriptor_ < 0 || write(descriptor_, bytes, size) != static_cast<ssize_t>(size)) {
      throw std::runtime_error("cannot make a file in memory");
    }
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace nerova_zel::test
