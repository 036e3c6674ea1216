#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "lifecycle/arrangement.h"
#include "support/failing_allocation.h"

namespace nerova_zel::test {
namespace {

TEST(Processor, CoefficientsAreCopiedBitForBit) {
  Arrangement arrangement;
  LoadedLibrary& library = arrangement.library();
  nv_polarization_processor* const processor = arrangement.make_processor();
  // By their bits, so that NaNs compare too.
  std::array<std::array<std::uint32_t, 16>, 4> expected = {};
  const auto expect_matrices = [&] {
    float values[4][16] = {};
    EXPECT_EQ(library.get_coefficients(processor, values[0], values[1], values[2], values[3]), 0);
    EXPECT_EQ(std::memcmp(values, &expected, sizeof(values)), 0);
  };
  const float defaults[4][16] = {{1, 1, 1, 1, 1, 0, 0, -1, 0, -1, 1, 0},
                                 {1, 1, 1, 1, 0, -1, 1, 0, 1, 0, 0, -1},
                                 {1, 1, 1, 1, -1, 0, 0, 1, 0, 1, -1, 0},
                                 {1, 1, 1, 1, 0, 1, -1, 0, -1, 0, 0, 1}};
  std::memcpy(&expected, defaults, sizeof(expected));
  expect_matrices();
  EXPECT_EQ(library.set_coefficients(processor, nullptr, nullptr, nullptr, nullptr), 0);
  expect_matrices();

  // Signalling and quiet NaNs with payload, infinity, a denormal, negative zero; at an odd address.
  const std::uint32_t odd_values[] = {0x7F800001, 0xFFA5A5A5, 0x7FC12345, 0x7F800000, 0xFF800000, 1, 0x80000000};
  for (std::size_t matrix = 0; matrix < 4; ++matrix) {
    unsigned char bytes[65] = {};
    for (std::size_t i = 0; i < 16; ++i) {
      expected[matrix][i] = odd_values[(i + matrix) % std::size(odd_values)];
    }
    std::memcpy(bytes + 1, expected[matrix].data(), 64);
    const float* arguments[4] = {};
    arguments[matrix] = reinterpret_cast<const float*>(bytes + 1);
    EXPECT_EQ(library.set_coefficients(processor, arguments[0], arguments[1], arguments[2], arguments[3]), 0);
    expect_matrices();
  }

  float alone[16] = {};
  EXPECT_EQ(library.get_coefficients(processor, nullptr, nullptr, alone, nullptr), 0);
  EXPECT_EQ(std::memcmp(alone, &expected[2], sizeof(alone)), 0);
}

TEST(Processor, NullHandlesAreRefusedAndRecorded) {
  Arrangement arrangement({Companion::Logger});
  arrangement.initialize();
  LoadedLibrary& library = arrangement.library();
  float matrix[16] = {5};
  EXPECT_EQ(library.set_coefficients(nullptr, matrix, matrix, matrix, matrix), 4);
  EXPECT_EQ(library.get_coefficients(nullptr, matrix, matrix, matrix, matrix), 4);
  EXPECT_EQ(matrix[0], 5);
  const std::string text = "ERROR:  The specified polarization processor handle is NULL!";
  EXPECT_EQ(arrangement.journal.take(), (Events{error_record(129, "set_custom_calibration_coefficients", text),
                                                error_record(155, "get_custom_calibration_coefficients", text)}));
}

TEST(Processor, CreateWithoutMemoryIsRefusedAndRecorded) {
  Arrangement arrangement({Companion::Logger, Companion::Avx512});
  arrangement.initialize();
  LoadedLibrary& library = arrangement.library();
  nv_polarization_processor* processor = nullptr;
  {
    const FailingAllocation failing(0, FailingAllocation::Extent::FromThenOn);
    EXPECT_EQ(library.create(&processor), 3);
    EXPECT_EQ(processor, nullptr);
  }
  EXPECT_EQ(arrangement.journal.take(), Events{no_memory});
  {
    const FailingAllocation failing(1, FailingAllocation::Extent::FromThenOn);  // the object is all it allocates
    EXPECT_EQ(library.create(&processor), 0);
    EXPECT_FALSE(failing.happened());
    EXPECT_EQ(failing.outstanding(), 1);
  }
  EXPECT_TRUE(arrangement.loaded(Companion::Avx512));
  EXPECT_EQ(library.destroy(processor), 0);
}

}  // namespace
}  // namespace nerova_zel::test
