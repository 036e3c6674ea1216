#pragma once

#include <cstdint>

namespace nerova_zel::test {

/** What another process that rotates or appends would have locked of a log file, until destruction. */
class HeldLock {
 public:
  enum class For { Rotation, Append };  ///< appends are locked on Windows only

  HeldLock(const char* file, For purpose);
  ~HeldLock();
  HeldLock(const HeldLock&) = delete;
  HeldLock& operator=(const HeldLock&) = delete;

 private:
  std::intptr_t file_;
};

/** While it lives, the file cannot be renamed, as if another process had it open without sharing its name. */
class FixedName {
 public:
  explicit FixedName(const char* file);
  ~FixedName();
  FixedName(const FixedName&) = delete;
  FixedName& operator=(const FixedName&) = delete;

 private:
  std::intptr_t file_ = 0;
};

}  // namespace nerova_zel::test
