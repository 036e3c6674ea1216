#include <gtest/gtest.h>

#include <filesystem>
#include <new>
#include <stdexcept>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"
#include "support/module_file.h"

namespace nerova_zel::test {
namespace {

TEST(Plugins, EveryProcessorLoadsAndUnloadsBoth) {
  Arrangement arrangement({Companion::Avx512, Companion::Avx2});
  LoadedLibrary& library = arrangement.library();
  arrangement.initialize();
  nv_polarization_processor* processors[2] = {};
  for (auto*& processor : processors) {
    EXPECT_EQ(library.create(&processor), 0);
    EXPECT_EQ(arrangement.journal.take(), (Events{"avx512 initialize", "avx2 initialize"}));
  }
  for (auto* processor : processors) {
    EXPECT_TRUE(arrangement.loaded(Companion::Avx512) && arrangement.loaded(Companion::Avx2));
    EXPECT_EQ(library.destroy(processor), 0);
    EXPECT_EQ(arrangement.journal.take(), (Events{"avx2 terminate", "avx512 terminate"}));
  }
  EXPECT_FALSE(arrangement.any_plugin_loaded());
}

#if !defined(_WIN32)
TEST(Plugins, TheFolderBelowTheLibrarysOwnIsSearchedAfterThatOne) {
  namespace fs = std::filesystem;
  Arrangement arrangement({Companion::Avx512, Companion::Avx2});
  const fs::path folder = arrangement.directory() + "/nerova_zel";
  fs::create_directory(folder);
  const auto below = [&](Companion companion) { return folder / fs::path(arrangement.file(companion)).filename(); };
  fs::rename(arrangement.file(Companion::Avx512), below(Companion::Avx512));
  fs::copy_file(arrangement.file(Companion::Avx2), below(Companion::Avx2));
  arrangement.make_processor();
  EXPECT_TRUE(module_is_loaded(below(Companion::Avx512).string()));
  EXPECT_TRUE(arrangement.loaded(Companion::Avx2));
  EXPECT_FALSE(module_is_loaded(below(Companion::Avx2).string()));
}
#endif

TEST(Plugins, DamagedFilesOnlyLeaveTheirSlotsUnusable) {
  for (const auto damage :
       {Arrangement::Damage::Truncated, Arrangement::Damage::CutBehindHeaders, Arrangement::Damage::CutInHeaders,
        Arrangement::Damage::CutInFirstHeader, Arrangement::Damage::OtherWordSize, Arrangement::Damage::NoLibrary}) {
    SCOPED_TRACE(static_cast<int>(damage));
    Arrangement arrangement({Companion::Logger, Companion::Avx512, Companion::Avx2});
    arrangement.damage(Companion::Logger, damage);
    arrangement.damage(Companion::Avx512, damage);
    const TransformCall call(arrangement.make_processor());
    EXPECT_FALSE(arrangement.loaded(Companion::Logger) || arrangement.loaded(Companion::Avx512));
    EXPECT_EQ(call.run(arrangement.library()), 0);
    arrangement.finish();
    const Events events = arrangement.journal.take();
    EXPECT_EQ(events.back(), "avx2 terminate");
    EXPECT_EQ(call.outputs_untouched(), events.size() == 2) << "where the processor has no AVX-512, AVX2 is asked";
  }
}

TEST(Plugins, PluginLackingAnEntryStaysLoadedButIsNeverCalled) {
  for (const Companion companion : {Companion::Avx512, Companion::Avx2}) {
    const std::string set = companion == Companion::Avx512 ? "avx512" : "avx2";
    for (const std::string& missing :
         {"vector_" + set + "_module_initialize", "transform_vector_" + set, "vector_" + set + "_module_terminate"}) {
      SCOPED_TRACE(missing);
      Arrangement arrangement;
      arrangement.add(companion, "nv_polarization_processor_" + missing);
      nv_polarization_processor* const processor = arrangement.make_processor();
      EXPECT_TRUE(arrangement.loaded(companion));
      EXPECT_EQ(TransformCall(processor).run(arrangement.library()), 0);
      arrangement.finish();
      EXPECT_FALSE(arrangement.loaded(companion));
      EXPECT_EQ(arrangement.journal.take(), Events());
    }
  }
}

TEST(Plugins, CreateReleasesWhatItMadeBeforeItRecordsAFailure) {
  if (!mocks_can_throw) {
    GTEST_SKIP() << exceptions_stay_in_their_module;
  }
  const std::string unknown =
      error_record(81, "create_polarization_processor",
                   "An unknown error occurred when trying to create a polar_processor instance!");
  Arrangement arrangement({Companion::Logger, Companion::Avx512, Companion::Avx2});
  arrangement.initialize();
  LoadedLibrary& library = arrangement.library();
  const auto expect_failure = [&](MockPlugin& thrower, std::int32_t code, const Events& expected) {
    thrower.on_initialize = [code]() -> std::int32_t {
      if (code == 3) {
        throw std::bad_alloc();
      }
      throw std::runtime_error("a fault of the plugin");
    };
    nv_polarization_processor* processor = nullptr;
    EXPECT_EQ(library.create(&processor), code);
    EXPECT_EQ(processor, nullptr);
    EXPECT_EQ(arrangement.journal.take(), expected);
    thrower.on_initialize = [] { return 0; };
    EXPECT_EQ(library.create(&processor), 0);
    EXPECT_EQ(library.destroy(processor), 0);
    arrangement.journal.take();
  };
  expect_failure(arrangement.avx2, 1, {"avx512 initialize", "avx2 initialize", "avx512 terminate", unknown});
  expect_failure(arrangement.avx2, 3, {"avx512 initialize", "avx2 initialize", "avx512 terminate", no_memory});
  expect_failure(arrangement.avx512, 1, {"avx512 initialize", unknown});
}

}  // namespace
}  // namespace nerova_zel::test
