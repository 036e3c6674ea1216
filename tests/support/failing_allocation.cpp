#include "support/failing_allocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

#if defined(_WIN32)
#include "support/redirected_import.h"
#endif

namespace {

struct State {
  bool armed = false;
  int remaining = 0;
  bool only_once = false;
  bool happened = false;
  long outstanding = 0;
};

thread_local State state;

/** NULL where the allocation is made to fail. */
void* allocate(std::size_t size) {
  if (state.armed) {
    const bool fails = state.only_once ? state.remaining == 0 : state.remaining <= 0;
    --state.remaining;
    if (fails) {
      state.happened = true;
      return nullptr;
    }
    ++state.outstanding;
  }
  return std::malloc(size);
}

void release(void* memory) noexcept {
  if (state.armed && memory != nullptr) {
    --state.outstanding;
  }
  std::free(memory);
}

}  // namespace

#if defined(_WIN32)

namespace nerova_zel::test {

namespace {

extern "C" void* counted_malloc(std::size_t size) { return allocate(size); }
extern "C" void counted_free(void* memory) { release(memory); }

}  // namespace

// A DLL has an operator new of its own, which comes down to malloc.
void watch_allocations(const std::string& library_file) {
  redirect_import(library_file, "malloc", reinterpret_cast<void*>(counted_malloc));
  redirect_import(library_file, "free", reinterpret_cast<void*>(counted_free));
}

}  // namespace nerova_zel::test

#else

// Replaced here, they serve the libraries loaded by this program as well.
void* operator new(std::size_t size) {
  if (void* const memory = allocate(size == 0 ? 1 : size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return allocate(size == 0 ? 1 : size); }

void operator delete(void* memory) noexcept { release(memory); }

void operator delete(void* memory, std::size_t /*size*/) noexcept { release(memory); }

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { release(memory); }

void nerova_zel::test::watch_allocations(const std::string& /*library_file*/) {}

#endif

namespace nerova_zel::test {

FailingAllocation::FailingAllocation(int number, Extent extent) {
  state = {true, number, extent == Extent::Once, false, 0};
}

FailingAllocation::~FailingAllocation() { state.armed = false; }

bool FailingAllocation::happened() const { return state.happened; }

long FailingAllocation::outstanding() const { return state.outstanding; }

UncountedAllocation::UncountedAllocation() : was_armed_(std::exchange(state.armed, false)) {}

UncountedAllocation::~UncountedAllocation() { state.armed = was_armed_; }

}  // namespace nerova_zel::test
