#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"

namespace nerova_zel::test {
namespace {

TEST(Concurrency, ThreadsShareTheModuleAndAProcessor) {
  constexpr int thread_count = 4;
  constexpr int rounds = 25;
  Arrangement arrangement;
  arrangement.add_logger();
  LoadedLibrary& library = arrangement.library();
  nv_polarization_processor* const shared = arrangement.make_processor();
  TransformCall expected(shared);
  EXPECT_EQ(expected.run(library), 0);
  arrangement.journal.take();

  std::vector<std::thread> threads;
  threads.reserve(thread_count);
  for (int number = 0; number < thread_count; ++number) {
    threads.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) {
        EXPECT_EQ(library.module_initialize(), 0);
        nv_polarization_processor* own = nullptr;
        EXPECT_EQ(library.create(&own), 0);
        for (nv_polarization_processor* const processor : {own, shared}) {
          const TransformCall call(processor);
          EXPECT_EQ(call.run(library), 0);
          EXPECT_EQ(call.stokes_buffer, expected.stokes_buffer);
          EXPECT_EQ(call.image_buffers, expected.image_buffers);
        }
        EXPECT_EQ(library.destroy(own), 0);
        EXPECT_EQ(library.module_terminate(), 0);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const Events events = arrangement.journal.take();
  EXPECT_EQ(events.size(), static_cast<std::size_t>(2 * thread_count * rounds));
  EXPECT_TRUE(std::all_of(events.begin(), events.end(), [](const std::string& event) { return event[0] == '7'; }));
  EXPECT_EQ(library.destroy(shared), 0);
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(Concurrency, TheModuleComesAndGoesAmongThreads) {
  constexpr int thread_count = 4;
  constexpr int rounds = 50;
  Arrangement arrangement;
  arrangement.add_logger();
  LoadedLibrary& library = arrangement.library();
  std::vector<std::thread> threads;
  threads.reserve(thread_count);
  for (int number = 0; number < thread_count; ++number) {
    threads.emplace_back([&library] {
      for (int round = 0; round < rounds; ++round) {
        EXPECT_EQ(library.module_initialize(), 0);
        EXPECT_EQ(library.module_initialize(), 0);
        nv_polarization_processor* processor = nullptr;
        EXPECT_EQ(library.create(&processor), 0);
        EXPECT_EQ(library.module_terminate(), 0);
        EXPECT_EQ(TransformCall(processor).run(library), 0);
        EXPECT_EQ(library.destroy(processor), 0);
        EXPECT_EQ(library.module_terminate(), 0);
        std::this_thread::yield();  // so that now and then nobody is left
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  nv_polarization_processor* processor = nullptr;
  EXPECT_EQ(library.create(&processor), NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED);

  bool bound = false;
  int records = 0;
  for (const std::string& event : arrangement.journal.take()) {
    if (event[0] == '7') {
      EXPECT_TRUE(bound);
      ++records;
    } else {
      EXPECT_EQ(event.rfind("get_log", 0) == 0, !bound) << event;
      bound = !bound;
    }
  }
  EXPECT_FALSE(bound);
  EXPECT_EQ(records, thread_count * rounds);
}

/** Frames with blocks, single pixels and every output, by whichever kernels or plugins lie beside the library. */
void transform_from_many_threads(const std::string& library_file) {
  constexpr std::int32_t width = 67;
  constexpr std::int32_t height = 9;
  constexpr std::size_t pixels = std::size_t{width} * std::size_t{height};
  std::vector<std::uint16_t> frame(pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    frame[i] = static_cast<std::uint16_t>(i * 2654435761U >> 20U);
  }
  const LoadedLibrary library(library_file);
  ASSERT_EQ(library.module_initialize(), 0);
  nv_polarization_processor* processor = nullptr;
  ASSERT_EQ(library.create(&processor), 0);

  struct Images {
    std::vector<float> stokes = std::vector<float>(2 * pixels);
    std::vector<std::vector<std::uint16_t>> others =
        std::vector<std::vector<std::uint16_t>>(5, std::vector<std::uint16_t>(pixels));
  };
  const auto transform = [&](Images& images) {
    auto& others = images.others;
    return library.transform(processor, 0, frame.data(), 0, 0, width, height, 12, 65535, images.stokes.data(),
                             others[0].data(), others[1].data(), others[2].data(), others[3].data(), others[4].data());
  };
  Images expected;
  EXPECT_EQ(transform(expected), 0);
  constexpr int thread_count = 4;
  std::vector<std::thread> threads;
  threads.reserve(thread_count);
  for (int number = 0; number < thread_count; ++number) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        Images images;
        EXPECT_EQ(transform(images), 0);
        EXPECT_EQ(images.stokes, expected.stokes);
        EXPECT_EQ(images.others, expected.others);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(library.destroy(processor), 0);
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(Concurrency, ThreadsShareAProcessorOfTheBuiltInKernels) {
  transform_from_many_threads(NEROVA_BUILT_IN_ONLY_LIBRARY);
}

TEST(Concurrency, ThreadsShareAProcessorOfThePlugins) { transform_from_many_threads(library_path()); }

}  // namespace
}  // namespace nerova_zel::test
