#include "file_bytes.h"

#include <algorithm>

#include "byte_source.h"

namespace nerova_zel {

Bytes read_bytes(const std::string& path) {
  FileSource file(path);
  return file.part(0, static_cast<std::size_t>(file.size()));
}

void read_bytes(const std::string& path, std::uint64_t offset, std::size_t count, Bytes& bytes) {
  FileSource file(path);
  const std::uint64_t present = file.size() - std::min(file.size(), offset);
  bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(present, count)));
  file.read(offset, bytes.data(), bytes.size());
}

std::size_t read_bytes(const std::string& path, std::uint64_t offset, void* room, std::size_t count,
                       const std::function<void(const void*, std::size_t)>& arrived) {
  constexpr std::size_t part = std::size_t{1} << 18U;
  FileSource file(path);
  std::size_t done = 0;
  while (done < count) {
    unsigned char* const place = static_cast<unsigned char*>(room) + done;
    const std::size_t read = file.read(offset + done, place, std::min(part, count - done));
    if (read == 0) {
      break;
    }
    arrived(place, read);
    done += read;
  }
  return done;
}

std::uint64_t file_length(const std::string& path) { return FileSource(path).size(); }

}  // namespace nerova_zel
