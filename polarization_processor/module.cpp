#include "module.h"

#include <atomic>
#include <mutex>
#include <new>

namespace nerova_zel {

namespace {

/** Some runtimes make a mutex when it is first locked; locked while the library is loaded, it lacks no memory later. */
class ModuleMutex : public std::mutex {
 public:
  ModuleMutex() {
    lock();
    unlock();
  }
};

ModuleMutex module_mutex;
std::uint32_t initialize_count = 0;
std::atomic<const LogClient*> log_client{nullptr};

}  // namespace

void initialize_module() {
  const std::lock_guard<std::mutex> lock(module_mutex);
  if (initialize_count == 0) {
    log_client.store(new (std::nothrow) LogClient("NEROVA_ZEL_POLARIZATION_PROCESSOR"), std::memory_order_release);
  }
  ++initialize_count;
}

void terminate_module() {
  const std::lock_guard<std::mutex> lock(module_mutex);
  if (initialize_count == 0) {
    return;
  }
  --initialize_count;
  if (initialize_count == 0) {
    delete log_client.exchange(nullptr, std::memory_order_acq_rel);
  }
}

const LogClient* current_log_client() noexcept { return log_client.load(std::memory_order_acquire); }

}  // namespace nerova_zel
