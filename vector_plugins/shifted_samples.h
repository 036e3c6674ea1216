#pragma once

// Samples in lanes of floats as the sum of a sample and 2^23: with 0x4B00 above its 16 bits a sample is that float, no
// conversion needed, and differences of such floats are differences of samples, exact.
namespace nerova_zel {
namespace {

struct SampleShift {
  static constexpr float value = 8388608.0F;
  static constexpr unsigned bits = 0x4B000000;
};

}  // namespace
}  // namespace nerova_zel
