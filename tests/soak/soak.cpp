// Many threads create, use and destroy processors, for a long time; memory must not grow.
//
//   soak SECONDS LIBRARY...
//
// Works in rounds, on the libraries in turn. Within a round, threads initialize and terminate the module, make
// processors of their own, and in every other round share one; what comes out is compared with what came out first.
// Between rounds nothing is in use: the program's allocations, the heap and the resident memory are read then.

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <new>
#include <string>
#include <thread>
#include <vector>

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

constexpr int thread_count = 8;
constexpr std::chrono::seconds longest_round(10);
constexpr int warm_up_rounds = 4;
constexpr long most_growth = 1 << 18;  // bytes of the heap or of resident memory, in the whole run

struct Memory {
  long allocations;
  long heap;
  long resident;
};

Memory read_memory() {
  malloc_trim(0);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return {outstanding.load(), static_cast<long>(mallinfo2().uordblks), pages * sysconf(_SC_PAGESIZE)};
}

struct Shape {
  std::int32_t width;
  std::int32_t height;
  std::int32_t bit_depth;
};

constexpr std::array<Shape, 4> shapes = {{{2, 2, 8}, {67, 9, 12}, {256, 31, 16}, {640, 48, 10}}};

struct Images {
  std::vector<float> stokes;
  std::array<std::vector<std::uint16_t>, 5> codes;

  explicit Images(const Shape& shape) {
    const auto pixels = static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height);
    stokes.resize(2 * pixels);
    for (auto& image : codes) {
      image.resize(pixels);
    }
  }
  bool operator==(const Images& other) const { return stokes == other.stokes && codes == other.codes; }
};

std::vector<std::uint16_t> frame_of(const Shape& shape) {
  std::vector<std::uint16_t> frame(static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height));
  for (std::size_t i = 0; i < frame.size(); ++i) {
    // No pixel is 0, so that no NaN turns up, which equals nothing.
    frame[i] = static_cast<std::uint16_t>(1 + i * 2654435761U % ((1U << static_cast<unsigned>(shape.bit_depth)) - 1));
  }
  return frame;
}

bool transform(const LoadedLibrary& library, nv_polarization_processor* processor, const Shape& shape, Images& images) {
  static const std::array<std::vector<std::uint16_t>, shapes.size()> frames = {
      frame_of(shapes[0]), frame_of(shapes[1]), frame_of(shapes[2]), frame_of(shapes[3])};
  const auto& frame = frames[static_cast<std::size_t>(&shape - shapes.data())];
  auto& codes = images.codes;
  return library.transform(processor, 1, frame.data(), 0, 0, shape.width, shape.height, shape.bit_depth, 65535,
                           images.stokes.data(), codes[0].data(), codes[1].data(), codes[2].data(), codes[3].data(),
                           codes[4].data()) == 0;
}

class Soak {
 public:
  explicit Soak(const std::string& path) : library_(path) {
    library_.module_initialize();
    nv_polarization_processor* processor = nullptr;
    good_ = library_.create(&processor) == 0;
    for (const Shape& shape : shapes) {
      expected_.emplace_back(shape);
      good_ = good_ && transform(library_, processor, shape, expected_.back());
    }
    library_.destroy(processor);
    library_.module_terminate();
  }

  void round(std::chrono::duration<double> time, bool share) {
    const auto end = Clock::now() + time;
    nv_polarization_processor* shared = nullptr;
    if (share) {
      check(library_.module_initialize() == 0 && library_.create(&shared) == 0);
    }
    std::vector<std::thread> threads;
    threads.reserve(thread_count);
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
  long processors() const { return processors_; }
  long frames() const { return frames_; }

 private:
  void check(bool truth) { good_ = truth && good_; }

  /** From initialize to terminate, with a processor of the thread's own and the shared one, if there is one. */
  void visit(nv_polarization_processor* shared) {
    check(library_.module_initialize() == 0);
    nv_polarization_processor* own = nullptr;
    check(library_.create(&own) == 0);
    ++processors_;
    for (nv_polarization_processor* const processor : {own, shared}) {
      for (std::size_t i = 0; processor != nullptr && i < shapes.size(); ++i) {
        Images images(shapes[i]);
        check(transform(library_, processor, shapes[i], images) && images == expected_[i]);
        ++frames_;
      }
    }
    check(library_.destroy(own) == 0);
    check(library_.module_terminate() == 0);
  }

  LoadedLibrary library_;
  std::vector<Images> expected_;
  std::atomic<bool> good_{false};
  std::atomic<long> processors_{0};
  std::atomic<long> frames_{0};
};

void print(double seconds, const Memory& memory) {
  std::cout << static_cast<long>(seconds) << " s: " << memory.allocations << " allocations, heap " << memory.heap
            << " bytes, resident " << memory.resident / 1024 << " KiB\n"
            << std::flush;
}

int run(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: soak SECONDS LIBRARY...\n";
    return EXIT_FAILURE;
  }
  const std::chrono::duration<double> wanted(std::stod(argv[1]));
  const auto round_time = std::min<std::chrono::duration<double>>(longest_round, wanted / (5 * warm_up_rounds));
  const auto start = Clock::now();
  const auto elapsed = [start] { return std::chrono::duration<double>(Clock::now() - start); };

  std::vector<std::unique_ptr<Soak>> soaks;
  for (int i = 2; i < argc; ++i) {
    soaks.push_back(std::make_unique<Soak>(argv[i]));
  }
  Memory first = {};
  Memory last = {};
  bool good = true;
  for (std::size_t number = 0; good && (number <= warm_up_rounds || elapsed() < wanted); ++number) {
    Soak& soak = *soaks[number % soaks.size()];
    soak.round(round_time, number / soaks.size() % 2 == 0);
    good = soak.good();
    last = read_memory();
    if (number == warm_up_rounds) {
      first = last;
    }
    print(elapsed().count(), last);
  }
  for (const auto& soak : soaks) {
    std::cout << soak->processors() << " processors, " << soak->frames() << " frames\n";
  }
  if (!good) {
    std::cerr << "a call failed or an image differs\n";
    return EXIT_FAILURE;
  }
  if (last.allocations != first.allocations || last.heap > first.heap + most_growth ||
      last.resident > first.resident + most_growth) {
    std::cerr << "memory grew\n";
    return EXIT_FAILURE;
  }
  std::cout << "memory did not grow\n";
  return EXIT_SUCCESS;
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
