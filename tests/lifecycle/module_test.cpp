#include <gtest/gtest.h>

#include <filesystem>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"
#include "support/failing_allocation.h"

namespace nerova_zel::test {
namespace {

const std::string get_log = "get_log NEROVA_ZEL_POLARIZATION_PROCESSOR||nerova_zel_logger.cfg";
const std::string free_log = "free_log NEROVA_ZEL_POLARIZATION_PROCESSOR|";

/** All functions that need the module refuse, whatever the handle, and write nothing. */
void expect_not_initialized(LoadedLibrary& library, nv_polarization_processor* processor) {
  auto* created = reinterpret_cast<nv_polarization_processor*>(&library);
  EXPECT_EQ(library.create(&created), 2);
  EXPECT_EQ(created, reinterpret_cast<nv_polarization_processor*>(&library));
  float matrix[16] = {5};
  EXPECT_EQ(library.set_coefficients(processor, matrix, nullptr, nullptr, nullptr), 2);
  EXPECT_EQ(library.get_coefficients(processor, matrix, nullptr, nullptr, nullptr), 2);
  EXPECT_EQ(matrix[0], 5);
  const TransformCall call(processor);
  EXPECT_EQ(call.run(library), 2);
  EXPECT_TRUE(call.outputs_untouched());
  EXPECT_EQ(library.destroy(processor), 2);
}

TEST(Module, CompanionsLieBesideTheLibraryWhereverTheProgramGoes) {
  Arrangement arrangement({Companion::Logger});
  std::filesystem::copy_file(library_path(), arrangement.directory() + "/copy.so");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(arrangement.directory());
  const LoadedLibrary library("./copy.so");
  std::filesystem::current_path(before);
  EXPECT_EQ(library.module_initialize(), 0);
  EXPECT_EQ(arrangement.journal.take(), Events{get_log});
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(Module, CountsInitializations) {
  Arrangement arrangement({Companion::Logger});
  LoadedLibrary& library = arrangement.library();
  EXPECT_EQ(library.module_terminate(), 0);
  expect_not_initialized(library, nullptr);
  EXPECT_EQ(library.module_initialize(), 0);
  EXPECT_EQ(library.module_initialize(), 0);
  EXPECT_EQ(arrangement.journal.take(), Events{get_log});
  EXPECT_EQ(library.module_terminate(), 0);
  EXPECT_TRUE(arrangement.loaded(Companion::Logger));
  EXPECT_EQ(library.destroy(nullptr), 4);
  EXPECT_EQ(arrangement.journal.take(), Events{null_destroyed});
  EXPECT_EQ(library.module_terminate(), 0);
  EXPECT_EQ(arrangement.journal.take(), Events{free_log});
  EXPECT_FALSE(arrangement.loaded(Companion::Logger));
  EXPECT_EQ(library.module_terminate(), 0);  // one too many must not count below 0
  EXPECT_EQ(library.module_initialize(), 0);
  EXPECT_EQ(library.module_terminate(), 0);
  EXPECT_EQ(arrangement.journal.take(), (Events{get_log, free_log}));
}

TEST(Module, ProcessorOutlivesTheLastTerminate) {
  Arrangement arrangement;
  nv_polarization_processor* const processor = arrangement.make_processor();
  EXPECT_EQ(arrangement.library().module_terminate(), 0);
  expect_not_initialized(arrangement.library(), processor);
  EXPECT_EQ(arrangement.library().module_initialize(), 0);
  EXPECT_EQ(TransformCall(processor).run(arrangement.library()), 0);
}

/** From initialize to terminate with an error in between; what the logger is told. */
Events events_of_module(Arrangement& arrangement) {
  LoadedLibrary& library = arrangement.library();
  EXPECT_EQ(library.module_initialize(), 0);
  EXPECT_TRUE(arrangement.loaded(Companion::Logger));
  EXPECT_EQ(library.destroy(nullptr), 4);
  EXPECT_EQ(library.module_terminate(), 0);
  EXPECT_FALSE(arrangement.loaded(Companion::Logger));
  return arrangement.journal.take();
}

TEST(Module, LoggerThatLacksSomethingIsKeptButWritesNothing) {
  struct Case {
    const char* missing;
    bool gives_handle;
    Events expected;
  };
  for (const Case& fault :
       {Case{"zel_get_log", true, {free_log}}, Case{"", false, {get_log, free_log}},
        Case{"zel_log", true, {get_log, free_log}}, Case{"zel_free_log", true, {get_log, null_destroyed}}}) {
    Arrangement arrangement;
    arrangement.add(Companion::Logger, fault.missing);
    arrangement.logger.gives_handle = fault.gives_handle;
    EXPECT_EQ(events_of_module(arrangement), fault.expected) << fault.missing;
  }
}

TEST(Module, LoggerThatThrowsIsContained) {
  if (!mocks_can_throw) {
    GTEST_SKIP() << exceptions_stay_in_their_module;
  }
  Arrangement arrangement({Companion::Logger});
  arrangement.logger.on_get_log = [] { throw 1; };
  EXPECT_EQ(events_of_module(arrangement), (Events{get_log, free_log}));
  arrangement.logger.on_get_log = [] {};
  arrangement.logger.on_log = arrangement.logger.on_free_log = [] { throw 1; };
  EXPECT_EQ(events_of_module(arrangement), (Events{get_log, null_destroyed, free_log}));
}

TEST(Module, InitializeWithoutMemoryCountsButServesNothing) {
  Arrangement arrangement({Companion::Logger});
  LoadedLibrary& library = arrangement.library();
  {
    const FailingAllocation failing(0, FailingAllocation::Extent::FromThenOn);
    EXPECT_EQ(library.module_initialize(), 0);
  }
  EXPECT_EQ(library.module_initialize(), 0);  // only the step from 0 to 1 makes a client
  expect_not_initialized(library, nullptr);
  EXPECT_EQ(library.module_terminate(), 0);
  EXPECT_EQ(library.module_terminate(), 0);
  arrangement.initialize();
  {
    const FailingAllocation failing(0, FailingAllocation::Extent::FromThenOn);  // a record needs no memory
    EXPECT_EQ(library.destroy(nullptr), 4);
    EXPECT_FALSE(failing.happened());
  }
  EXPECT_EQ(arrangement.journal.take(), Events{null_destroyed});
}

}  // namespace
}  // namespace nerova_zel::test
