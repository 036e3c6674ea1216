// Threads that are cancelled inside the library, whose companions wait and write where that may happen.

#include <gtest/gtest.h>
#include <pthread.h>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"

namespace nerova_zel::test {
namespace {

/** What a thread calls, and whether it came through. */
struct Work {
  const LoadedLibrary& library;
  void (*call)(const LoadedLibrary& library);
  bool asynchronous;
  bool returned;
};

void* do_work(void* argument) {
  auto* const work = static_cast<Work*>(argument);
  int ignored = 0;
  if (work->asynchronous) {
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, &ignored);
  } else {
    pthread_cancel(pthread_self());
  }
  work->call(work->library);
  work->returned = true;
  pthread_testcancel();
  return nullptr;
}

/** Whether the exports that were called returned; the thread ends cancelled in any case. */
bool returns(const LoadedLibrary& library, bool asynchronous, void (*call)(const LoadedLibrary& library)) {
  Work work = {library, call, asynchronous, false};
  pthread_t thread = {};
  EXPECT_EQ(pthread_create(&thread, nullptr, do_work, &work), 0);
  void* result = nullptr;
  EXPECT_EQ(pthread_join(thread, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  return work.returned;
}

TEST(Cancellation, WaitsForTheEndOfAnExport) {
  Arrangement arrangement({Companion::Logger, Companion::Avx512, Companion::Avx2});
  MockLogger& logger = arrangement.logger;
  logger.on_get_log = logger.on_log = logger.on_free_log = pthread_testcancel;
  for (MockPlugin* const plugin : {&arrangement.avx512, &arrangement.avx2}) {
    plugin->on_initialize = [] {
      pthread_testcancel();
      return 0;
    };
    plugin->on_transform = [](auto...) { pthread_testcancel(); };
    plugin->on_terminate = pthread_testcancel;
  }
  const LoadedLibrary& loaded = arrangement.library();
  EXPECT_TRUE(returns(loaded, false, [](const LoadedLibrary& library) {
    nv_polarization_processor* processor = nullptr;
    EXPECT_EQ(library.module_initialize(), 0);
    EXPECT_EQ(library.create(&processor), 0);
    EXPECT_EQ(TransformCall(processor).run(library), 0);
    EXPECT_EQ(library.destroy(processor), 0);
    EXPECT_EQ(library.set_coefficients(nullptr, nullptr, nullptr, nullptr, nullptr), 4);
    EXPECT_EQ(library.get_coefficients(nullptr, nullptr, nullptr, nullptr, nullptr), 4);
    EXPECT_EQ(library.module_terminate(), 0);
  }));

  arrangement.initialize();
  logger.on_log = [] { pthread_cancel(pthread_self()); };
  EXPECT_FALSE(returns(loaded, true, [](const LoadedLibrary& library) { library.destroy(nullptr); }));
}

}  // namespace
}  // namespace nerova_zel::test
