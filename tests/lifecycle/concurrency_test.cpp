#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"
#include "support/frame_images.h"

namespace nerova_zel::test {
namespace {

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
  const std::vector<std::uint16_t> frame = mixed_samples(pixels);
  const LoadedLibrary library(library_file);
  ASSERT_EQ(library.module_initialize(), 0);
  nv_polarization_processor* processor = nullptr;
  ASSERT_EQ(library.create(&processor), 0);

  const auto transform = [&](FrameImages& images) {
    auto& others = images.others;
    return library.transform(processor, 0, frame.data(), 0, 0, width, height, 12, 65535, images.stokes.data(),
                             others[0].data(), others[1].data(), others[2].data(), others[3].data(), others[4].data());
  };
  FrameImages expected(pixels);
  EXPECT_EQ(transform(expected), 0);
  constexpr int thread_count = 4;
  std::vector<std::thread> threads;
  threads.reserve(thread_count);
  for (int number = 0; number < thread_count; ++number) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        FrameImages images(pixels);
        EXPECT_EQ(transform(images), 0);
        EXPECT_TRUE(images == expected);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(library.destroy(processor), 0);
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(Concurrency, ThreadsShareAProcessor) {
  transform_from_many_threads(NEROVA_BUILT_IN_ONLY_LIBRARY);
  transform_from_many_threads(library_path());
}

}  // namespace
}  // namespace nerova_zel::test
