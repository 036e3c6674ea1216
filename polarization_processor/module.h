#pragma once

#include "log_client.h"

namespace nerova_zel {

/** Counts up; the first call makes the LogClient, or leaves the module without one when memory runs out. */
void initialize_module();

/** Counts down, not below 0; the last call destroys the LogClient. */
void terminate_module();

/** NULL while the module is not initialized. Valid until the last terminate_module; takes no lock. */
const LogClient* current_log_client() noexcept;

}  // namespace nerova_zel
