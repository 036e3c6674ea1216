// Signals; what Windows has instead is in windows_test.cpp.
#include "batch/interruption.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace nerova_zel::test {
namespace {

TEST(InterruptionDeathTest, TheFirstIsNotedAndTheSecondEndsTheProgram) {
  for (const int signal : {SIGINT, SIGTERM}) {
    EXPECT_EXIT(
        {
          const Interruption interruption;
          std::raise(signal);
          std::_Exit(Interruption::is_requested() ? 3 : 4);
        },
        ::testing::ExitedWithCode(3), "");
    EXPECT_EXIT(
        {
          const Interruption interruption;
          std::raise(signal);
          std::raise(signal);
          std::_Exit(5);
        },
        ::testing::KilledBySignal(signal), "");
    EXPECT_EXIT(
        {
          {
            const Interruption interruption;
            std::raise(signal);
          }
          Interruption::obey();
          std::_Exit(6);
        },
        ::testing::KilledBySignal(signal), "");
  }
}

}  // namespace
}  // namespace nerova_zel::test
