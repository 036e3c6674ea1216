#include "file_bytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "codec_error.h"

namespace nerova_zel {

namespace {

/** Opens a file and finds its length. */
std::uint64_t open(const std::string& path, std::ifstream& file) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw CodecError(CodecError::Reason::not_readable, path + " is a directory");
  }
  errno = 0;
  file.open(path, std::ios::binary | std::ios::ate);
  const std::streamoff length = file ? static_cast<std::streamoff>(file.tellg()) : -1;
  if (length < 0) {
    throw CodecError(CodecError::Reason::not_readable,
                     "cannot read " + path + ": " + (errno != 0 ? std::strerror(errno) : "unknown reason"));
  }
  return static_cast<std::uint64_t>(length);
}

void read(const std::string& path, std::ifstream& file, std::uint64_t offset, Bytes& bytes) {
  file.seekg(static_cast<std::streamoff>(offset));
  if (!file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()))) {
    throw CodecError(CodecError::Reason::not_readable, "cannot read " + path + " to its end");
  }
}

}  // namespace

Bytes read_bytes(const std::string& path) {
  std::ifstream file;
  Bytes bytes(static_cast<std::size_t>(open(path, file)));
  read(path, file, 0, bytes);
  return bytes;
}

void read_bytes(const std::string& path, std::uint64_t offset, std::size_t count, Bytes& bytes) {
  std::ifstream file;
  const std::uint64_t length = open(path, file);
  const std::uint64_t present = length - std::min(length, offset);
  bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(present, count)));
  read(path, file, offset, bytes);
}

std::uint64_t file_length(const std::string& path) {
  std::ifstream file;
  return open(path, file);
}

}  // namespace nerova_zel
