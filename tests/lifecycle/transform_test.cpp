#include <gtest/gtest.h>

#include <climits>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"

namespace nerova_zel::test {
namespace {

const std::string time_record =
    "7|...\\polarization_processor\\nerova_zel_polarization_processor.cpp|190|nv_polarization_processor_transform|"
    "transform takes # microseconds.";
struct Fault {
  std::int32_t code;
  void (*spoil)(TransformCall& call);
};

using Call = TransformCall;

/** In the order of the checks. */
const Fault faults[] = {
    {4, [](Call& call) { call.processor = nullptr; }},
    {9, [](Call& call) { call.phase = 4; }},
    {9, [](Call& call) { call.phase = INT_MAX; }},
    {5, [](Call& call) { call.input = nullptr; }},
    {6, [](Call& call) { call.outputs = {}; }},
    {7, [](Call& call) { call.outputs[0] = call.frame.data(); }},
    {7, [](Call& call) { call.outputs[5] = call.frame.data(); }},
    {8, [](Call& call) { call.outputs[1] = call.outputs[0]; }},
    {8, [](Call& call) { call.outputs[5] = call.outputs[4]; }},
    {8, [](Call& call) { call.outputs[4] = call.outputs[2]; }},
    {11, [](Call& call) { call.width = 1; }},
    {11, [](Call& call) { call.width = INT_MIN; }},
    {12, [](Call& call) { call.height = 1; }},
    {12, [](Call& call) { call.height = -2; }},
    {10, [](Call& call) { call.output_maximum = 0; }},
    {13, [](Call& call) { call.bit_depth = 17; }},
    {13, [](Call& call) { call.bit_depth = -1; }},
};

TEST(Transform, FirstFaultDecidesTheCode) {
  Arrangement arrangement({Companion::Logger});
  arrangement.logger.log_result = 1;  // whether records are written is nobody's concern
  nv_polarization_processor* const processor = arrangement.make_processor();
  for (const Fault& first : faults) {
    for (const Fault* second = &first; second != std::end(faults); ++second) {
      if (second != &first && second->code == first.code) {
        continue;
      }
      SCOPED_TRACE("faults " + std::to_string(first.code) + " and " + std::to_string(second->code));
      TransformCall call(processor);
      second->spoil(call);
      first.spoil(call);
      EXPECT_EQ(call.run(arrangement.library()), first.code);
      EXPECT_TRUE(call.outputs_untouched());
      EXPECT_EQ(arrangement.journal.take(),
                first.code == 4 ? (Events{null_transformed, time_record}) : Events{time_record});
    }
  }
}

TEST(Transform, IgnoresTheUpperHalfOfTheOutputMaximum) {
  Arrangement arrangement;
  LoadedLibrary& library = arrangement.library();
  nv_polarization_processor* const processor = arrangement.make_processor();
  // As compilers may call it that leave garbage in the upper half of a 16-bit argument's slot.
  using Dirty = std::int32_t (*)(void*, std::int32_t, const std::uint16_t*, std::int32_t, std::int32_t, std::int32_t,
                                 std::int32_t, std::int32_t, std::uint32_t, float*, std::uint16_t*, std::uint16_t*,
                                 std::uint16_t*, std::uint16_t*, std::uint16_t*);
  const auto function = reinterpret_cast<Dirty>(library.find("nv_polarization_processor_transform"));
  const auto run = [&](const TransformCall& call, std::uint32_t maximum) {
    return call.call([&](void* handle, auto phase, const std::uint16_t* input, auto x, auto y, auto width, auto height,
                         auto depth, std::uint16_t /*maximum*/, auto... outputs) {
      return function(handle, phase, input, x, y, width, height, depth, maximum, outputs...);
    });
  };
  const TransformCall plain(processor);
  const TransformCall dirty(processor);
  EXPECT_EQ(run(plain, 4000), 0);
  EXPECT_EQ(run(dirty, 0xFFFF0000U | 4000U), 0);
  EXPECT_TRUE(dirty.images == plain.images);
  EXPECT_EQ(run(dirty, 0xFFFF0000U), 10);
}

}  // namespace
}  // namespace nerova_zel::test
