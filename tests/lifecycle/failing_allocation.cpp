#include "lifecycle/failing_allocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
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

/** Makes a module call ours wherever it calls the imported function of that name. */
void redirect_import(unsigned char* module, const std::string& name, void* ours) {
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
  const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
  const auto imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(module + imports); from->Name != 0; ++from) {
    const auto* entry = reinterpret_cast<const IMAGE_THUNK_DATA*>(module + from->OriginalFirstThunk);
    auto* address = reinterpret_cast<void**>(module + from->FirstThunk);
    for (; entry->u1.AddressOfData != 0; ++entry, ++address) {
      if (IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal)) {
        continue;
      }
      const auto* const by_name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(module + entry->u1.AddressOfData);
      if (name == reinterpret_cast<const char*>(by_name->Name)) {
        DWORD previous = 0;
        VirtualProtect(address, sizeof(*address), PAGE_READWRITE, &previous);
        *address = ours;
        VirtualProtect(address, sizeof(*address), previous, &previous);
        return;
      }
    }
  }
  throw std::logic_error("the library does not import " + name);
}

}  // namespace

// A DLL has an operator new of its own, which comes down to malloc.
void watch_allocations(const LoadedLibrary& library, const std::string& library_file) {
  auto* const module = reinterpret_cast<unsigned char*>(GetModuleHandleA(library_file.c_str()));
  redirect_import(module, "malloc", reinterpret_cast<void*>(counted_malloc));
  redirect_import(module, "free", reinterpret_cast<void*>(counted_free));
  // Its first exception makes the runtime keep memory for the thread, which is not the library's to give back.
  {
    const FailingAllocation failing(0, FailingAllocation::Extent::Once);
    library.module_initialize();
  }
  library.module_terminate();
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

void operator delete(void* memory) noexcept { release(memory); }

void operator delete(void* memory, std::size_t /*size*/) noexcept { release(memory); }

void nerova_zel::test::watch_allocations(const LoadedLibrary& /*library*/, const std::string& /*file*/) {}

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
