#pragma once

namespace nerova_zel {

/**
 * Puts off a cancellation of the calling thread (pthread_cancel) while it lives. A cancellation is an exception that
 * must not be caught, and would end the process where this library catches everything.
 */
class HeldCancellation {
 public:
  HeldCancellation() noexcept;
  ~HeldCancellation() noexcept(false);  // a thread that is cancelled asynchronously is cancelled here
  HeldCancellation(const HeldCancellation&) = delete;
  HeldCancellation& operator=(const HeldCancellation&) = delete;

 private:
  int before_ = 0;
};

}  // namespace nerova_zel
