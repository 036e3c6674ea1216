// Callers on 32-bit x86 may align the stack to 4 bytes only; the vector code beneath every entry needs more.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "lifecycle/arrangement.h"
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
constexpr std::size_t pixels = std::size_t{width} * 5;

TEST(StackAlignment, EveryExport) {
  for (const std::string& file : {std::string(NEROVA_BUILT_IN_ONLY_LIBRARY), library_path()}) {
    const LoadedLibrary library(file);
    FrameImages expected(pixels);
    for (const std::uint32_t offset : offsets) {
      SCOPED_TRACE(offset);
      const auto call = [&](const std::string& name, auto... arguments) {
        return MisalignedCaller(offset)(library.find(("nv_polarization_processor_" + name).c_str()), arguments...);
      };
      const auto transform = [&](auto... arguments) { return call("transform", arguments...); };
      nv_polarization_processor* processor = nullptr;
      float matrices[4][16];
      FrameImages images(pixels);
      EXPECT_EQ(call("module_initialize"), 0);
      EXPECT_EQ(call("create_polarization_processor", &processor), 0);
      for (const std::string way : {"get", "set"}) {
        EXPECT_EQ(call(way + "_custom_calibration_coefficients", processor, matrices[0], matrices[1], matrices[2],
                       matrices[3]),
                  0);
      }
      EXPECT_EQ(images.fill(transform, processor, mixed_samples(pixels), width), 0);
      expected = offset == 0 ? images : expected;
      EXPECT_TRUE(images == expected);
      EXPECT_EQ(call("destroy_polarization_processor", processor), 0);
      EXPECT_EQ(call("module_terminate"), 0);
    }
  }
}

TEST(StackAlignment, PluginEntries) {
  for (const std::string set : {"avx2", "avx512"}) {
    const PluginModule plugin(plugin_path(library_path(), set), set);
    FrameImages expected(pixels);
    for (const std::uint32_t offset : offsets) {
      SCOPED_TRACE(set + " off by " + std::to_string(offset));
      const MisalignedCaller call(offset);
      if (call(plugin.initialize_entry()) == 0) {
        const std::vector<std::uint16_t> frame = mixed_samples(pixels);
        FrameImages images(pixels);
        const TransformParameters parameters = plugin_call(frame, width, 65535, images);
        call(plugin.transform_entry(), &parameters, MatrixRow{default_row});
        expected = offset == 0 ? images : expected;
        EXPECT_TRUE(images == expected);
      }
      call(plugin.terminate_entry());
    }
  }
}

/** What a plugin of somebody else's may rely on. */
TEST(StackAlignment, PluginsAreCalledOnAnAlignedStack) {
  Arrangement arrangement({Companion::Avx512, Companion::Avx2});
  nv_polarization_processor* const processor = arrangement.make_processor();
  for (const std::uint32_t offset : offsets) {
    const auto transform = [&](auto... arguments) {
      return MisalignedCaller(offset)(arrangement.library().find("nv_polarization_processor_transform"), arguments...);
    };
    EXPECT_EQ(FrameImages(pixels).fill(transform, processor, mixed_samples(pixels), width), 0);
  }
  EXPECT_TRUE(arrangement.avx512.stack_was_aligned && arrangement.avx2.stack_was_aligned);
}

}  // namespace
}  // namespace nerova_zel::test
