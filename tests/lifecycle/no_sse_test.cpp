// Runs on an emulated processor without SSE only.

#include <gtest/gtest.h>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"

namespace nerova_zel::test {
namespace {

TEST(ProcessorWithoutSse, CreateRefusesAndRecords) {
  Arrangement arrangement({Companion::Logger, Companion::Avx2});
  arrangement.initialize();
  nv_polarization_processor* processor = nullptr;
  EXPECT_EQ(arrangement.library().create(&processor), 1);
  EXPECT_EQ(processor, nullptr);
  EXPECT_EQ(arrangement.journal.take(),
            Events{error_record(54, "create_polarization_processor",
                                "SSE is required for this component but is not supported on this CPU.")});
  EXPECT_EQ(arrangement.library().destroy(nullptr), 4);
  EXPECT_EQ(TransformCall(nullptr).run(arrangement.library()), 4);
}

}  // namespace
}  // namespace nerova_zel::test
