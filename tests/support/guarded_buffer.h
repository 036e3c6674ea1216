#pragma once

#include <array>
#include <cstddef>
#include <memory>

namespace nerova_zel::test {

/** Memory between two pages on which any access faults. Not copyable; freed on destruction. */
class GuardedBuffer {
 public:
  /** Where a block lies: starting right after the first forbidden page or ending right before the second. */
  enum class Placement { AfterGuard, BeforeGuard };

  /** Room for one block of up to capacity bytes. Throws std::bad_alloc. */
  explicit GuardedBuffer(std::size_t capacity);
  ~GuardedBuffer();
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  /** Fills all memory with a pattern and gives a block of it, which replaces the last one. */
  void* place(std::size_t bytes, Placement placement);

  /** Whether all accessible memory around the block still holds the pattern. */
  bool surroundings_intact() const;

  /** From now on writes fault too, or no longer do. */
  void set_writable(bool writable);

 private:
  unsigned char* mapping_ = nullptr;
  unsigned char* memory_ = nullptr;  // what lies between the forbidden pages
  std::size_t page_ = 0;
  std::size_t size_ = 0;
  unsigned char* block_ = nullptr;
  std::size_t block_size_ = 0;
};

/** For frames of up to max_pixels: the input's buffer, then one for each output in the order of the interface. */
class GuardedFrame {
 public:
  explicit GuardedFrame(std::size_t max_pixels) {
    for (std::size_t i = 0; i < buffers_.size(); ++i) {
      buffers_[i] = std::make_unique<GuardedBuffer>((i == 1 ? 8 : 2) * max_pixels);
    }
  }
  GuardedBuffer& operator[](std::size_t number) { return *buffers_[number]; }

 private:
  std::array<std::unique_ptr<GuardedBuffer>, 7> buffers_;
};

}  // namespace nerova_zel::test
