#pragma once

#include <string>

namespace nerova_zel::test {

/** Lets the allocations of a loaded library be counted and fail, where the program's operator new does not serve it. */
void watch_allocations(const std::string& library_file);

/**
 * Makes operator new of this thread fail, in this program and the library watched, while it lives: either only the
 * allocation of that number, counted from 0, or that one and all after it.
 */
class FailingAllocation {
 public:
  enum class Extent { Once, FromThenOn };

  FailingAllocation(int number, Extent extent);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /** Whether an allocation was made to fail. */
  bool happened() const;

  /** Allocations since construction that have not been freed again. */
  long outstanding() const;
};

/** While it lives, allocations of this thread are neither counted nor made to fail: for the mocks' own. */
class UncountedAllocation {
 public:
  UncountedAllocation();
  ~UncountedAllocation();
  UncountedAllocation(const UncountedAllocation&) = delete;
  UncountedAllocation& operator=(const UncountedAllocation&) = delete;

 private:
  bool was_armed_;
};

}  // namespace nerova_zel::test
