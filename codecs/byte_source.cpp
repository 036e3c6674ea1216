#include "byte_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "codec_error.h"
#include "platform/files.h"

namespace nerova_zel {

Bytes ByteSource::part(std::uint64_t offset, std::size_t count) {
  const std::uint64_t present = size() - std::min(size(), offset);
  Bytes bytes(static_cast<std::size_t>(std::min<std::uint64_t>(present, count)));
  bytes.resize(read(offset, bytes.data(), bytes.size()));
  return bytes;
}

std::size_t MemorySource::read(std::uint64_t offset, void* room, std::size_t count) {
  const std::uint64_t present = bytes_.size() - std::min<std::uint64_t>(bytes_.size(), offset);
  const auto taken = static_cast<std::size_t>(std::min<std::uint64_t>(present, count));
  if (taken > 0) {
    std::memcpy(room, bytes_.data() + offset, taken);
  }
  return taken;
}

FileSource::FileSource(const std::string& path) : path_(path) {
  const std::filesystem::path place = std::filesystem::u8path(path);
  if (is_folder(place)) {
    throw CodecError(CodecError::Reason::not_readable, path + " is a directory");
  }
  errno = 0;
  file_.open(native_path(place), std::ios::binary | std::ios::ate);
  const std::streamoff length = file_ ? static_cast<std::streamoff>(file_.tellg()) : -1;
  if (length < 0) {
    throw CodecError(CodecError::Reason::not_readable,
                     "cannot read " + path + ": " + (errno != 0 ? std::strerror(errno) : "unknown reason"));
  }
  size_ = static_cast<std::uint64_t>(length);
}

std::size_t FileSource::read(std::uint64_t offset, void* room, std::size_t count) {
  const std::uint64_t present = size_ - std::min(size_, offset);
  const auto taken = static_cast<std::size_t>(std::min<std::uint64_t>(present, count));
  file_.seekg(static_cast<std::streamoff>(offset));
  if (!file_.read(static_cast<char*>(room), static_cast<std::streamsize>(taken))) {
    throw CodecError(CodecError::Reason::not_readable, "cannot read " + path_ + " to its end");
  }
  return taken;
}

}  // namespace nerova_zel
