#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "platform/appended_file.h"

namespace nerova_zel::logger {

/**
 * The log file, which other processes may append to and rotate at the same time. Opened by the first append. No append
 * waits for a rotation: meanwhile the others go on in the file that they have open.
 *
 * Not for several threads at once.
 */
class RotatingFile {
 public:
  /**
   * @param name UTF-8; if relative, to the working directory in which the file is opened first.
   * @param max_size bytes above which the file becomes NAME.1, that NAME.2 and so on up to kept_files; 0: never.
   */
  RotatingFile(std::string name, std::uint64_t max_size, std::uint32_t kept_files)
      : name_(std::move(name)), max_size_(max_size), kept_files_(kept_files) {}

  /** Whole lines. Returns false, with nothing appended, when the system refuses. Throws std::bad_alloc. */
  bool append(const char* text, std::size_t length);

  /** Returns false when the system refuses. */
  bool force_to_disk() const { return file_.force_to_disk(); }

 private:
  bool open();
  bool is_full(std::uint64_t size, std::size_t coming) const;
  void rotate(std::size_t coming);

  const std::string name_;
  const std::uint64_t max_size_;
  const std::uint32_t kept_files_;
  std::filesystem::path place_;  ///< absolute and without links: rotated where it lies
  AppendedFile file_;
};

}  // namespace nerova_zel::logger
