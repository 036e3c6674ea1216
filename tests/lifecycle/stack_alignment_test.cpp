// Callers on 32-bit x86 may align the stack to 4 bytes only; the vector code beneath every entry needs more.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "kernels/shared/default_calibration.h"
#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"
#include "support/plugin_module.h"

namespace nerova_zel::test {
namespace {

/** An argument as it lies on the stack. */
template <class Value>
std::uint32_t slot(Value value) {
  static_assert(sizeof(Value) == sizeof(std::uint32_t));
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof(bits));
  return bits;
}

/** Calls C functions with the stack off its 16-byte alignment by so many bytes. */
class MisalignedCaller {
 public:
  explicit MisalignedCaller(std::uint32_t offset) : offset_(offset) {}

  template <class... Arguments>
  std::int32_t operator()(void* function, Arguments... arguments) const {
    // One slot more, so that there is something to push.
    const std::uint32_t slots[] = {slot(arguments)..., 0};
    const std::uint32_t* last = slots + sizeof...(arguments) + 1;
    std::uint32_t count = sizeof...(arguments) + 1;
    const std::uint32_t padding = (0U - 4 * count - offset_) & 15U;
    std::int32_t result = 0;
    __asm__ volatile(
        "movl %%esp, %%edi\n"
        "andl $-16, %%esp\n"
        "subl %[padding], %%esp\n"
        "1: subl $4, %[last]\n"
        "pushl (%[last])\n"
        "decl %[count]\n"
        "jnz 1b\n"
        "call *%[function]\n"
        "movl %%edi, %%esp\n"
        : "=a"(result), [count] "+c"(count), [last] "+d"(last)
        : [padding] "b"(padding), [function] "S"(function)
        : "edi", "memory", "cc");
    return result;
  }

 private:
  std::uint32_t offset_;
};

constexpr std::uint32_t offsets[] = {0, 4, 8, 12};

constexpr std::int32_t width = 71;
constexpr std::int32_t height = 5;
constexpr std::size_t pixels = std::size_t{width} * std::size_t{height};

/** Every export, then the frame, by whichever code the library chooses. */
void call_every_export(const std::string& file) {
  const LoadedLibrary library(file);
  const std::vector<std::uint16_t> frame = mixed_samples(pixels);
  FrameImages expected(pixels);
  ASSERT_EQ(library.module_initialize(), 0);
  nv_polarization_processor* processor = nullptr;
  ASSERT_EQ(library.create(&processor), 0);
  const auto transform = [&](const auto& call, FrameImages& images) {
    return call(library.find("nv_polarization_processor_transform"), processor, 0, frame.data(), 0, 0, width, height,
                12, 65535, images.stokes.data(), images.others[0].data(), images.others[1].data(),
                images.others[2].data(), images.others[3].data(), images.others[4].data());
  };
  EXPECT_EQ(transform(MisalignedCaller(0), expected), 0);
  EXPECT_EQ(library.destroy(processor), 0);

  for (const std::uint32_t offset : offsets) {
    SCOPED_TRACE(offset);
    const MisalignedCaller call(offset);
    float matrices[4][16];
    EXPECT_EQ(call(library.find("nv_polarization_processor_module_initialize")), 0);
    EXPECT_EQ(call(library.find("nv_polarization_processor_create_polarization_processor"), &processor), 0);
    EXPECT_EQ(call(library.find("nv_polarization_processor_get_custom_calibration_coefficients"), processor,
                   matrices[0], matrices[1], matrices[2], matrices[3]),
              0);
    EXPECT_EQ(call(library.find("nv_polarization_processor_set_custom_calibration_coefficients"), processor,
                   matrices[0], matrices[1], matrices[2], matrices[3]),
              0);
    FrameImages images(pixels);
    EXPECT_EQ(transform(call, images), 0);
    EXPECT_TRUE(images == expected);
    EXPECT_EQ(call(library.find("nv_polarization_processor_destroy_polarization_processor"), processor), 0);
    EXPECT_EQ(call(library.find("nv_polarization_processor_module_terminate")), 0);
  }
  EXPECT_EQ(library.module_terminate(), 0);
}

TEST(StackAlignment, EveryExportWithTheBuiltInKernels) { call_every_export(NEROVA_BUILT_IN_ONLY_LIBRARY); }

TEST(StackAlignment, EveryExportWithThePlugins) { call_every_export(library_path()); }

TEST(StackAlignment, PluginEntries) {
  const std::vector<std::uint16_t> frame = mixed_samples(pixels);
  const CalibrationMatrix* const row[] = {&default_matrices[0], &default_matrices[3], &default_matrices[1],
                                          &default_matrices[2]};
  for (const std::string set : {"avx2", "avx512"}) {
    SCOPED_TRACE(set);
    const PluginModule plugin(plugin_path(library_path(), set), set);
    FrameImages expected(pixels);
    bool first = true;
    for (const std::uint32_t offset : offsets) {
      SCOPED_TRACE(offset);
      const MisalignedCaller call(offset);
      if (call(plugin.initialize_entry()) == 0) {
        FrameImages images(pixels);
        const TransformParameters parameters = plugin_call(frame, width, height, 65535, images);
        const CalibrationMatrix* const* matrices = row;
        call(plugin.transform_entry(), &parameters, matrices);
        if (first) {
          expected = images;
        }
        EXPECT_TRUE(images == expected);
        first = false;
      }
      call(plugin.terminate_entry());
    }
  }
}

/** What a plugin of somebody else's may rely on. */
TEST(StackAlignment, PluginsAreCalledOnAnAlignedStack) {
  Arrangement arrangement;
  arrangement.add_avx512();
  arrangement.add_avx2();
  nv_polarization_processor* const processor = arrangement.make_processor();
  const TransformCall call(processor);
  LoadedLibrary& library = arrangement.library();
  for (const std::uint32_t offset : offsets) {
    EXPECT_EQ(MisalignedCaller(offset)(library.find("nv_polarization_processor_transform"), call.processor, 0,
                                       call.input, 0, 0, 2, 2, 12, 4095, call.stokes, call.images[0], call.images[1],
                                       call.images[2], call.images[3], call.images[4]),
              0);
  }
  EXPECT_TRUE(arrangement.avx512.stack_was_aligned && arrangement.avx2.stack_was_aligned);
  EXPECT_EQ(library.destroy(processor), 0);
  EXPECT_EQ(library.module_terminate(), 0);
}

}  // namespace
}  // namespace nerova_zel::test
