// Every function of the C++ header, as Visual C++'s rules of names, calls and exceptions make code of it.
#define min(a, b) ((a) < (b) ? (a) : (b)) /* as <windows.h> does */
#define max(a, b) ((a) > (b) ? (a) : (b))
#include <nerova_zel/imaging.h>

#include <nerova_zel/polarization_processor.hpp>

std::int32_t call_everything(const std::vector<std::uint16_t>& pixels, std::vector<std::uint16_t>& power) {
  try {
    nerova_zel::Processor first;
    nerova_zel::Processor processor(nerova_zel::linked_entry_points());
    processor = static_cast<nerova_zel::Processor&&>(first);
    processor.set_calibration(processor.calibration());
    nerova_zel::Frame frame;
    frame.pixels = pixels;
    frame.width = 2;
    frame.height = 2;
    frame.phase = nerova_zel::Phase::degrees_90;
    nerova_zel::Outputs outputs;
    outputs.total_power = power;
    outputs.azimuth = nullptr;
    processor.transform(frame, outputs);
    return 0;
  } catch (const nerova_zel::ProcessorError& error) {
    return error.code();
  }
}
