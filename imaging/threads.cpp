#include "threads.h"

#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace nerova_zel {

namespace {

/** Joins on destruction. */
class Threads {
 public:
  explicit Threads(std::size_t most) { threads_.reserve(most); }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
  ~Threads() {
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }

  template <class Work>
  void run(const Work& work) {
    try {
      threads_.emplace_back(work);
    } catch (const std::system_error&) {
      work();
    }
  }

 private:
  std::vector<std::thread> threads_;
};

}  // namespace

void on_threads(std::size_t count, const std::function<void(std::size_t)>& work) {
  std::vector<std::exception_ptr> failures(count);
  const auto guarded = [&](std::size_t number) {
    try {
      work(number);
    } catch (...) {
      failures[number] = std::current_exception();
    }
  };
  {
    Threads threads(count);
    for (std::size_t number = 1; number < count; ++number) {
      threads.run([&guarded, number] { guarded(number); });
    }
    if (count > 0) {
      guarded(0);
    }
  }
  for (const std::exception_ptr& failure : failures) {
    if (failure) {
      std::rethrow_exception(failure);
    }
  }
}

}  // namespace nerova_zel
