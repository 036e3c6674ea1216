#pragma once

#include <cstdint>
#include <fstream>
#include <string>

#include "image.h"

namespace nerova_zel {

/** Bytes that are read in parts, so that a page of a large file does not cost the whole file. Not thread-safe. */
class ByteSource {
 public:
  ByteSource() = default;
  virtual ~ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  virtual std::uint64_t size() const = 0;

  /** So many bytes from `offset` on, or fewer where they end; returns how many. Throws CodecError. */
  virtual std::size_t read(std::uint64_t offset, void* room, std::size_t count) = 0;

  /** The same, in memory of their own. */
  Bytes part(std::uint64_t offset, std::size_t count);
};

/** Bytes in memory, which must outlive it. */
class MemorySource : public ByteSource {
 public:
  explicit MemorySource(const Bytes& bytes) : bytes_(bytes) {}

  std::uint64_t size() const override { return bytes_.size(); }
  std::size_t read(std::uint64_t offset, void* room, std::size_t count) override;

 private:
  const Bytes& bytes_;
};

/** A file. Errors are CodecErrors that name it. */
class FileSource : public ByteSource {
 public:
  explicit FileSource(const std::string& path);

  std::uint64_t size() const override { return size_; }
  std::size_t read(std::uint64_t offset, void* room, std::size_t count) override;

 private:
  std::string path_;
  std::ifstream file_;
  std::uint64_t size_ = 0;
};

}  // namespace nerova_zel
