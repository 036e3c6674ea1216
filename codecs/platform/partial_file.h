#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace nerova_zel {

/**
 * A file that is being written under a temporary name beside its place: the place's name with ".partial" and, where
 * others write to the same place at the same time, a number. What a program that died left there is used again, so it
 * does not stay for ever. Functions that return bool leave the reason in errno when they fail. Not thread-safe.
 */
class PartialFile {
 public:
  static constexpr const char* suffix = ".partial";

  /** Removes a temporary file that no program writes any more. */
  static void remove_if_stale(const std::filesystem::path& temporary);

  explicit PartialFile(std::filesystem::path place);

  /** Removes what was not published. */
  ~PartialFile();
  PartialFile(PartialFile&& other) noexcept;
  PartialFile& operator=(PartialFile&& other) = delete;
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;

  /** Creates the file, empty. Must come first. */
  bool open();

  bool write(const void* data, std::size_t size);

  /** Cuts what was written to its first `size` bytes, after a write that failed halfway. */
  bool truncate(std::uint64_t size);

  /** Gives the file its place's name, in one step; a file that had the name is replaced. */
  bool publish();

  /** Whether the file that was published still has its name, and no other program's took its place since. */
  bool is_in_place() const;

 private:
  void close();

  std::filesystem::path place_;
  std::filesystem::path temporary_;  ///< empty when there is none
  int descriptor_ = -1;
  std::uint64_t device_ = 0;  ///< with file_, what tells the published file from others
  std::uint64_t file_ = 0;
};

}  // namespace nerova_zel
