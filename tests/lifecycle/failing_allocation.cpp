#include "lifecycle/failing_allocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

struct State {
  bool armed = false;
  int remaining = 0;
  bool only_once = false;
  bool happened = false;
  long outstanding = 0;
};

thread_local State state;

}  // namespace

// Replaced here, they serve the libraries loaded by this program as well.
void* operator new(std::size_t size) {
  if (state.armed) {
    const bool fails = state.only_once ? state.remaining == 0 : state.remaining <= 0;
    --state.remaining;
    if (fails) {
      state.happened = true;
      throw std::bad_alloc();
    }
    ++state.outstanding;
  }
  if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  if (state.armed && memory != nullptr) {
    --state.outstanding;
  }
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }

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
