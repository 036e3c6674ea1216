// Many threads create, use and destroy processors, for a long time; memory must not grow.
//
//   soak SECONDS LIBRARY...
//
// Works in rounds, on the libraries in turn. Within a round, threads initialize and terminate the module, make
// processors of their own, and in every other round share one; what comes out is compared with what came out first.
// Between rounds nothing is in use: the program's allocations and the resident memory are read then.

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "support/frame_images.h"
#include "support/loaded_library.h"

namespace {

std::atomic<long> outstanding{0};  // allocations by operator new, the library's included

void release(void* memory) noexcept {
  outstanding -= memory != nullptr ? 1 : 0;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* const memory = std::malloc(size)) {
    ++outstanding;
    return memory;
  }
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }

namespace nerova_zel::test {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int thread_count = 8;
constexpr Seconds longest_round(10.0);
constexpr std::size_t warm_up_rounds = 4;
constexpr long most_growth = 1 << 18;  // bytes of resident memory, in the whole run

long resident_bytes() {
  malloc_trim(0);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * sysconf(_SC_PAGESIZE);
}

/** A frame and what came out of it first. */
struct Expected {
  std::int32_t width;
  std::vector<std::uint16_t> frame;
  FrameImages images;

  Expected(std::int32_t a_width, std::size_t height)
      : width(a_width), frame(mixed_samples(static_cast<std::size_t>(a_width) * height)), images(frame.size()) {}
};

class Soak {
 public:
  explicit Soak(const std::string& path) : library_(path) {
    const LoadedProcessor processor(path);
    for (Expected& each : expected_) {
      check(each.images.fill(library_.transform, processor.handle, each.frame, each.width) == 0);
    }
  }

  void round(Seconds time, bool share) {
    const auto end = Clock::now() + time;
    nv_polarization_processor* shared = nullptr;
    if (share) {
      check(library_.module_initialize() == 0 && library_.create(&shared) == 0);
    }
    std::vector<std::thread> threads;
    for (int number = 0; number < thread_count; ++number) {
      threads.emplace_back([this, end, shared] {
        while (good_ && Clock::now() < end) {
          visit(shared);
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    if (share) {
      check(library_.destroy(shared) == 0 && library_.module_terminate() == 0);
    }
    nv_polarization_processor* refused = nullptr;
    check(library_.create(&refused) == NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED);
  }

  bool good() const { return good_; }
  void print_totals() const { std::cout << processors_ << " processors, " << frames_ << " frames\n"; }

 private:
  void check(bool truth) { good_ = truth && good_; }

  /** From initialize to terminate, with a processor of the thread's own and the shared one, if there is one. */
  void visit(nv_polarization_processor* shared) {
    check(library_.module_initialize() == 0);
    nv_polarization_processor* own = nullptr;
    check(library_.create(&own) == 0);
    ++processors_;
    for (nv_polarization_processor* const processor : {own, shared}) {
      for (std::size_t i = 0; processor != nullptr && i < expected_.size(); ++i) {
        FrameImages images(expected_[i].frame.size());
        check(images.fill(library_.transform, processor, expected_[i].frame, expected_[i].width) == 0);
        check(images == expected_[i].images);
        ++frames_;
      }
    }
    check(library_.destroy(own) == 0);
    check(library_.module_terminate() == 0);
  }

  LoadedLibrary library_;
  std::vector<Expected> expected_{{2, 2}, {67, 9}, {256, 31}, {640, 48}};
  std::atomic<bool> good_{true};
  std::atomic<long> processors_{0};
  std::atomic<long> frames_{0};
};

int run(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: soak SECONDS LIBRARY...\n";
    return EXIT_FAILURE;
  }
  const Seconds wanted(std::stod(argv[1]));
  const Seconds round_time = std::min(longest_round, wanted / (5 * warm_up_rounds));
  const auto start = Clock::now();
  std::vector<std::unique_ptr<Soak>> soaks;
  for (int i = 2; i < argc; ++i) {
    soaks.push_back(std::make_unique<Soak>(argv[i]));
  }
  long first_allocations = 0;
  long first_resident = 0;
  bool grew = false;
  bool good = true;
  for (std::size_t number = 0; good && (number <= warm_up_rounds || Clock::now() - start < wanted); ++number) {
    Soak& soak = *soaks[number % soaks.size()];
    soak.round(round_time, number / soaks.size() % 2 == 0);
    good = soak.good();
    const long resident = resident_bytes();
    if (number <= warm_up_rounds) {
      first_allocations = outstanding;
      first_resident = resident;
    }
    grew = outstanding != first_allocations || resident > first_resident + most_growth;
    std::cout << Seconds(Clock::now() - start).count() << " s: " << outstanding << " allocations, resident "
              << resident / 1024 << " KiB" << std::endl;
  }
  for (const auto& soak : soaks) {
    soak->print_totals();
  }
  std::cout << (!good ? "a call failed or an image differs\n" : grew ? "memory grew\n" : "memory did not grow\n");
  return good && !grew ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace nerova_zel::test

int main(int argc, char** argv) {
  try {
    return nerova_zel::test::run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "soak: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
