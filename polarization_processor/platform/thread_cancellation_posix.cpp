#include <pthread.h>

#include "platform/thread_cancellation.h"

namespace nerova_zel {

HeldCancellation::HeldCancellation() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }

HeldCancellation::~HeldCancellation() noexcept(false) { pthread_setcancelstate(before_, nullptr); }

}  // namespace nerova_zel
