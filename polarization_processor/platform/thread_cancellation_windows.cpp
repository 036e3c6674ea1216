#include "platform/thread_cancellation.h"

// Threads cannot be cancelled here.
namespace nerova_zel {

HeldCancellation::HeldCancellation() noexcept = default;

HeldCancellation::~HeldCancellation() noexcept(false) = default;

}  // namespace nerova_zel
