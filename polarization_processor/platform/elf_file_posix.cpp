#include "platform/elf_file_posix.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <optional>

namespace nerova_zel {

namespace {

/** Of either word size. */
constexpr std::uint64_t smallest_header = sizeof(Elf64_Ehdr);

/** A file open for reading; closed on destruction. */
class File {
 public:
  explicit File(const char* path) noexcept : descriptor_(open(path, O_RDONLY | O_CLOEXEC)) {}
  ~File() { close(descriptor_); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  template <class Value>
  bool read(Value& value, std::uint64_t offset) const noexcept {
    return pread(descriptor_, &value, sizeof(value), static_cast<off_t>(offset)) == static_cast<ssize_t>(sizeof(value));
  }

  /** Nothing of a file that could not be opened. */
  std::optional<std::uint64_t> size() const noexcept {
    struct stat status = {};
    return fstat(descriptor_, &status) == 0 ? std::optional<std::uint64_t>(static_cast<std::uint64_t>(status.st_size))
                                            : std::nullopt;
  }

 private:
  int descriptor_;
};

}  // namespace

bool is_whole_library(const char* path) noexcept {
  const File file(path);
  const auto size = file.size();
  if (!size) {
    return true;
  }
  if (*size < smallest_header) {
    return false;
  }
  ElfW(Ehdr) header = {};
  file.read(header, 0);
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_phentsize != sizeof(ElfW(Phdr))) {
    return true;
  }
  for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment;
    if (!file.read(segment, header.e_phoff + i * sizeof(segment))) {
      return false;
    }
    const std::uint64_t end = std::uint64_t{segment.p_offset} + segment.p_filesz;
    if (end > *size || end < segment.p_filesz) {  // the sum of damaged numbers may wrap
      return false;
    }
  }
  return true;
}

}  // namespace nerova_zel
