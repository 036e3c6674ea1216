#include "input_bytes.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "batch/interruption.h"
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
  bytes.resize(count);
  std::size_t present = 0;
  while (present < count) {
    if (!Interruption::wait_to_read(STDIN_FILENO)) {
      present = 0;  // what is there of a frame is no frame
      break;
    }
    const ssize_t got = read(STDIN_FILENO, bytes.data() + present, count - present);
    if (got == 0) {
      break;
    }
    if (got < 0 && errno != EINTR && errno != EAGAIN) {
      throw CodecError(CodecError::Reason::not_readable,
                       std::string("cannot read standard input: ") + std::strerror(errno));
    }
    present += got > 0 ? static_cast<std::size_t>(got) : 0;
  }
  bytes.resize(present);
}

}  // namespace nerova_zel
