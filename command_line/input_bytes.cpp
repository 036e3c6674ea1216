#include "input_bytes.h"

#include <filesystem>

#include "batch/interruption.h"
#include "failure.h"
#include "file_bytes.h"
#include "platform/files.h"

namespace nerova_zel {

namespace {

void refuse_directory(const std::string& path, const std::string& meant) {
  if (is_folder(std::filesystem::u8path(path))) {
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
    const auto got = Interruption::read_standard_input(bytes.data() + present, count - present);
    if (!got) {
      present = 0;  // what is there of a frame is no frame
      break;
    }
    if (*got == 0) {
      break;
    }
    present += *got;
  }
  bytes.resize(present);
}

}  // namespace nerova_zel
