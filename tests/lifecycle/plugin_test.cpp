#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"

namespace nerova_zel::test {
namespace {

struct Plugin {
  void (Arrangement::*add)(const std::string& missing_entry);
  bool (Arrangement::*loaded)() const;
  const char* name;
};

const Plugin plugins[] = {{&Arrangement::add_avx512, &Arrangement::avx512_loaded, "avx512"},
                          {&Arrangement::add_avx2, &Arrangement::avx2_loaded, "avx2"}};

TEST(Plugins, EveryProcessorLoadsAndUnloadsBoth) {
  Arrangement arrangement;
  arrangement.add_avx512();
  arrangement.add_avx2();
  LoadedLibrary& library = arrangement.library();
  EXPECT_EQ(library.module_initialize(), 0);
  nv_polarization_processor* first = nullptr;
  nv_polarization_processor* second = nullptr;
  EXPECT_EQ(library.create(&first), 0);
  EXPECT_EQ(library.create(&second), 0);
  EXPECT_EQ(arrangement.journal.take(),
            (Events{"avx512 initialize", "avx2 initialize", "avx512 initialize", "avx2 initialize"}));
  EXPECT_EQ(library.destroy(first), 0);
  EXPECT_TRUE(arrangement.avx512_loaded() && arrangement.avx2_loaded());
  EXPECT_EQ(library.destroy(second), 0);
  EXPECT_FALSE(arrangement.avx512_loaded() || arrangement.avx2_loaded());
  EXPECT_EQ(arrangement.journal.take(),
            (Events{"avx2 terminate", "avx512 terminate", "avx2 terminate", "avx512 terminate"}));
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(Plugins, DamagedFilesOnlyLeaveTheirSlotsUnusable) {
  for (const auto damage :
       {Arrangement::Damage::Truncated, Arrangement::Damage::CutBehindHeaders, Arrangement::Damage::CutInHeaders,
        Arrangement::Damage::CutInFirstHeader, Arrangement::Damage::OtherWordSize, Arrangement::Damage::NoLibrary}) {
    SCOPED_TRACE(static_cast<int>(damage));
    Arrangement arrangement;
    arrangement.add_logger();
    arrangement.damage_logger(damage);
    arrangement.add_avx512();
    arrangement.damage_avx512(damage);
    arrangement.add_avx2();
    LoadedLibrary& library = arrangement.library();
    nv_polarization_processor* processor = nullptr;
    EXPECT_EQ(library.module_initialize(), 0);
    EXPECT_EQ(library.create(&processor), 0);
    EXPECT_FALSE(arrangement.logger_loaded() || arrangement.avx512_loaded());
    const TransformCall call(processor);
    EXPECT_EQ(call.run(library), 0);
    EXPECT_EQ(library.destroy(processor), 0);
    EXPECT_EQ(library.module_terminate(), 0);
    const Events events = arrangement.journal.take();
    const bool avx2_was_asked = events.size() == 3;  // where the processor has no AVX-512
    EXPECT_EQ(events.front(), "avx2 initialize");
    EXPECT_EQ(events.back(), "avx2 terminate");
    EXPECT_EQ(call.outputs_untouched(), avx2_was_asked);
  }
}

TEST(Plugins, PluginLackingAnEntryStaysLoadedButIsNeverCalled) {
  for (const Plugin& plugin : plugins) {
    const std::string name = plugin.name;
    for (const std::string& missing : {"nv_polarization_processor_vector_" + name + "_module_initialize",
                                       "nv_polarization_processor_transform_vector_" + name,
                                       "nv_polarization_processor_vector_" + name + "_module_terminate"}) {
      SCOPED_TRACE(missing);
      Arrangement arrangement;
      (arrangement.*plugin.add)(missing);
      nv_polarization_processor* processor = nullptr;
      EXPECT_EQ(arrangement.library().module_initialize(), 0);
      EXPECT_EQ(arrangement.library().create(&processor), 0);
      EXPECT_TRUE((arrangement.*plugin.loaded)());
      EXPECT_EQ(TransformCall(processor).run(arrangement.library()), 0);
      EXPECT_EQ(arrangement.library().destroy(processor), 0);
      EXPECT_FALSE((arrangement.*plugin.loaded)());
      EXPECT_EQ(arrangement.journal.take(), Events());
      EXPECT_EQ(arrangement.library().module_terminate(), 0);
    }
  }
}

/** What create makes of a plugin that throws; then the same processor is made once more without the fault. */
void expect_create_fails(Arrangement& arrangement, MockPlugin& thrower, std::int32_t code, const Events& expected) {
  LoadedLibrary& library = arrangement.library();
  nv_polarization_processor* processor = nullptr;
  EXPECT_EQ(library.create(&processor), code);
  EXPECT_EQ(processor, nullptr);
  EXPECT_EQ(arrangement.journal.take(), expected);
  thrower.on_initialize = [] { return 0; };
  EXPECT_EQ(library.create(&processor), 0);
  EXPECT_EQ(library.destroy(processor), 0);
  arrangement.journal.take();
}

TEST(Plugins, CreateReleasesWhatItMadeBeforeItRecordsAFailure) {
  if (!mocks_can_throw) {
    GTEST_SKIP() << exceptions_stay_in_their_module;
  }
  const std::string unknown =
      "2|nerova_zel_polarization_processor.cpp|81|nv_polarization_processor_create_polarization_processor|"
      "An unknown error occurred when trying to create a polar_processor instance!";
  const std::string memory =
      "2|nerova_zel_polarization_processor.cpp|76|nv_polarization_processor_create_polarization_processor|"
      "Memory allocation failure when trying to create a polar processor instance!";
  Arrangement arrangement;
  arrangement.add_logger();
  arrangement.add_avx512();
  arrangement.add_avx2();
  EXPECT_EQ(arrangement.library().module_initialize(), 0);
  arrangement.journal.take();
  const auto throw_unknown = []() -> std::int32_t { throw std::runtime_error("a fault of the plugin"); };
  const auto throw_memory = []() -> std::int32_t { throw std::bad_alloc(); };

  arrangement.avx2.on_initialize = throw_unknown;
  expect_create_fails(arrangement, arrangement.avx2, 1,
                      {"avx512 initialize", "avx2 initialize", "avx512 terminate", unknown});
  arrangement.avx2.on_initialize = throw_memory;
  expect_create_fails(arrangement, arrangement.avx2, 3,
                      {"avx512 initialize", "avx2 initialize", "avx512 terminate", memory});
  arrangement.avx512.on_initialize = throw_unknown;
  expect_create_fails(arrangement, arrangement.avx512, 1, {"avx512 initialize", unknown});
  EXPECT_EQ(arrangement.library().module_terminate(), 0);
}

}  // namespace
}  // namespace nerova_zel::test
