#include "input_bytes.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

#include "codec_error.h"
#include "failure.h"
#include "file_bytes.h"

namespace nerova_zel {

namespace {

void refuse_directory(const std::string& path, const std::string& meant) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw Failure(path + " is a directory; " + meant + " is needed.");
  }
}

}  // namespace

Bytes read_file(const std::string& path, const std::string& meant) {
  refuse_directory(path, meant);
  return read_bytes(path);
}

void read_part_of_file(const std::string& path, const std::string& meant, std::uint64_t offset, std::size_t count,
                       Bytes& bytes) {
  refuse_directory(path, meant);
  read_bytes(path, offset, count, bytes);
}

void read_standard_input(std::size_t count, Bytes& bytes) {
#if defined(_WIN32)
  _setmode(_fileno(stdin), _O_BINARY);
#endif
  bytes.resize(count);
  bytes.resize(std::fread(bytes.data(), 1, count, stdin));
  if (std::ferror(stdin) != 0) {
    throw CodecError(CodecError::Reason::not_readable,
                     std::string("cannot read standard input: ") + std::strerror(errno));
  }
}

}  // namespace nerova_zel
