// Runs on an emulated processor without SSE only.

#include <gtest/gtest.h>

#include "lifecycle/arrangement.h"

namespace nerova_zel::test {
namespace {

TEST(ProcessorWithoutSse, CreateRefusesAndRecords) {
  Arrangement arrangement;
  arrangement.add_logger();
  arrangement.add_avx2();
  LoadedLibrary& library = arrangement.library();
  EXPECT_EQ(library.module_initialize(), 0);
  arrangement.journal.take();
  nv_polarization_processor* processor = nullptr;
  EXPECT_EQ(library.create(&processor), 1);
  EXPECT_EQ(processor, nullptr);
  EXPECT_EQ(arrangement.journal.take(),
            Events{"2|nerova_zel_polarization_processor.cpp|54|nv_polarization_processor_create_polarization_processor|"
                   "SSE is required for this component but is not supported on this CPU."});
  EXPECT_EQ(library.destroy(nullptr), 4);
  EXPECT_EQ(
      library.transform(nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
      4);
  EXPECT_EQ(library.module_terminate(), 0);
}

}  // namespace
}  // namespace nerova_zel::test
