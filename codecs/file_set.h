#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <string>
#include <vector>

#include "image.h"
#include "platform/partial_file.h"

namespace nerova_zel {

/** Bytes that lie somewhere else and stay there. */
struct ByteView {
  const void* data;
  std::size_t size;
};

/**
 * Files that appear together or not at all. Each is first written under a temporary name beside its place; commit gives
 * them their names, each in one step, and replaces files that had them. Where commit fails, replaced files are put
 * back. What was not committed is removed, made directories included. Throws CodecError. Only write may be called by
 * several threads at once.
 */
class FileSet {
 public:
  /** What becomes of a file that has the name of one of the set. */
  enum class Earlier { replaced, refused };

  explicit FileSet(Earlier earlier = Earlier::replaced) : earlier_(earlier) {}
  ~FileSet();
  FileSet(const FileSet&) = delete;
  FileSet& operator=(const FileSet&) = delete;

  /** Makes a directory, and those above it, where missing. */
  void make_directory(const std::filesystem::path& directory);

  /** The parts follow one another in the file. */
  void write(const std::filesystem::path& path, std::initializer_list<ByteView> parts);
  void write(const std::filesystem::path& path, const Bytes& bytes);

  /** At most once, at the end. */
  void commit();

 private:
  void check_free(const std::filesystem::path& path) const;

  struct Entry {
    std::filesystem::path path;
    PartialFile partial;
  };
  std::mutex mutex_;
  std::vector<Entry> entries_;
  std::vector<std::filesystem::path> made_directories_;
  const Earlier earlier_;
  bool committed_ = false;
};

/**
 * Removes what a program that died while it wrote left in a directory: unfinished files that nobody writes, and second
 * names of earlier ones. `is_ours` is asked for the name of each file's place.
 */
void remove_stale_files(const std::filesystem::path& directory, const std::function<bool(const std::string&)>& is_ours);

}  // namespace nerova_zel
