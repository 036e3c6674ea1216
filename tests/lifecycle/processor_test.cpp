#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "lifecycle/arrangement.h"
#include "support/failing_allocation.h"

namespace nerova_zel::test {
namespace {

/** The four matrices by their bits, so that NaNs compare too. */
using Bits = std::array<std::array<std::uint32_t, 16>, 4>;

Bits matrices_of(LoadedLibrary& library, nv_polarization_processor* processor) {
  float values[4][16] = {};
  EXPECT_EQ(library.get_coefficients(processor, values[0], values[1], values[2], values[3]), 0);
  Bits bits = {};
  static_assert(sizeof(bits) == sizeof(values));
  std::memcpy(&bits, values, sizeof(bits));
  return bits;
}

TEST(Processor, CoefficientsAreCopiedBitForBit) {
  Arrangement arrangement;
  LoadedLibrary& library = arrangement.library();
  nv_polarization_processor* const processor = arrangement.make_processor();

  const float defaults[4][16] = {{1, 1, 1, 1, 1, 0, 0, -1, 0, -1, 1, 0},
                                 {1, 1, 1, 1, 0, -1, 1, 0, 1, 0, 0, -1},
                                 {1, 1, 1, 1, -1, 0, 0, 1, 0, 1, -1, 0},
                                 {1, 1, 1, 1, 0, 1, -1, 0, -1, 0, 0, 1}};
  Bits expected = {};
  std::memcpy(&expected, defaults, sizeof(expected));
  EXPECT_EQ(matrices_of(library, processor), expected);

  EXPECT_EQ(library.set_coefficients(processor, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(matrices_of(library, processor), expected);

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
    EXPECT_EQ(matrices_of(library, processor), expected);
  }

  float alone[16] = {};
  EXPECT_EQ(library.get_coefficients(processor, nullptr, nullptr, alone, nullptr), 0);
  std::array<std::uint32_t, 16> bits = {};
  std::memcpy(bits.data(), alone, sizeof(alone));
  EXPECT_EQ(bits, expected[2]);

  EXPECT_EQ(library.destroy(processor), 0);
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(Processor, NullHandlesAreRefusedAndRecorded) {
  Arrangement arrangement;
  arrangement.add_logger();
  LoadedLibrary& library = arrangement.library();
  EXPECT_EQ(library.module_initialize(), 0);
  arrangement.journal.take();
  float matrix[16] = {5};
  EXPECT_EQ(library.set_coefficients(nullptr, matrix, matrix, matrix, matrix), 4);
  EXPECT_EQ(library.get_coefficients(nullptr, matrix, matrix, matrix, matrix), 4);
  EXPECT_EQ(matrix[0], 5);
  EXPECT_EQ(library.destroy(nullptr), 4);
  EXPECT_EQ(arrangement.journal.take(), (Events{"2|nerova_zel_polarization_processor.cpp|129|"
                                                "nv_polarization_processor_set_custom_calibration_coefficients|"
                                                "ERROR:  The specified polarization processor handle is NULL!",
                                                "2|nerova_zel_polarization_processor.cpp|155|"
                                                "nv_polarization_processor_get_custom_calibration_coefficients|"
                                                "ERROR:  The specified polarization processor handle is NULL!",
                                                "2|nerova_zel_polarization_processor.cpp|300|"
                                                "nv_polarization_processor_destroy_polarization_processor|"
                                                "ERROR:  The specified color processor handle is NULL!"}));
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(Processor, CreateWithoutMemoryIsRefusedAndRecorded) {
  Arrangement arrangement;
  arrangement.add_logger();
  arrangement.add_avx512();
  LoadedLibrary& library = arrangement.library();
  EXPECT_EQ(library.module_initialize(), 0);
  arrangement.journal.take();
  nv_polarization_processor* processor = nullptr;
  {
    const FailingAllocation failing(0, FailingAllocation::Extent::FromThenOn);
    EXPECT_EQ(library.create(&processor), 3);
    EXPECT_EQ(processor, nullptr);
  }
  EXPECT_EQ(arrangement.journal.take(),
            Events{"2|nerova_zel_polarization_processor.cpp|76|nv_polarization_processor_create_polarization_processor|"
                   "Memory allocation failure when trying to create a polar processor instance!"});
  {
    const FailingAllocation failing(1, FailingAllocation::Extent::FromThenOn);  // the object is all it allocates
    EXPECT_EQ(library.create(&processor), 0);
    EXPECT_FALSE(failing.happened());
    EXPECT_EQ(failing.outstanding(), 1);
  }
  EXPECT_TRUE(arrangement.avx512_loaded());
  EXPECT_EQ(library.destroy(processor), 0);
  EXPECT_EQ(library.module_terminate(), 0);
}

}  // namespace
}  // namespace nerova_zel::test
