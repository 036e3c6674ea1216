// Which plugin, if any, computes a frame depends on the processor the test runs on; the tests named Routing are run on
// emulated processors too, whose level NEROVA_CPU_LEVEL states.

#include <gtest/gtest.h>

#include <array>
#include <climits>

#include "kernels/shared/kernels.h"
#include "lifecycle/arrangement.h"
#include "lifecycle/floating_point_settings.h"
#include "lifecycle/transform_call.h"
#include "support/cpu_route.h"

namespace nerova_zel::test {
namespace {

TEST(Routing, OnlyThePluginOfTheLevelComputes) {
  const int level = cpu_level();
  enum class State { Absent, Unwilling, Usable };
  for (const State avx512 : {State::Absent, State::Unwilling, State::Usable}) {
    for (const State avx2 : {State::Absent, State::Unwilling, State::Usable}) {
      SCOPED_TRACE("AVX-512 " + std::to_string(static_cast<int>(avx512)) + ", AVX2 " +
                   std::to_string(static_cast<int>(avx2)));
      Arrangement arrangement;
      Events terminated;
      if (avx2 != State::Absent) {
        arrangement.add(Companion::Avx2);
        terminated.emplace_back("avx2 terminate");
      }
      if (avx512 != State::Absent) {
        arrangement.add(Companion::Avx512);
        terminated.emplace_back("avx512 terminate");
      }
      arrangement.avx512.on_initialize = [&] { return avx512 == State::Usable ? 0 : 1; };
      arrangement.avx2.on_initialize = [&] { return avx2 == State::Usable ? 0 : -1; };
      const TransformCall call(arrangement.make_processor());
      const bool by_avx512 = level == 2 && avx512 == State::Usable;
      const bool by_avx2 = level == 1 && avx2 == State::Usable;
      EXPECT_EQ(call.run(arrangement.library()), 0);
      EXPECT_EQ(arrangement.journal.take(), by_avx512 ? Events{"avx512 transform"}
                                            : by_avx2 ? Events{"avx2 transform"}
                                                      : Events());
      EXPECT_EQ(call.outputs_untouched(), by_avx512 || by_avx2);  // these mocks compute nothing
      arrangement.finish();
      EXPECT_EQ(arrangement.journal.take(), terminated);
    }
  }
}

/** A processor on which a mock plugin computes; both behave alike, so the level need only not be 0. */
class RoutingToPlugin : public testing::Test {
 protected:
  void SetUp() override {
    if (cpu_level() == 0) {
      GTEST_SKIP() << "this processor has neither AVX2 nor AVX-512";
    }
    processor = arrangement.make_processor();
  }

  template <class Function>
  void on_transform(Function function) {
    arrangement.avx512.on_transform = function;
    arrangement.avx2.on_transform = function;
  }

  Arrangement arrangement{{Companion::Avx512, Companion::Avx2}};
  nv_polarization_processor* processor = nullptr;
};

TEST_F(RoutingToPlugin, RecordHoldsTheCall) {
  TransformCall call(processor);
  call.frame.assign(6, 100);
  call.input = call.frame.data();
  call.width = 3;
  call.phase = 3;
  call.outputs[2] = nullptr;
  int calls = 0;
  on_transform([&](const void* record, const float* const* /*matrices*/) {
    ++calls;
    const auto& parameters = *static_cast<const TransformParameters*>(record);  // whose layout its header asserts
    EXPECT_EQ(parameters.height, call.height);
    EXPECT_EQ(parameters.width, call.width);
    EXPECT_EQ(parameters.phase, call.phase);
    EXPECT_EQ(parameters.input, call.input);
    EXPECT_EQ(parameters.bit_depth, call.bit_depth);
    EXPECT_EQ(parameters.input_maximum, static_cast<float>((1 << call.bit_depth) - 1));
    EXPECT_EQ(parameters.output_maximum, static_cast<float>(call.output_maximum));
    EXPECT_EQ(parameters.integer_output_maximum, call.output_maximum);
    const auto& to = parameters.images;
    const decltype(call.outputs) images = {to.normalized_stokes, to.total_power, to.horizontal_vertical,
                                           to.diagonal,          to.azimuth,     to.degree_of_linear_polarization};
    EXPECT_EQ(images, call.outputs);
  });
  for (const std::int32_t bit_depth : {0, 1, 12, 16}) {
    for (const std::uint16_t output_maximum : {std::uint16_t{1}, std::uint16_t{65535}}) {
      call.bit_depth = bit_depth;
      call.output_maximum = output_maximum;
      EXPECT_EQ(call.run(arrangement.library()), 0);
    }
  }
  EXPECT_EQ(calls, 8);
}

/** The matrix number of each parity index follows from the polarizers' angles in units of 45 degrees. */
constexpr std::array<float, 4> super_pixels[] = {{0, 3, 1, 2}, {1, 2, 0, 3}, {2, 1, 3, 0}, {3, 0, 2, 1}};

TEST_F(RoutingToPlugin, OriginIsFoldedIntoPhaseAndMatrices) {
  float matrices[4][16] = {{0}, {1}, {2}, {3}};
  EXPECT_EQ(arrangement.library().set_coefficients(processor, matrices[0], matrices[1], matrices[2], matrices[3]), 0);

  std::int32_t phase = 0;
  std::array<float, 4> row = {};
  on_transform([&](const void* record, const float* const* pointers) {
    phase = static_cast<const TransformParameters*>(record)->phase;
    row = {pointers[0][0], pointers[1][0], pointers[2][0], pointers[3][0]};
  });

  struct Fold {
    std::vector<std::array<std::int32_t, 2>> origins;
    std::array<std::int32_t, 4> phases;  ///< what 0, 1, 2, 3 become
    std::int32_t negative;               ///< what a negative phase becomes
  };
  const Fold folds[] = {
      {{{0, 0}, {2, 4}, {-2, -4}, {INT_MIN, 0}}, {0, 1, 2, 3}, -5},
      {{{0, 1}, {6, 3}, {-2, INT_MAX}}, {1, 0, 3, 2}, 1},
      {{{1, 0}, {5, -2}, {INT_MAX, 2}}, {3, 2, 1, 0}, 3},
      {{{1, 1}, {-1, 0}, {-3, 1}, {0, -1}, {2, -5}, {-1, -1}, {1, -1}, {INT_MIN + 1, 4}}, {2, 3, 0, 1}, 2},
  };
  TransformCall call(processor);
  for (const Fold& fold : folds) {
    for (const auto& [x, y] : fold.origins) {
      for (const std::int32_t given : {0, 1, 2, 3, -5}) {
        SCOPED_TRACE("phase " + std::to_string(given) + " at " + std::to_string(x) + ", " + std::to_string(y));
        call.phase = given;
        call.origin_x = x;
        call.origin_y = y;
        const std::int32_t expected = given < 0 ? fold.negative : fold.phases[static_cast<std::size_t>(given)];
        EXPECT_EQ(call.run(arrangement.library()), 0);
        EXPECT_EQ(phase, expected);
        EXPECT_EQ(row, super_pixels[expected < 0 ? 0 : expected]);
      }
    }
  }
}

TEST_F(RoutingToPlugin, FrameRunsMaskedAndInTheRoundingOfTheCaller) {
  constexpr std::uint32_t rounding_up = 0x4000;
  FloatingPointSettings inside;
  on_transform([&](auto...) { inside = FloatingPointSettings::now(); });
  const TransformCall call(processor);
  LoadedLibrary& library = arrangement.library();
  FloatingPointSettings{0x8040 | rounding_up, 0x0340}.apply();  // nothing masked, and flushing
  const std::int32_t result = call.run(library);
  FloatingPointSettings().apply();
  EXPECT_EQ(result, 0);
  EXPECT_EQ(inside.vector_units, 0x1F80 | rounding_up);
  EXPECT_EQ(inside.x87 & 0x3F, 0x3F);
}

TEST_F(RoutingToPlugin, ExceptionsOfTheOldFloatingPointUnitStayTheCallers) {
  on_transform([](auto...) {
    __asm__ volatile("fldz\n\tfldz\n\tfdiv %%st(1)\n\tfstp %%st\n\tfstp %%st" : : : "st");  // 0 / 0
  });
  const TransformCall call(processor);
  LoadedLibrary& library = arrangement.library();
  constexpr std::uint16_t all_masked = 0x037F;
  constexpr std::uint16_t division_by_zero = 0x04;
  // The last one leaves an exception pending: the next instruction that waits for it would raise it.
  for (const auto& [divide, wanted] : {std::pair{false, all_masked}, std::pair{true, all_masked},
                                       std::pair{true, static_cast<std::uint16_t>(all_masked - division_by_zero)}}) {
    SCOPED_TRACE(wanted);
    __asm__ volatile("fnclex");
    if (divide) {
      __asm__ volatile("fldz\n\tfld1\n\tfdiv %%st(1)\n\tfstp %%st\n\tfstp %%st" : : : "st");
    }
    __asm__ volatile("fldcw %0" : : "m"(wanted));
    const std::int32_t result = call.run(library);
    const auto after = FloatingPointSettings::now();
    FloatingPointSettings().apply();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(after.x87, wanted);
    EXPECT_EQ(after.x87_flags, divide ? division_by_zero : 0);
  }
}

TEST_F(RoutingToPlugin, PluginThatThrowsIsContained) {
  if (!mocks_can_throw) {
    GTEST_SKIP() << exceptions_stay_in_their_module;
  }
  on_transform([](auto...) { throw 1; });
  EXPECT_EQ(TransformCall(processor).run(arrangement.library()), 0);
  arrangement.avx512.on_terminate = [] { throw 1; };
  arrangement.finish();
  EXPECT_FALSE(arrangement.any_plugin_loaded());
}

}  // namespace
}  // namespace nerova_zel::test
