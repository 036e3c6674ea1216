#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

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

}  // namespace
}  // namespace nerova_zel::test
