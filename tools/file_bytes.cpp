#include "file_bytes.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "failure.h"

namespace nerova_zel {

std::vector<unsigned char> read_file(const std::string& path, const std::string& meant) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw Failure(path + " is a directory; " + meant + " is needed.");
  }
  errno = 0;
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff length = file ? static_cast<std::streamoff>(file.tellg()) : -1;
  if (length < 0) {
    throw Failure("cannot read " + path + ": " + (errno != 0 ? std::strerror(errno) : "unknown reason") + ".");
  }
  std::vector<unsigned char> bytes(static_cast<std::size_t>(length));
  file.seekg(0);
  if (!file.read(reinterpret_cast<char*>(bytes.data()), length)) {
    throw Failure("cannot read " + path + " to its end.");
  }
  return bytes;
}

}  // namespace nerova_zel
