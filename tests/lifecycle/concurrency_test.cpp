#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"
#include "support/frame_images.h"

namespace nerova_zel::test {
namespace {

constexpr int thread_count = 4;

template <class Work>
void in_threads(const Work& work) {
  std::vector<std::thread> threads;
  for (int number = 0; number < thread_count; ++number) {
    threads.emplace_back(work);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST(Concurrency, TheModuleComesAndGoesAmongThreads) {
  constexpr int rounds = 50;
  Arrangement arrangement({Companion::Logger});
  LoadedLibrary& library = arrangement.library();
  in_threads([&library] {
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
  const std::vector<std::uint16_t> frame = mixed_samples(std::size_t{width} * 9);
  const LoadedProcessor processor(library_file);
  const auto images_of_frame = [&] {
    FrameImages images(frame.size());
    EXPECT_EQ(images.fill(processor.transform, processor.handle, frame, width), 0);
    return images;
  };
  const FrameImages expected = images_of_frame();
  in_threads([&] {
    for (int round = 0; round < 50; ++round) {
      EXPECT_TRUE(images_of_frame() == expected);
    }
  });
}

TEST(Concurrency, ThreadsShareAProcessor) {
  transform_from_many_threads(NEROVA_BUILT_IN_ONLY_LIBRARY);
  transform_from_many_threads(library_path());
}

}  // namespace
}  // namespace nerova_zel::test
