#include "support/guarded_buffer.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace nerova_zel::test {

namespace {

constexpr unsigned char pattern = 0xA5;

enum class Access { None, Read, ReadWrite };

#if defined(_WIN32)

std::size_t page_size() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwPageSize;
}

void* map_pages(std::size_t bytes) { return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE); }

void unmap_pages(void* mapping, std::size_t) { VirtualFree(mapping, 0, MEM_RELEASE); }

bool set_access(void* start, std::size_t bytes, Access access) {
  DWORD previous = 0;
  const DWORD wanted =
      access == Access::None ? PAGE_NOACCESS : (access == Access::Read ? PAGE_READONLY : PAGE_READWRITE);
  return VirtualProtect(start, bytes, wanted, &previous) != 0;
}

#else

std::size_t page_size() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

void* map_pages(std::size_t bytes) {
  void* const mapping = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return mapping == MAP_FAILED ? nullptr : mapping;
}

void unmap_pages(void* mapping, std::size_t bytes) { munmap(mapping, bytes); }

bool set_access(void* start, std::size_t bytes, Access access) {
  const int wanted =
      access == Access::None ? PROT_NONE : (access == Access::Read ? PROT_READ : (PROT_READ | PROT_WRITE));
  return mprotect(start, bytes, wanted) == 0;
}

#endif

void require_access(void* start, std::size_t bytes, Access access) {
  if (!set_access(start, bytes, access)) {
    throw std::runtime_error("cannot change the protection of pages");
  }
}

bool holds_pattern(const unsigned char* first, const unsigned char* last) {
  return first == last ||
         (*first == pattern && std::memcmp(first, first + 1, static_cast<std::size_t>(last - first) - 1) == 0);
}

}  // namespace

GuardedBuffer::GuardedBuffer(std::size_t capacity)
    : page_(page_size()), size_(std::max<std::size_t>(1, (capacity + page_ - 1) / page_) * page_) {
  mapping_ = static_cast<unsigned char*>(map_pages(size_ + 2 * page_));
  if (mapping_ == nullptr) {
    throw std::bad_alloc();
  }
  memory_ = mapping_ + page_;
  require_access(mapping_, page_, Access::None);
  require_access(memory_ + size_, page_, Access::None);
}

GuardedBuffer::~GuardedBuffer() { unmap_pages(mapping_, size_ + 2 * page_); }

void* GuardedBuffer::place(std::size_t bytes, Placement placement) {
  if (bytes > size_) {
    throw std::length_error("the block is larger than the guarded buffer");
  }
  std::memset(memory_, pattern, size_);
  block_ = placement == Placement::AfterGuard ? memory_ : memory_ + size_ - bytes;
  block_size_ = bytes;
  return block_;
}

bool GuardedBuffer::surroundings_intact() const {
  return holds_pattern(memory_, block_) && holds_pattern(block_ + block_size_, memory_ + size_);
}

void GuardedBuffer::set_writable(bool writable) {
  require_access(memory_, size_, writable ? Access::ReadWrite : Access::Read);
}

}  // namespace nerova_zel::test
