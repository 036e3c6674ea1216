// The shortest whole use of the library in C++17: one 2 x 2 frame, its total power.
#include <cstdint>
#include <iostream>
#include <vector>

#include "nerova_zel/polarization_processor.hpp"

int main() {
  const std::vector<std::uint16_t> pixels = {100, 50, 50, 0};  // 0, 135 / 45, 90 degrees
  std::vector<std::uint16_t> power(pixels.size());
  try {
    const nerova_zel::Processor processor;
    nerova_zel::Frame frame;
    frame.pixels = pixels;
    frame.width = 2;
    frame.height = 2;
    frame.phase = nerova_zel::Phase::degrees_0;
    frame.bit_depth = 8;
    nerova_zel::Outputs outputs;
    outputs.total_power = power;
    outputs.output_maximum = 255;
    processor.transform(frame, outputs);
  } catch (const nerova_zel::ProcessorError& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  std::cout << "power " << power[0] << '\n';
  return power[0] == 100 ? 0 : 1;
}
