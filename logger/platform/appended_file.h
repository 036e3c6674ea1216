#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace nerova_zel::logger {

/**
 * A file that several processes append to. Raises nothing unless stated; where false is returned, the system refused.
 */
class AppendedFile {
 public:
  AppendedFile() = default;
  ~AppendedFile() { close(); }
  AppendedFile(const AppendedFile&) = delete;
  AppendedFile& operator=(const AppendedFile&) = delete;

  /** Made when it is missing. Other processes may rename and remove it while it is open. Closes what was open. */
  bool open(const std::filesystem::path& path) noexcept;

  /** Lets go of a lock, too. */
  void close() noexcept;

  bool is_open() const noexcept { return handle_ != none; }

  /** Present size in bytes; nothing when the path no longer leads to this file. A device has size 0. */
  std::optional<std::uint64_t> size_at(const std::filesystem::path& path) const noexcept;

  /** All at once at the present end, whoever else appends. On failure nothing is left of it. On Windows waits up to 2 s
   * for another process's append, and then goes without its lock. */
  bool append(const char* text, std::size_t length) noexcept;

  /** What was appended is on the disk afterwards. */
  bool force_to_disk() const noexcept;

  /** Excludes others, in this process too, who lock the same file, until it is closed; never waits. false: another has
   * it. */
  bool try_lock() const noexcept;

 private:
  static constexpr std::intptr_t none = -1;

  std::intptr_t handle_ = none;
  std::uint64_t volume_ = 0;  ///< with identity_: which file it is, whatever its name
  std::uint64_t identity_ = 0;
  [[maybe_unused]] bool gave_up_ = false;  ///< waiting for another process's append, where the platform needs it
};

/** Removes the file, even if other processes have it open: unless the system refuses, its name is free afterwards. */
void discard_file(const std::filesystem::path& path) noexcept;

}  // namespace nerova_zel::logger
